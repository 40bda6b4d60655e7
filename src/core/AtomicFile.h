#pragma once

#include <optional>

#include <QByteArray>
#include <QString>

namespace vostel {

// Replaces the file as a whole: a temporary file beside it is written, synced and renamed over it,
// and the folder is synced, so that after a crash at any moment the file holds the old or the new
// bytes. Permissions are `mode`. A symbolic link is followed: its target is replaced, not the link.
// Returns the error as a sentence, or nothing. May be called from any thread.
std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& bytes,
                                           unsigned mode = 0600);

}  // namespace vostel
