#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>

#include <QByteArray>
#include <QString>

namespace vostel {

// Called with what the new file is, once its bytes are on the disk and right before it takes the
// place of the old one. An error keeps it from doing so.
using BeforeReplacing = std::function<std::optional<QString>(const struct stat& written)>;

// Replaces the file as a whole: a temporary file beside it is written, synced and renamed over it,
// and the folder is synced, so that after a crash at any moment the file holds the old or the new
// bytes. Permissions are `mode`. A symbolic link is followed: its target is replaced, not the link.
// Returns the error as a sentence, or nothing. May be called from any thread.
std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                           unsigned mode = 0600,
                                           const BeforeReplacing& beforeReplacing = {});

// Removes the temporary files that killed processes of this user left beside the file. Those that
// are still written are locked by whoever does, and stay.
void removeAbandonedFiles(const QString& path);

}  // namespace vostel
