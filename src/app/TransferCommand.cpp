#include "app/TransferCommand.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

#include <QApplication>
#include <QFile>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "app/SettingsExchange.h"
#include "app/SingleInstance.h"
#include "core/SettingsTransfer.h"
#include "statusbar/OffscreenBar.h"
#include "statusbar/SessionBus.h"

namespace vostel {

namespace {

constexpr int failure = 1;
constexpr int usage = 2;
constexpr std::chrono::seconds patience{10};  // for a program that starts again

int failed(const QString& why, int status = failure) {
    std::fprintf(stderr, "vostel: %s\n", why.simplified().toLocal8Bit().constData());
    return status;
}

// The toolkit is needed for the settings objects and the bus, and must not look for a display or
// start a bus.
void prepareProcess() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    prepareSessionBus();
}

bool isStandard(const QString& file) {
    return file == QStringLiteral("-");
}

// Calls `use` with a store that every reader of the settings has told what it takes.
template <typename Use>
auto withReaders(Use use) {
    AppServices services(makeLinuxPlatform(SystemRoots::ofThisMachine()), settingsFilePath(),
                         DefaultsStore::Access::ReadOnly);
    ItemOrder order(services.defaults, itemNames());
    OffscreenBar bar(order);
    const AppDelegate delegate(services, bar);
    return use(services.defaults);
}

// What stands on disk, as it is exported.
SettingsTransfer::Loaded<QByteArray> storedSettings() {
    if (access(QFile::encodeName(settingsFilePath()).constData(), F_OK) != 0 && errno == ENOENT) {
        return {std::nullopt, QStringLiteral("there are no settings yet")};
    }
    const auto bytes = SettingsTransfer::readFile(settingsFilePath());
    if (!bytes.value) {
        return bytes;
    }
    const auto settings = SettingsTransfer::parse(*bytes.value);
    if (!settings.value) {
        return {std::nullopt, QStringLiteral("the settings in %1 cannot be read: %2")
                                  .arg(settingsFilePath(), settings.error)};
    }
    return withReaders([&](const DefaultsStore& store) -> SettingsTransfer::Loaded<QByteArray> {
        return {SettingsTransfer::exported(*settings.value, store).toXml(), {}};
    });
}

bool agrees() {
    std::printf("%s\n%s\nImport? [y/N] ", SettingsExchange::question, SettingsExchange::warning);
    std::fflush(stdout);
    char answer[16] = {};
    return std::fgets(answer, sizeof answer, stdin) != nullptr &&
           (answer[0] == 'y' || answer[0] == 'Y');
}

int importIntoFile(PropertyList settings) {
    DefaultsStore store(settingsFilePath(), nullptr);
    if (const auto error = store.exchange(std::move(settings))) {
        return failed(*error);
    }
    std::puts("Settings imported.");
    return 0;
}

int reportOfRunning(const QString& error) {
    if (!error.isEmpty()) {
        return failed(error);
    }
    std::puts("Settings imported; Vostel has started again with them.");
    return 0;
}

// Into the running program, which may be just starting again after another import, or into the
// file where none runs.
int import(const QByteArray& bytes, PropertyList settings) {
    std::optional<int> status;
    SingleInstance::insist(patience, [&] {
        if (SingleInstance instance(runtimeFolder()); instance.acquire()) {
            status = importIntoFile(std::move(settings));
        } else if (const auto error = SingleInstance::askToImport(bytes)) {
            status = reportOfRunning(*error);
        }
        return status.has_value();
    });
    return status ? *status
                  : failed(QStringLiteral("Vostel is running but cannot be reached over D-Bus; "
                                          "quit it, then import"));
}

}  // namespace

int runExport(const CommandLine& commandLine, int& argc, char** argv) {
    prepareProcess();
    const QApplication application(argc, argv);
    SettingsTransfer::Loaded<QByteArray> settings;
    if (SingleInstance instance(runtimeFolder()); !instance.acquire()) {
        settings.value = SingleInstance::askForSettings();  // with what it has not written yet
    }
    if (!settings.value) {
        settings = storedSettings();
    }
    if (!settings.value) {
        return failed(settings.error);
    }
    if (isStandard(commandLine.file)) {
        const auto size = static_cast<std::size_t>(settings.value->size());
        return std::fwrite(settings.value->constData(), 1, size, stdout) == size &&
                       std::fflush(stdout) == 0
                   ? 0
                   : failed(QStringLiteral("cannot write to the standard output"));
    }
    if (const auto error = SettingsTransfer::writeFile(commandLine.file, *settings.value)) {
        return failed(*error);
    }
    return 0;
}

int runImport(const CommandLine& commandLine, int& argc, char** argv) {
    prepareProcess();
    const QApplication application(argc, argv);
    const auto bytes = isStandard(commandLine.file) ? SettingsTransfer::readAll(STDIN_FILENO)
                                                    : SettingsTransfer::readFile(commandLine.file);
    if (!bytes.value) {
        return failed(bytes.error);
    }
    auto settings = SettingsTransfer::parse(*bytes.value);
    if (!settings.value) {
        return failed(settings.error);
    }
    const auto objection = withReaders([&](const DefaultsStore& store) {
        return SettingsTransfer::objection(*settings.value, store);
    });
    if (objection) {
        return failed(*objection);
    }
    if (!commandLine.yes) {
        if (isatty(STDIN_FILENO) == 0) {
            return failed(QStringLiteral("nobody to ask at this input; say --yes to import"),
                          usage);
        }
        if (!agrees()) {
            return failure;
        }
    }
    return import(*bytes.value, std::move(*settings.value));
}

}  // namespace vostel
