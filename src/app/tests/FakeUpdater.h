#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "app/updates/Updater.h"

namespace vostel {

// Answers when the test says so.
class FakeUpdater : public Updater {
  public:
    QString unavailableReason() const override { return reason; }
    void check(std::function<void(UpdateResult)> call) override {
        EXPECT_FALSE(done) << "one at a time";
        done = std::move(call);
        ++checks;
    }
    void end(UpdateResult result) { std::exchange(done, nullptr)(std::move(result)); }

    QString reason;
    std::function<void(UpdateResult)> done;
    int checks = 0;
};

inline UpdateResult offerOf(const char* version) {
    return {UpdateResult::End::Done,
            UpdateOffer{QLatin1String(version),
                        {},
                        QUrl(QStringLiteral("https://e.org/")),
                        QUrl(QStringLiteral("https://e.org/notes"))},
            {}};
}

inline const UpdateResult failure{UpdateResult::End::Aborted, {}, QStringLiteral("no network")};

}  // namespace vostel
