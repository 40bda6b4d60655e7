#include "app/SettingsExchange.h"

namespace vostel {

SettingsExchange::SettingsExchange(DefaultsStore& store, Background& worker)
    : defaults(store), background(worker) {}

void SettingsExchange::load(std::function<SettingsTransfer::Loaded<QByteArray>()> bytes,
                            std::function<void(Loaded)> done) {
    background.run(
        this,
        [bytes = std::move(bytes)]() -> Loaded {
            const auto contents = bytes();
            return contents.value ? SettingsTransfer::parse(*contents.value)
                                  : Loaded{std::nullopt, contents.error};
        },
        [this, done = std::move(done)](Loaded loaded) {
            if (loaded.value) {
                if (const auto objection = SettingsTransfer::objection(*loaded.value, defaults)) {
                    loaded = {std::nullopt, *objection};
                }
            }
            done(std::move(loaded));
        });
}

void SettingsExchange::read(const QString& path, std::function<void(Loaded)> done) {
    load([path] { return SettingsTransfer::readFile(path); }, std::move(done));
}

void SettingsExchange::import(const QByteArray& bytes, Done done) {
    load([bytes] { return SettingsTransfer::Loaded<QByteArray>{bytes, {}}; },
         [this, done = std::move(done)](Loaded loaded) {
             if (loaded.value) {
                 replace(std::move(*loaded.value), done);
             } else {
                 done(loaded.error);
             }
         });
}

void SettingsExchange::replace(PropertyList settings, Done done) {
    if (const auto error = defaults.exchange(std::move(settings))) {
        done(*error);
        return;
    }
    relaunch([this, done = std::move(done)](const std::optional<QString>& error) {
        if (error) {
            defaults.undoExchange();
        }
        done(error ? QStringLiteral("Vostel could not be started again: %1").arg(*error)
                   : QString());
    });
}

}  // namespace vostel
