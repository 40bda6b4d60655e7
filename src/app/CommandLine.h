#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "statusbar/StatusImage.h"

namespace vostel {

enum class BarKind { Automatic, Dock, Tray, Offscreen };

// "auto", "dock", "tray", "offscreen".
std::optional<BarKind> barKindFromText(const QString& text);
QString textOf(BarKind kind);

// What the user asked for on the command line.
struct CommandLine {
    enum class Command { Run, Snapshot, Status, Export, Import };

    Command command = Command::Run;
    std::optional<BarKind> bar;  // --bar
    QString imagePath;           // --image, for the off-screen bar; empty: the default place
    QString outFolder;           // snapshot --out
    QString module;              // snapshot --module; empty: all
    double scale = 1;            // snapshot --scale, 0.5 ... 4
    double after = 3.5;          // snapshot --after, seconds, 1 ... 600
    std::optional<Appearance> appearance;  // snapshot --appearance; none: both
    bool json = false;                     // status --json
    QString file;                          // export, import; "-": standard output or input
    bool yes = false;                      // import --yes

    QString message;     // to be printed instead of running: help, version, an error
    int exitStatus = 0;  // with a message: 0, or 2 for an error

    // `arguments` with the program's name first. `moduleIds` are the ids that --module knows.
    // Anything unknown gives a one-line message and exit status 2.
    static CommandLine parse(const QStringList& arguments, const QStringList& moduleIds);
};

}  // namespace vostel
