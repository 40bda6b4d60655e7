#include "monitors/probes/TailscaleStatus.h"

#include <limits>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace vostel {

namespace {

constexpr qsizetype longestText = 255;

std::string bounded(const QString& text) {
    return text.left(longestText).toStdString();
}

}  // namespace

std::optional<TailscaleStatus> parseTailscaleStatus(std::string_view answer) {
    if (answer.size() > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(answer.data(), static_cast<qsizetype>(answer.size())));
    if (!document.isObject()) {
        return std::nullopt;
    }
    const QJsonObject root = document.object();
    const QJsonObject self = root.value(u"Self").toObject();
    TailscaleStatus status;
    status.backendState = bounded(root.value(u"BackendState").toString(QStringLiteral("Unknown")));
    status.dnsName = bounded(self.value(u"DNSName").toString());
    if (status.dnsName.ends_with('.')) {
        status.dnsName.pop_back();
    }
    for (const QJsonValue address : self.value(u"TailscaleIPs").toArray()) {
        if (address.isString() && !address.toString().contains(u':')) {
            status.ipv4 = bounded(address.toString());
            break;
        }
    }
    status.online = self.value(u"Online").toBool();
    return status;
}

}  // namespace vostel
