#pragma once

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <QHash>
#include <QIcon>
#include <QString>

#include "monitors/process/DesktopEntry.h"
#include "platform/ProcessSource.h"
#include "platform/SystemRoots.h"

namespace vostel {

// Where an icon is found; both empty: there is none.
struct AppIconName {
    QString theme;  // name in the icon theme
    QString file;   // absolute path, used when no theme has the name
    bool operator==(const AppIconName&) const = default;
};

// The icon of the application that a process belongs to, by the desktop entry that its systemd
// scope, its Flatpak or snap, or its executable names. Daemons and kernel threads have none.
// Reads the desktop files in `dataDirs`/applications when first asked, and again when one of these
// folders changes.
class AppIcons {
  public:
    explicit AppIcons(const SystemRoots& roots);

    // What icon() needs. Reads files: call it off the main thread; any thread may.
    AppIconName iconName(const ProcessDetails& details);

    // Main thread. A null icon when there is none.
    QIcon icon(const AppIconName& name);

  private:
    struct Folder {
        std::string path;
        std::int64_t changed = -1;  // modification time in ns, -1 for a folder that is not there
    };
    void refresh();
    void readFolder(const std::string& folder, const std::string& prefix, int depth, int& left);
    std::string programFile(const std::string& program) const;
    void addEntry(const std::string& id, const std::string& path);
    const DesktopEntry* find(const ProcessDetails& details) const;
    const DesktopEntry* findByExecutable(const ProcessDetails& details) const;
    AppIconName located(const std::string& icon) const;

    std::vector<std::string> dataDirs;
    std::mutex lock;  // guards what follows, up to `icons`
    std::vector<Folder> folders;
    std::unordered_map<std::string, DesktopEntry> byId;
    std::unordered_map<std::string, std::string> byProgram;  // base name, or folder + "/" -> id
    QHash<QString, QIcon> icons;                             // main thread only
};

}  // namespace vostel
