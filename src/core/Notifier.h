#pragma once

#include <QString>

namespace vostel::Notifier {

// Shows a notification of the desktop, without a sound. Both are plain text; they are cut where
// they are longer than any notification. Returns at once; nothing happens without a session bus or
// a notification service, nor in a process without a desktop file name (one that only writes
// snapshots, for example).
void post(const QString& title, const QString& body);

}  // namespace vostel::Notifier
