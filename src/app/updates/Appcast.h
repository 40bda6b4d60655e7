#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

namespace vostel {

// One release that an update feed names. Only what can be offered at all becomes one: it has a
// version, and every link it gives is an absolute HTTPS address.
struct AppcastItem {
    QString version;          // what is compared
    QString shownVersion;     // what a person reads; the version where the feed has none of its own
    QString minimumSystem;    // of the kernel's release; empty: any
    QString operatingSystem;  // empty: any
    QString channel;          // of a preview; empty: the releases for everybody
    QDateTime published;      // invalid where the feed does not say
    QUrl page;                // where it is to be had
    QUrl releaseNotes;        // may be empty
    QByteArray signature;     // of the download, as the feed has it; may be empty
};

constexpr qsizetype longestAppcast = 1'000'000;  // bytes

// Reads an update feed: RSS 2.0 with the customary update namespace. Items stand in the feed's
// order; an item without what it needs is left out, elements without meaning here are passed over.
// Nothing when the bytes are too many, no well-formed XML to the end, no RSS, or hold a document
// type declaration.
std::optional<std::vector<AppcastItem>> parseAppcast(const QByteArray& feed);

// What an item has to fit to be offered.
struct UpdateNeeds {
    std::string version;  // of this program
    std::string system;   // release of the kernel; empty: not known, every item fits
    bool signature = false;
};

// The newest item that is newer than this program and fits; null when there is none.
const AppcastItem* newestOffer(const std::vector<AppcastItem>& items, const UpdateNeeds& needs);

}  // namespace vostel
