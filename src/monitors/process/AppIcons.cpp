#include "monitors/process/AppIcons.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "monitors/process/CommandWords.h"
#include "monitors/process/FriendlyName.h"
#include "platform/linux/ProcFile.h"

namespace vostel {

namespace {

constexpr int mostFiles = 4096;  // desktop files in one data folder
constexpr int deepestFolder = 4;
constexpr std::size_t mostBytes = 256 << 10;  // one desktop file with all its translations
constexpr int mostIcons = 256;

std::int64_t changeTime(const std::string& path) {
    struct stat status{};
    if (stat(path.c_str(), &status) != 0) {
        return -1;
    }
    return static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 +
           status.st_mtim.tv_nsec;
}

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : std::string();
}

// A folder that holds one application's programs, with its "/"; "" for the shared ones.
std::string ownFolder(const std::string& program) {
    const std::size_t slash = program.rfind('/');
    if (slash == std::string::npos || slash == 0) {
        return {};
    }
    const std::string folder = program.substr(0, slash);
    const std::string_view name = CommandWords::baseName(folder);
    const bool shared = name == "bin" || name == "sbin" || name == "games" || name == "libexec" ||
                        name == "lib" || name == "lib64";
    return shared ? std::string() : folder + "/";
}

}  // namespace

AppIcons::AppIcons(const SystemRoots& roots) : dataDirs(roots.dataDirs) {}

void AppIcons::refresh() {
    const bool same =
        !folders.empty() && std::all_of(folders.begin(), folders.end(), [](const Folder& folder) {
            return changeTime(folder.path) == folder.changed;
        });
    if (same) {
        return;
    }
    folders.clear();
    byId.clear();
    byProgram.clear();
    for (const std::string& directory : dataDirs) {
        int left = mostFiles;
        readFolder(directory + "/applications", "", 0, left);
    }
}

// The id of a file in a subfolder is its path with "-" for "/".
void AppIcons::readFolder(const std::string& folder, const std::string& prefix, int depth,
                          int& left) {
    folders.push_back({folder, changeTime(folder)});
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    std::vector<std::string> names;
    while (directory && left > 0) {
        const dirent* entry = readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
            --left;
        }
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        constexpr std::string_view extension = ".desktop";
        const std::string path = folder + "/" + name;
        struct stat status{};
        if (stat(path.c_str(), &status) != 0) {
            continue;
        }
        if (S_ISDIR(status.st_mode) && depth < deepestFolder) {
            readFolder(path, prefix + name + "-", depth + 1, left);
        } else if (S_ISREG(status.st_mode) && name.ends_with(extension)) {
            addEntry(prefix + name.substr(0, name.size() - extension.size()), path);
        }
    }
}

// The file behind the program of an Exec line, links followed. One without a path is looked for in
// the "bin" beside each data folder ("/usr/share" -> "/usr/bin").
std::string AppIcons::programFile(const std::string& program) const {
    if (program.starts_with('/')) {
        const std::string real = realPath(program);
        return real.empty() ? program : real;
    }
    for (const std::string& directory : dataDirs) {
        const std::string real =
            realPath(directory.substr(0, directory.find_last_of('/') + 1) + "bin/" + program);
        if (!real.empty() && program.find('/') == std::string::npos) {
            return real;
        }
    }
    return program;
}

void AppIcons::addEntry(const std::string& id, const std::string& path) {
    const auto text = byId.contains(id) ? std::nullopt : readSmallFile(path, mostBytes);
    if (!text) {
        return;  // the folder of higher rank wins, also with an entry that hides this one
    }
    const DesktopEntry& entry = byId[id] = parseDesktopEntry(*text);
    const std::string program = executableOf(entry);
    if (!entry.application || entry.hidden || entry.noDisplay || entry.icon.empty() ||
        program.empty()) {
        return;
    }
    const std::string real = programFile(program);
    for (const std::string& key : {std::string(CommandWords::baseName(program)),
                                   std::string(CommandWords::baseName(real)), ownFolder(real)}) {
        std::string& owner = byProgram[key];
        // Of an application's many entries the one with the plainest command is the application.
        if (!key.empty() && (owner.empty() || entry.exec.size() < byId[owner].exec.size())) {
            owner = id;
        }
    }
}

