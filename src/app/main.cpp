#include <malloc.h>

#include <cstdio>

#include "app/CommandLine.h"
#include "app/ModuleTable.h"
#include "app/RunCommand.h"
#include "app/SnapshotCommand.h"
#include "app/StatusCommand.h"

int main(int argc, char** argv) {
    using namespace vostel;
    // One arena: a second one for each thread would cost more memory than it saves time here.
    mallopt(M_ARENA_MAX, 1);

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
        case CommandLine::Command::Run:
            break;
    }
    return runProgram(commandLine, argc, argv);
}
