#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include <QObject>
#include <QSslConfiguration>
#include <QUrl>

#include "app/updates/Appcast.h"
#include "app/updates/FeedDownload.h"
#include "app/updates/Updater.h"

namespace vostel {

// Looks for newer versions in a feed over HTTPS. It offers their page and downloads nothing else.
class AppcastUpdater : public QObject, public Updater {
    Q_OBJECT

  public:
    // `trust`: whose certificates are believed; the system's authorities where not given.
    AppcastUpdater(const QUrl& feed, UpdateNeeds needs,
                   std::optional<QSslConfiguration> trust = std::nullopt,
                   FeedDownload::Limits limits = {});
    ~AppcastUpdater() override;

    QString unavailableReason() const override;
    void check(std::function<void(UpdateResult)> done) override;

  private:
    UpdateResult resultOf(const QByteArray& body, const QString& error) const;

    QUrl feed;
    UpdateNeeds needs;
    std::optional<QSslConfiguration> trust;
    FeedDownload::Limits limits;
    std::unique_ptr<FeedDownload> download;  // while a check runs
};

// The updater of this build: its feed and key are chosen when it is configured (VOSTEL_UPDATE_FEED,
// VOSTEL_UPDATE_KEY). Null when it has no feed.
std::unique_ptr<Updater> makeUpdater();

}  // namespace vostel
