#pragma once

#include <span>
#include <string>
#include <string_view>

#include "monitors/process/PathNames.h"
#include "platform/ProcessSource.h"

namespace vostel {

// The name under which a person knows a process: the last path component of its program; for an
// interpreter or a launcher what it runs, with the interpreter in parentheses; for a process that
// wrote a title over its arguments that title; the helper's role in parentheses for browsers'
// helpers. Always printable UTF-8 of at most 64 characters, and nothing of the other arguments,
// which may hold secrets: not the code of "sh -c" or "python -c", and nothing behind a flag that is
// not known and may have a value.
//
// `arguments` is the argument vector, any bytes; `comm` the kernel's short name, which is taken
// when there are no arguments (kernel threads, zombies) or when they do not name the program.
std::string friendlyName(std::span<const std::string> arguments, std::string_view comm,
                         const ProcessPlace& place = {});
std::string friendlyName(const ProcessDetails& details, std::string_view comm);

// The same from one line of text, as ps prints it: the arguments joined by blanks. Where the
// program ends is a guess.
std::string friendlyName(std::string_view commandLine);

// The base name, without extension, of the file that an interpreter runs, past any launchers; ""
// for other programs.
std::string scriptName(std::span<const std::string> arguments);

}  // namespace vostel
