#pragma once

#include <QString>
#include <QStringList>

#include "core/AppContext.h"
#include "platform/Platform.h"

namespace vostel {

// What failed when the sources were read, a sentence for each source that ever did: "Processors:
// Cannot read /proc/stat: Permission denied." Empty when all can be read.
QStringList sourceErrors(const Platform& platform);

// What a report of a fault needs, to be pasted in public: versions, desktop, bar, sources and the
// last lines of the log. No addresses, no names of processes, people or hosts, no paths in the
// home folder.
QString diagnostics(const AppContext& context);

// `text` without what the above leaves out, as far as its form tells: home folders, URLs, network
// and hardware addresses, mail addresses, this user's and this machine's name, long tokens.
QString redacted(const QString& text);

}  // namespace vostel