const DesktopEntry* AppIcons::findByExecutable(const ProcessDetails& details) const {
    std::vector<std::string> keys;
    const std::string program = details.executable.empty() && !details.arguments.empty()
                                    ? details.arguments[0]
                                    : details.executable;
    const std::string_view base = CommandWords::baseName(program);
    if (CommandWords::findInterpreter(base) != nullptr ||
        CommandWords::findLauncher(base) != nullptr) {
        keys = {scriptName(details.arguments)};
    } else {
        keys = {std::string(base), ownFolder(program)};
    }
    constexpr std::string_view snaps = "/snap/";
    if (program.starts_with(snaps)) {
        const std::string name =
            program.substr(snaps.size(), program.find('/', snaps.size()) - snaps.size());
        if (const auto entry = byId.find(name + "_" + name); entry != byId.end()) {
            return &entry->second;
        }
    }
    for (const std::string& key : keys) {
        const auto id = key.empty() ? byProgram.end() : byProgram.find(key);
        if (id != byProgram.end() && !id->second.empty()) {
            return &byId.at(id->second);
        }
    }
    return nullptr;
}

const DesktopEntry* AppIcons::find(const ProcessDetails& details) const {
    if (details.cgroup.starts_with("/system.slice/") || details.cgroup == "/init.scope" ||
        (details.arguments.empty() && details.executable.empty())) {
        return nullptr;
    }
    for (const std::string& id : desktopIdsOf(details.cgroup)) {
        const auto entry = byId.find(id);
        if (entry != byId.end() && !entry->second.hidden && !entry->second.terminal) {
            return &entry->second;
        }
    }
    return findByExecutable(details);
}

// Icons that only lie in the folder "pixmaps" are in no theme.
AppIconName AppIcons::located(const std::string& icon) const {
    if (icon.starts_with('/')) {
        return {{}, QString::fromStdString(icon)};
    }
    AppIconName name{QString::fromStdString(icon), {}};
    if (icon.find('/') != std::string::npos) {
        return {};
    }
    for (const std::string& directory : dataDirs) {
        for (const char* extension : {"", ".svg", ".png", ".xpm"}) {
            const std::string path = directory + "/pixmaps/" + icon + extension;
            if (name.file.isEmpty() && changeTime(path) >= 0) {
                name.file = QString::fromStdString(path);
            }
        }
    }
    return name;
}

AppIconName AppIcons::iconName(const ProcessDetails& details) {
    const std::lock_guard guard(lock);
    refresh();
    const DesktopEntry* entry = find(details);
    return entry == nullptr || entry->icon.empty() ? AppIconName() : located(entry->icon);
}

QIcon AppIcons::icon(const AppIconName& name) {
    const QString& key = name.theme.isEmpty() ? name.file : name.theme;
    if (key.isEmpty()) {
        return {};
    }
    if (const auto known = icons.constFind(key); known != icons.cend()) {
        return *known;
    }
    QIcon icon = name.theme.isEmpty() ? QIcon() : QIcon::fromTheme(name.theme);
    if (icon.isNull() && !name.file.isEmpty()) {
        icon = QIcon(name.file);
        if (icon.pixmap(16).isNull()) {
            icon = QIcon();  // nothing there, or no picture
        }
    }
    if (icon.isNull()) {
        // Some applications name a theme icon with its extension.
        for (const QLatin1String extension : {QLatin1String(".png"), QLatin1String(".svg")}) {
            if (icon.isNull() && name.theme.endsWith(extension)) {
                icon = QIcon::fromTheme(name.theme.chopped(extension.size()));
            }
        }
    }
    if (icons.size() >= mostIcons) {
        icons.clear();
    }
    icons.insert(key, icon);
    return icon;
}

}  // namespace vostel
