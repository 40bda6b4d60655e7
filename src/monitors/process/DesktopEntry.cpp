#include "monitors/process/DesktopEntry.h"

#include <utility>

#include "monitors/process/CommandWords.h"

namespace vostel {

namespace {

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

// The escapes of a string value.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            ++i;
            const char c = text[i];
            result += c == 's' ? ' ' : c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::vector<std::string> execWords(std::string_view text) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    bool any = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            quoted = !quoted;
            any = true;
        } else if (c == '\\' && quoted && i + 1 < text.size()) {
            word += text[++i];
        } else if ((c == ' ' || c == '\t') && !quoted) {
            if (any) {
                words.push_back(std::exchange(word, {}));
            }
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any) {
        words.push_back(word);
    }
    return words;
}

int hexDigit(char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// systemd-escape(1): "\x2d" stands for "-".
std::string unescapedUnit(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i).starts_with("\\x") && i + 3 < text.size() &&
            hexDigit(text[i + 2]) >= 0 && hexDigit(text[i + 3]) >= 0) {
            result += static_cast<char>(hexDigit(text[i + 2]) * 16 + hexDigit(text[i + 3]));
            i += 3;
        } else {
            result += text[i];
        }
    }
    return result;
}

// "app-gnome-org.x.Y" may name "gnome-org.x.Y" or, with a launcher, "org.x.Y".
void addIds(std::string_view unit, std::vector<std::string>& ids) {
    for (;;) {
        if (!unit.empty()) {
            ids.push_back(unescapedUnit(unit));
        }
        const std::size_t dash = unit.find('-');
        if (dash == std::string_view::npos) {
            return;
        }
        unit.remove_prefix(dash + 1);
    }
}

void addSnapId(std::string_view unit, std::vector<std::string>& ids) {
    unit.remove_prefix(std::string_view("snap.").size());
    const std::size_t dot = unit.find('.');
    if (dot != std::string_view::npos) {
        const std::string_view app = unit.substr(dot + 1);
        ids.push_back(std::string(unit.substr(0, dot)) + '_' +
                      std::string(app.substr(0, app.find_first_of(".-"))));
    }
}

}  // namespace

DesktopEntry parseDesktopEntry(std::string_view text) {
    DesktopEntry entry;
    bool inGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) {
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inGroup || equals == std::string_view::npos || line.starts_with('#')) {
            continue;
        }
        const std::string_view key = trimmed(line.substr(0, equals));
        const std::string_view value = trimmed(line.substr(equals + 1));
        if (key == "Type") {
            entry.application = value == "Application";
        } else if (key == "Hidden") {
            entry.hidden = value == "true";
        } else if (key == "NoDisplay") {
            entry.noDisplay = value == "true";
        } else if (key == "X-GNOME-Autostart-enabled") {
            entry.autostart = value != "false";
        } else if (key == "Categories") {
            entry.terminal = value.find("TerminalEmulator") != std::string_view::npos;
        } else if (key == "Icon") {
            entry.icon = unescaped(value);
        } else if (key == "Exec") {
            entry.exec = execWords(unescaped(value));
        }
    }
    return entry;
}

std::string executableOf(const DesktopEntry& entry) {
    bool environment = false;
    for (const std::string& word : entry.exec) {
        const std::string_view base = CommandWords::baseName(word);
        if (base == "env") {
            environment = true;
        } else if (!environment || word.find('=') == std::string::npos) {
            const bool says = CommandWords::findLauncher(base) == nullptr &&
                              CommandWords::findInterpreter(base) == nullptr;
            return says && !base.starts_with('-') ? word : std::string();
        }
    }
    return {};
}

std::vector<std::string> desktopIdsOf(std::string_view cgroup) {
    std::vector<std::string> ids;
    // The innermost group that belongs to an application counts: applications make own subgroups.
    while (ids.empty() && !cgroup.empty()) {
        const std::size_t slash = cgroup.rfind('/');
        std::string_view unit = cgroup.substr(slash + 1);  // npos + 1 is 0
        cgroup = slash == std::string_view::npos ? std::string_view() : cgroup.substr(0, slash);
        const bool scope = unit.ends_with(".scope");
        if (!scope && !unit.ends_with(".service")) {
            continue;
        }
        unit = unit.substr(0, unit.rfind('.'));
        if (unit.starts_with("snap.")) {
            addSnapId(unit, ids);
        } else if (unit.starts_with("app-")) {
            unit = unit.substr(0, scope ? unit.rfind('-') : unit.find('@'));
            if (unit.size() > 4) {
                addIds(unit.substr(4), ids);
            }
        }
    }
    return ids;
}

}  // namespace vostel
