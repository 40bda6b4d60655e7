#pragma once

#include <QByteArray>

namespace vostel {

// Whether the bytes begin as the binary form does; anything else is read as XML.
bool isBinaryPropertyList(const QByteArray& bytes);

// Whether a property list can be read without taking the stack or the memory down. What parses,
// copies and frees one goes down into every nested list, and a binary one may name the same object
// any number of times, so that a few hundred bytes stand for gigabytes.
//
// False above 4000 lists and dictionaries, above half a million values, for a binary form that
// names a list or dictionary twice, for one whose texts and data come to more than 64 MiB with
// every repetition counted, and for one that tells a place or a length in more than 8 bytes. True
// says nothing about whether the bytes parse.
bool isPropertyListBounded(const QByteArray& bytes);

}  // namespace vostel
