#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace vostel {

namespace {

constexpr std::pair<BarKind, const char*> barNames[] = {
    {BarKind::Automatic, "auto"},
    {BarKind::Dock, "dock"},
    {BarKind::Tray, "tray"},
    {BarKind::Offscreen, "offscreen"},
};

constexpr const char* runHelp = R"(Usage: vostel [options]
       vostel COMMAND [options]

Menu-bar system & usage monitor.

Options:
  --bar=KIND     where the items are shown: auto (default), dock, tray, offscreen
  --image=FILE   the picture that the off-screen bar keeps up to date
  --version      print the version
  --help         print this text

Commands:
  snapshot       write the bar, the items and their popovers as PNG files
  status         print every item's current values
  export         write all settings to a file
  import         replace all settings by those of a file
Each command has a --help of its own.)";

constexpr const char* snapshotHelp = R"(Usage: vostel snapshot --out=DIR [options]

Writes the bar, every item, every popover and every settings panel as PNG, from live data.

Options:
  --out=DIR            the folder to write into; it is made when it is not there
  --module=ID          only this item
  --scale=N            device pixels per point, 0.5 to 4 (default 1)
  --appearance=WHICH   dark or light (default: both)
  --after=SECONDS      how long to gather values first, 1 to 600 (default 3.5); 60 fill the graphs
  --help               print this text)";

constexpr const char* statusHelp = R"(Usage: vostel status [--json]

Prints every enabled item's current values once.

Options:
  --json   as one JSON object
  --help   print this text)";

constexpr const char* exportHelp = R"(Usage: vostel export FILE

Writes all settings to a file, as an XML property list. Sign-in credentials aren't included.

  FILE     the file to write; "-" for the standard output
  --help   print this text)";

constexpr const char* importHelp = R"(Usage: vostel import FILE [--yes]

Replaces all settings by those of an exported file. When Vostel is running, it starts again with
them. Sign-in credentials aren't included.

  FILE     the file to read; "-" for the standard input, which needs --yes
  --yes    do not ask first
  --help   print this text)";

CommandLine failed(CommandLine result, const QString& message) {
    result.message = QStringLiteral("vostel: ") + message.simplified();
    result.exitStatus = 2;
    return result;
}

QString programName() {
    return QStringLiteral("vostel ") + QStringLiteral(VOSTEL_VERSION);
}

// The options of each command, and nothing else, are known to the parser.
void addOptions(QCommandLineParser& parser, CommandLine::Command command) {
    const auto add = [&](const char* name, bool takesValue) {
        parser.addOption(QCommandLineOption(QLatin1String(name), QString(),
                                            takesValue ? QStringLiteral("value") : QString()));
    };
    add("help", false);
    switch (command) {
        case CommandLine::Command::Run:
            add("version", false);
            add("bar", true);
            add("image", true);
            break;
        case CommandLine::Command::Snapshot:
            for (const char* name : {"out", "module", "scale", "appearance", "after"}) {
                add(name, true);
            }
            break;
        case CommandLine::Command::Status:
            add("json", false);
            break;
        case CommandLine::Command::Export:
            break;
        case CommandLine::Command::Import:
            add("yes", false);
            break;
    }
}

// Leaves `value` alone when the option is not given; false when it is no number from min to max.
bool readNumber(const QCommandLineParser& parser, const char* name, double& value, double min,
                double max) {
    if (!parser.isSet(QLatin1String(name))) {
        return true;
    }
    bool isNumber = false;
    value = parser.value(QLatin1String(name)).toDouble(&isNumber);
    return isNumber && value >= min && value <= max;
}

CommandLine readSnapshot(CommandLine result, const QCommandLineParser& parser,
                         const QStringList& moduleIds) {
    result.outFolder = parser.value(QStringLiteral("out"));
    result.module = parser.value(QStringLiteral("module"));
    if (result.outFolder.isEmpty()) {
        return failed(result, QStringLiteral("snapshot needs --out=DIR"));
    }
    const QFileInfo folder(result.outFolder);
    if (folder.exists() && (!folder.isDir() || !folder.isWritable())) {
        return failed(result, QStringLiteral("no folder to write into: %1").arg(result.outFolder));
    }
    if (parser.isSet(QStringLiteral("module")) && !moduleIds.contains(result.module)) {
        return failed(result, QStringLiteral("unknown module: %1 (known: %2)")
                                  .arg(result.module, moduleIds.join(QStringLiteral(", "))));
    }
    for (const auto& [name, value, min, max] : {std::tuple{"scale", &result.scale, 0.5, 4.0},
                                                std::tuple{"after", &result.after, 1.0, 600.0}}) {
        if (!readNumber(parser, name, *value, min, max)) {
            return failed(result, QStringLiteral("%1 must be %2 to %3, not %4")
                                      .arg(QLatin1String(name))
                                      .arg(min)
                                      .arg(max)
                                      .arg(parser.value(QLatin1String(name))));
        }
    }
    const QString appearance = parser.value(QStringLiteral("appearance"));
    if (appearance == QStringLiteral("dark")) {
        result.appearance = Appearance::Dark;
    } else if (appearance == QStringLiteral("light")) {
        result.appearance = Appearance::Light;
    } else if (parser.isSet(QStringLiteral("appearance"))) {
        return failed(
            result, QStringLiteral("unknown appearance: %1 (known: dark, light)").arg(appearance));
    }
    return result;
}

