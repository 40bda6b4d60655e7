#include "app/Diagnostics.h"

#include <QDir>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSysInfo>

#include "app/BarSwitch.h"
#include "core/SourceText.h"
#include "platform/LogRing.h"

namespace vostel {

namespace {

const QString hidden = QStringLiteral("…");

QString barText(const StatusBar& bar) {
    const auto* chosen = dynamic_cast<const BarSwitch*>(&bar);
    return chosen == nullptr ? QStringLiteral("offscreen") : textOf(chosen->kind());
}

QString variable(const char* name) {
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? QStringLiteral("unknown") : redacted(value);
}

void replaceWord(QString& text, const QString& word) {
    if (word.size() > 1 && word != QStringLiteral("root") && word != QStringLiteral("localhost")) {
        text.replace(
            QRegularExpression(
                QStringLiteral("(?<![\\w.-])%1(?![\\w-])").arg(QRegularExpression::escape(word))),
            hidden);
    }
}

}  // namespace

QStringList sourceErrors(const Platform& platform) {
    QStringList lines;
    const auto add = [&](const QString& name, const SourceHealth& health) {
        const std::string last = health.lastError();
        if (!last.empty()) {
            lines << name + QStringLiteral(": ") + errorSentence(last) +
                         (health.error().empty() ? QStringLiteral(" It can be read again.")
                                                 : QString());
        }
    };
    add(QStringLiteral("Processors"), platform.cpu->health);
    add(QStringLiteral("Memory"), platform.memory->health);
    add(QStringLiteral("Network"), platform.network->health);
    add(QStringLiteral("Processes"), platform.processes->health);
    for (const auto& source : platform.gpu) {
        add(QStringLiteral("Graphics"), source->health);
    }
    return lines;
}

QString redacted(const QString& given) {
    QString text = given;
    const QString home = QDir::homePath();
    if (home.size() > 1) {
        text.replace(home, QStringLiteral("~"));
    }
    static const QRegularExpression homes(QStringLiteral("/(home|Users)/[^/\\s:\"']+|/root\\b"));
    text.replace(homes, QStringLiteral("~"));
    if (const QString display = qEnvironmentVariable("DISPLAY");
        !display.isEmpty() && !display.startsWith(u':')) {
        text.replace(display, hidden);
    }
    static const QRegularExpression patterns[] = {
        QRegularExpression(QStringLiteral("\\b[A-Za-z][A-Za-z0-9+.-]*://\\S+")),
        QRegularExpression(QStringLiteral("[\\w.+-]+@[\\w-]+(\\.[\\w-]+)*")),
        QRegularExpression(QStringLiteral("\\b\\d{1,3}(\\.\\d{1,3}){3}\\b")),
        // Hardware addresses and IPv6, shortened ones, too.
        QRegularExpression(
            QStringLiteral("(?<![\\w:])(?:[0-9A-Fa-f]{1,4}:){3,7}[0-9A-Fa-f.:]*|"
                           "(?<![\\w:])[0-9A-Fa-f:]*::[0-9A-Fa-f:.]*[0-9A-Fa-f](?:%\\w+)?")),
        QRegularExpression(QStringLiteral("\\bsk-[\\w-]+|[A-Za-z0-9_+=-]{24,}")),
    };
    for (const QRegularExpression& pattern : patterns) {
        text.replace(pattern, hidden);
    }
    replaceWord(text, QSysInfo::machineHostName());
    replaceWord(text, qEnvironmentVariable("USER"));
    replaceWord(text, QDir(home).dirName());
    return text;
}

QString diagnostics(const AppContext& context) {
    QStringList lines{
        QStringLiteral("Vostel " VOSTEL_VERSION),
        QStringLiteral("Qt %1 (%2)")
            .arg(QLatin1String(qVersion()), QGuiApplication::platformName()),
        QStringLiteral("Kernel: %1 %2").arg(QSysInfo::kernelType(), QSysInfo::kernelVersion()),
        QStringLiteral("System: %1, %2")
            .arg(QSysInfo::prettyProductName(), QSysInfo::currentCpuArchitecture()),
        QStringLiteral("Desktop: %1, session %2")
            .arg(variable("XDG_CURRENT_DESKTOP"), variable("XDG_SESSION_TYPE")),
        QStringLiteral("Bar: ") + barText(context.statusBar)};
    QStringList errors = sourceErrors(context.platform);
    if (errors.isEmpty()) {
        errors << QStringLiteral("All can be read.");
    }
    lines << QString() << QStringLiteral("Sources");
    for (const QString& error : errors) {
        lines << redacted(error);
    }
    lines << QString() << QStringLiteral("Log");
    for (const std::string& line : recentLogLines()) {
        lines << redacted(QString::fromStdString(line));
    }
    return lines.join(u'\n') + u'\n';
}

}  // namespace vostel
