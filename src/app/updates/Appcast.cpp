#include "app/updates/Appcast.h"

#include <algorithm>

#include <QXmlStreamReader>

#include "app/updates/VersionOrder.h"

namespace vostel {

namespace {

constexpr qsizetype longestVersion = 32;  // characters
constexpr qsizetype longestLink = 2048;
constexpr qsizetype signatureBytes = 64;  // Ed25519, RFC 8032

const QString updateNamespace =
    QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

// What an item says, before it is judged.
struct RawItem {
    QString version;
    QString shownVersion;
    QString published;
    QString page;
    QString releaseNotes;
    QString download;
    AppcastItem item;
};

void take(QString& target, const QString& text) {
    if (target.isEmpty()) {
        target = text.trimmed();
    }
}

void readEnclosure(const QXmlStreamAttributes& attributes, RawItem& raw) {
    const auto own = [&](const char* name) {
        return attributes.value(updateNamespace, QLatin1String(name)).toString();
    };
    take(raw.download, attributes.value(QLatin1String("url")).toString());
    take(raw.version, own("version"));
    take(raw.shownVersion, own("shortVersionString"));
    take(raw.item.minimumSystem, own("minimumSystemVersion"));
    take(raw.item.operatingSystem, own("os"));
    if (raw.item.signature.isEmpty()) {
        raw.item.signature = own("edSignature").trimmed().toLatin1();
    }
}

// Where an element's text goes; null for one without meaning here.
QString* targetOf(const QXmlStreamReader& xml, RawItem& raw) {
    const QStringView name = xml.name();
    if (xml.namespaceUri() == updateNamespace) {
        return name == u"version"                ? &raw.version
               : name == u"shortVersionString"   ? &raw.shownVersion
               : name == u"minimumSystemVersion" ? &raw.item.minimumSystem
               : name == u"releaseNotesLink"     ? &raw.releaseNotes
               : name == u"channel"              ? &raw.item.channel
                                                 : nullptr;
    }
    if (!xml.namespaceUri().isEmpty()) {
        return nullptr;
    }
    return name == u"link" ? &raw.page : name == u"pubDate" ? &raw.published : nullptr;
}

RawItem readItem(QXmlStreamReader& xml) {
    RawItem raw;
    while (xml.readNextStartElement()) {
        if (QString* target = targetOf(xml, raw)) {
            take(*target, xml.readElementText(QXmlStreamReader::SkipChildElements));
            continue;
        }
        if (xml.name() == u"enclosure" && xml.namespaceUri().isEmpty()) {
            readEnclosure(xml.attributes(), raw);
        }
        xml.skipCurrentElement();
    }
    return raw;
}

bool isVersion(const QString& text) {
    return !text.isEmpty() && text.size() <= longestVersion &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c.isPrint(); });
}

// An empty text gives an empty address; nothing where there is one that must not be opened.
std::optional<QUrl> linkFrom(const QString& text) {
    if (text.isEmpty()) {
        return QUrl();
    }
    QUrl url(text, QUrl::StrictMode);
    const bool good = text.size() <= longestLink && url.isValid() && !url.host().isEmpty() &&
                      url.scheme() == QStringLiteral("https") && url.userInfo().isEmpty();
    return good ? std::optional(std::move(url)) : std::nullopt;
}

std::optional<AppcastItem> judged(RawItem raw) {
    AppcastItem item = std::move(raw.item);
    item.version = raw.version.isEmpty() ? raw.shownVersion : raw.version;
    item.shownVersion = raw.shownVersion.isEmpty() ? raw.version : raw.shownVersion;
    const auto page = linkFrom(raw.page);
    const auto download = linkFrom(raw.download);
    const auto notes = linkFrom(raw.releaseNotes);
    if (!isVersion(item.version) || !isVersion(item.shownVersion) || !page || !download || !notes) {
        return std::nullopt;
    }
    item.page = !page->isEmpty() ? *page : *download;
    if (item.page.isEmpty()) {
        return std::nullopt;
    }
    item.releaseNotes = *notes;
    item.published = QDateTime::fromString(raw.published, Qt::RFC2822Date);
    return item;
}

void readChannel(QXmlStreamReader& xml, std::vector<AppcastItem>& items) {
    while (xml.readNextStartElement()) {
        if (xml.name() == u"item" && xml.namespaceUri().isEmpty()) {
            if (auto item = judged(readItem(xml))) {
                items.push_back(*std::move(item));
            }
        } else {
            xml.skipCurrentElement();
        }
    }
}

bool hasDocumentType(QXmlStreamReader& xml) {
    while (!xml.atEnd() && !xml.isStartElement()) {
        if (xml.readNext() == QXmlStreamReader::DTD) {
            return true;
        }
    }
    return false;
}

bool isSignature(const QByteArray& text) {
    const auto bytes =
        QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    return bytes && bytes.decoded.size() == signatureBytes;
}

bool fits(const AppcastItem& item, const UpdateNeeds& needs) {
    const bool otherSystem =
        !item.operatingSystem.isEmpty() &&
        item.operatingSystem.compare(QStringLiteral("linux"), Qt::CaseInsensitive) != 0;
    const bool tooOld =
        !item.minimumSystem.isEmpty() && !needs.system.empty() &&
        compareVersions(leadingNumbers(needs.system), item.minimumSystem.toStdString()) < 0;
    return !otherSystem && !tooOld && item.channel.isEmpty() &&
           (!needs.signature || isSignature(item.signature)) &&
           compareVersions(item.version.toStdString(), needs.version) > 0;
}

}  // namespace

std::optional<std::vector<AppcastItem>> parseAppcast(const QByteArray& feed) {
    if (feed.size() > longestAppcast) {
        return std::nullopt;
    }
    QXmlStreamReader xml(feed);
    if (hasDocumentType(xml) || xml.name() != u"rss") {
        return std::nullopt;
    }
    std::vector<AppcastItem> items;
    while (xml.readNextStartElement()) {
        if (xml.name() == u"channel" && xml.namespaceUri().isEmpty()) {
            readChannel(xml, items);
        } else {
            xml.skipCurrentElement();
        }
    }
    // To the last byte: a feed that was cut may lack its newest item.
    while (!xml.atEnd()) {
        xml.readNext();
    }
    return xml.hasError() ? std::nullopt : std::optional(std::move(items));
}

const AppcastItem* newestOffer(const std::vector<AppcastItem>& items, const UpdateNeeds& needs) {
    const AppcastItem* newest = nullptr;
    for (const AppcastItem& item : items) {
        if (fits(item, needs) &&
            (newest == nullptr ||
             compareVersions(item.version.toStdString(), newest->version.toStdString()) > 0)) {
            newest = &item;
        }
    }
    return newest;
}

}  // namespace vostel