CommandLine readTransfer(CommandLine result, const QCommandLineParser& parser,
                         const QStringList& files) {
    const bool imports = result.command == CommandLine::Command::Import;
    if (files.isEmpty() || files.front().isEmpty()) {
        return failed(result, imports ? QStringLiteral("import needs a FILE")
                                      : QStringLiteral("export needs a FILE"));
    }
    result.file = files.front();
    result.yes = imports && parser.isSet(QStringLiteral("yes"));
    if (imports && !result.yes && result.file == QStringLiteral("-")) {
        return failed(result, QStringLiteral("import from the standard input needs --yes"));
    }
    return result;
}

CommandLine readRun(CommandLine result, const QCommandLineParser& parser) {
    if (parser.isSet(QStringLiteral("version"))) {
        result.message = programName();
        return result;
    }
    result.imagePath = parser.value(QStringLiteral("image"));
    if (parser.isSet(QStringLiteral("bar"))) {
        const QString name = parser.value(QStringLiteral("bar"));
        result.bar = barKindFromText(name);
        if (!result.bar) {
            return failed(
                result,
                QStringLiteral("unknown bar: %1 (known: auto, dock, tray, offscreen)").arg(name));
        }
    }
    if (!result.imagePath.isEmpty()) {
        const QFileInfo folder(QFileInfo(result.imagePath).absolutePath());
        if (!folder.isDir() || !folder.isWritable()) {
            return failed(result,
                          QStringLiteral("no folder to write into: %1").arg(folder.filePath()));
        }
    }
    return result;
}

}  // namespace

std::optional<BarKind> barKindFromText(const QString& text) {
    for (const auto& [kind, name] : barNames) {
        if (text == QLatin1String(name)) {
            return kind;
        }
    }
    return std::nullopt;
}

QString textOf(BarKind kind) {
    for (const auto& [known, name] : barNames) {
        if (known == kind) {
            return QLatin1String(name);
        }
    }
    return {};
}

CommandLine CommandLine::parse(const QStringList& arguments, const QStringList& moduleIds) {
    CommandLine result;
    QStringList rest = arguments;
    const char* help = runHelp;
    if (rest.size() > 1 && !rest[1].startsWith(u'-')) {
        const QString command = rest.takeAt(1);
        if (command == QStringLiteral("snapshot")) {
            result.command = Command::Snapshot;
            help = snapshotHelp;
        } else if (command == QStringLiteral("status")) {
            result.command = Command::Status;
            help = statusHelp;
        } else if (command == QStringLiteral("export")) {
            result.command = Command::Export;
            help = exportHelp;
        } else if (command == QStringLiteral("import")) {
            result.command = Command::Import;
            help = importHelp;
        } else {
            return failed(result,
                          QStringLiteral("unknown command: %1 (see vostel --help)").arg(command));
        }
    }
    QCommandLineParser parser;
    addOptions(parser, result.command);
    if (!parser.parse(rest)) {
        return failed(result, parser.errorText());
    }
    const QStringList files = parser.positionalArguments();
    const bool takesFile = result.command == Command::Export || result.command == Command::Import;
    if (files.size() > (takesFile ? 1 : 0)) {
        return failed(result, QStringLiteral("unexpected argument: %1").arg(files.back()));
    }
    if (parser.isSet(QStringLiteral("help"))) {
        result.message = QLatin1String(help);
        return result;
    }
    switch (result.command) {
        case Command::Snapshot:
            return readSnapshot(result, parser, moduleIds);
        case Command::Status:
            result.json = parser.isSet(QStringLiteral("json"));
            return result;
        case Command::Export:
        case Command::Import:
            return readTransfer(result, parser, files);
        case Command::Run:
            break;
    }
    return readRun(result, parser);
}

}  // namespace vostel
