#pragma once

#include <functional>
#include <optional>

#include <QDateTime>
#include <QString>
#include <QUrl>

namespace vostel {

// A newer version and where it is to be had.
struct UpdateOffer {
    QString version;      // as a person reads it
    QDateTime published;  // invalid: not known
    QUrl page;            // HTTPS
    QUrl releaseNotes;    // HTTPS; may be empty
};

// What a check came to.
struct UpdateResult {
    enum class End {
        Done,     // the offer is the newest version, or there is none newer than this program
        Aborted,  // nothing was learned: no connection, no trust, no answer in time
        Error     // an answer came that is no use
    };
    End end = End::Done;
    std::optional<UpdateOffer> offer;
    QString error;  // not empty unless Done
};

// Where newer versions of the program are looked for.
class Updater {
  public:
    virtual ~Updater() = default;

    // Why it can never check, as a sentence for the user; empty when it can.
    virtual QString unavailableReason() const = 0;
    // Begins a check and calls `done` once, later, from the event loop. At most one at a time.
    // Deleting the updater ends a check without a call.
    virtual void check(std::function<void(UpdateResult)> done) = 0;
};

}  // namespace vostel
