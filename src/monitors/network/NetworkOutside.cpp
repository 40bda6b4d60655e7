#include "monitors/network/NetworkOutside.h"

#include <memory>
#include <utility>

#include <QCoreApplication>

#include "monitors/process/FriendlyName.h"
#include "platform/Platform.h"
#include "platform/Subprocess.h"

namespace vostel {

namespace {

void askForWAN(QObject* owner, WANIPFetcher::Completion completion) {
    auto* fetcher = new WANIPFetcher;
    fetcher->setParent(owner);
    fetcher->fetch(0, owner,
                   [fetcher, done = std::move(completion)](const std::optional<QString>& address) {
                       fetcher->deleteLater();
                       done(address);
                   });
}

// An icon's name as one text: theme name, line end, file.
QString iconText(const AppIconName& name) {
    return name == AppIconName() ? QString() : name.theme + u'\n' + name.file;
}

}  // namespace

NetworkOutside NetworkOutside::ofThisMachine(AppContext& context, AppIcons& icons) {
    NetworkOutside outside;
    outside.fetchWAN = askForWAN;
    outside.fetchTailscale = [&background = context.background](QObject* owner,
                                                                TailscaleProbe::Completion done) {
        TailscaleProbe probe(background, Subprocess::run,
                             TailscaleProbe::places(qgetenv("PATH").toStdString()));
        probe.fetch(owner, std::move(done));
    };
    outside.traffic.helper = ProcessNetMonitor::helperBeside(
        QCoreApplication::applicationDirPath().toLocal8Bit().toStdString());
    outside.traffic.identify = [&context, &icons](int pid, const std::string& comm) -> AppIdentity {
        const auto details = context.platform.processes->details(pid, -1);
        return {QString::fromStdString(friendlyName(details.value_or(ProcessDetails()), comm)),
                details ? iconText(icons.iconName(*details)) : QString()};
    };
    outside.traffic.loadIcon = [&icons](const QString& text) {
        const qsizetype end = text.indexOf(u'\n');
        return icons.icon({text.left(end), text.mid(end + 1)});
    };
    return outside;
}

}  // namespace vostel
