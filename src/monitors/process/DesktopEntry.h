#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// What an application's desktop entry tells of its icon and of its processes.
struct DesktopEntry {
    bool application = false;       // Type=Application
    bool hidden = false;            // Hidden=true: as if the file were not there
    bool noDisplay = false;         // not in menus
    bool autostart = true;          // X-GNOME-Autostart-enabled, for an entry that starts at login
    bool terminal = false;          // a terminal emulator: what runs in it is not part of it
    std::string icon;               // theme name or absolute path
    std::vector<std::string> exec;  // the words of Exec
};

// The group [Desktop Entry] of a file (Desktop Entry Specification 1.5); other lines are skipped.
DesktopEntry parseDesktopEntry(std::string_view text);

// The program that Exec starts, past env and assignments; "" when it is a launcher or an
// interpreter, which says nothing about whose process it is.
std::string executableOf(const DesktopEntry& entry);

// The desktop file ids that a control group names, best guess first (systemd's "Desktop
// Environments": app[-LAUNCHER]-ID-RANDOM.scope, app[-LAUNCHER]-ID[@RANDOM].service; snap's
// "snap.NAME.APP-UUID.scope"). Empty for other groups.
std::vector<std::string> desktopIdsOf(std::string_view cgroup);

}  // namespace vostel
