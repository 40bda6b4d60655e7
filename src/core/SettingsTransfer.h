#pragma once

#include <optional>

#include <QByteArray>
#include <QString>

#include "core/PropertyList.h"

namespace vostel {

class DefaultsStore;

// Settings as a file to carry to another machine: an XML property list of what the store holds.
// Everything but objection() and exported() may be called from any thread.
namespace SettingsTransfer {

inline constexpr const char* suggestedName = "vostel-settings.plist";
inline constexpr qint64 largestFile = 16 << 20;  // bytes

// What was read, or why it was not, as a sentence.
template <typename T>
struct Loaded {
    std::optional<T> value;
    QString error;
};

// The bytes of a regular file of at most `largestFile` bytes; of anything else only the error. Does
// not wait for a pipe or a device.
Loaded<QByteArray> readFile(const QString& path);
// The same of an open descriptor of any kind, up to its end.
Loaded<QByteArray> readAll(int descriptor);

// Settings from the bytes of a file.
Loaded<PropertyList> parse(const QByteArray& bytes);

// Why the program cannot use these settings: a key that it knows holds what no reader takes. What
// it does not know is no objection.
std::optional<QString> objection(const PropertyList& settings, const DefaultsStore& store);

// What is written for settings to come back in: all of them but the values that no reader takes,
// which count as absent anyway. Those are named on the log.
PropertyList exported(const PropertyList& settings, const DefaultsStore& store);

// Writes a whole file or none, with the permissions of a new file. Returns the error. Nothing but a
// regular file is replaced, and no symbolic link followed that belongs to another user than root.
std::optional<QString> writeFile(const QString& path, const QByteArray& bytes);

}  // namespace SettingsTransfer

}  // namespace vostel
