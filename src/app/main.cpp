#include <malloc.h>

#include <cstdio>
#include <cstdlib>

#include "app/CommandLine.h"
#include "app/ModuleTable.h"
#include "app/RunCommand.h"
#include "app/SnapshotCommand.h"
#include "app/StatusCommand.h"
#include "app/TransferCommand.h"

namespace {

// The toolkit complains about a missing $XDG_RUNTIME_DIR, which this program does without.
void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (!text.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR"))) {
        std::fprintf(stderr, "[Vostel] %s\n", qUtf8Printable(text));
    }
    if (type == QtFatalMsg) {
        std::abort();
    }
}

}  // namespace

int main(int argc, char** argv) {
    using namespace vostel;
    // One arena: a second one for each thread would cost more memory than it saves time here.
    mallopt(M_ARENA_MAX, 1);
    // When a message bus hangs, the toolkit drops a connection in a way that the D-Bus library
    // takes for a fault of the program's, and ends it.
    setenv("DBUS_FATAL_WARNINGS", "0", 0);

    qInstallMessageHandler(handleMessage);

    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    const CommandLine commandLine = CommandLine::parse(arguments, moduleIds());
    if (!commandLine.message.isEmpty()) {
        std::fprintf(commandLine.exitStatus == 0 ? stdout : stderr, "%s\n",
                     commandLine.message.toLocal8Bit().constData());
        return commandLine.exitStatus;
    }
    switch (commandLine.command) {
        case CommandLine::Command::Snapshot:
            return runSnapshot(commandLine, argc, argv);
        case CommandLine::Command::Status:
            return runStatus(commandLine, argc, argv);
        case CommandLine::Command::Export:
            return runExport(commandLine, argc, argv);
        case CommandLine::Command::Import:
            return runImport(commandLine, argc, argv);
        case CommandLine::Command::Run:
            break;
    }
    return runProgram(commandLine, argc, argv);
}
