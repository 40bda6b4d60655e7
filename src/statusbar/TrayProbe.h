#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <QObject>

#include "statusbar/TrayHost.h"

namespace vostel {

struct TrayProbeOptions {
    QString busAddress;  // empty: the session's
    std::string proc = "/proc";
};

// What the session offers to a tray item, for the choice of a bar. Waits `limit` at the most; what
// did not answer by then counts as not there. For the start of the program, once a
// QCoreApplication exists.
TrayHost probeTray(const TrayProbeOptions& options,
                   std::chrono::milliseconds limit = std::chrono::milliseconds(150));

// The same without waiting: `answer` is called from the event loop, unless `context` is gone.
void probeTray(const TrayProbeOptions& options, QObject* context,
               std::function<void(const TrayHost&)> answer);

}  // namespace vostel
