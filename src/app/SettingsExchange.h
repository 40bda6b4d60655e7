#pragma once

#include <functional>

#include <QObject>

#include "app/Relaunch.h"
#include "core/Background.h"
#include "core/DefaultsStore.h"
#include "core/SettingsTransfer.h"

namespace vostel {

// Puts the settings of a file in the place of the running program's own and has the program start
// again with them. Whatever fails leaves the settings as they were.
class SettingsExchange : public QObject {
    Q_OBJECT

  public:
    // What the user is asked before it, UTF-8.
    static constexpr const char* question = "Replace all settings?";
    static constexpr const char* warning =
        "This overwrites your current Vostel preferences with the imported ones and relaunches the "
        "app. Sign-in credentials aren’t included, so signed-in accounts may need to sign in "
        "again.";

    // Borrows both.
    SettingsExchange(DefaultsStore& store, Background& background);

    using Loaded = SettingsTransfer::Loaded<PropertyList>;
    // Reads off the main thread; what the program could not use is an error.
    void read(const QString& path, std::function<void(Loaded)> done);

    // Calls `done` with the error, or with an empty text when this process is about to end.
    using Done = std::function<void(const QString& error)>;
    void replace(PropertyList settings, Done done);
    // Both in one, of a file's bytes.
    void import(const QByteArray& bytes, Done done);

    // Starts the program again and ends this one when that has worked.
    std::function<void(Relaunch::Done done)> relaunch;

  private:
    void load(std::function<SettingsTransfer::Loaded<QByteArray>()> bytes,
              std::function<void(Loaded)> done);

    DefaultsStore& defaults;
    Background& background;
};

}  // namespace vostel
