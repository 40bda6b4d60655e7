#include "monitors/process/CommandWords.h"

#include "monitors/process/PathNames.h"

namespace vostel::CommandWords {

using NameLists::contains;
using NameLists::Context;
using NameLists::Interpreter;
using NameLists::Launcher;
using NameLists::noProgram;

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAssignment(std::string_view word) {
    const std::size_t equals = word.find('=');
    return equals != std::string_view::npos && equals > 0 &&
           word.substr(0, equals).find_first_of("/. ") == std::string_view::npos;
}

std::optional<Context> contextOf(std::string_view flag, const Interpreter& interpreter) {
    for (const NameLists::ContextFlag& entry : NameLists::contextFlags) {
        if (contains(entry.flags, flag) && contains(entry.interpreters, interpreter.name)) {
            return entry.context;
        }
    }
    return std::nullopt;
}

bool startsLikeSwitch(std::string_view flag) {
    std::string_view starts = NameLists::switchStarts;
    for (std::string_view start = takeWord(starts); !start.empty(); start = takeWord(starts)) {
        if (flag.starts_with(start)) {
            return true;
        }
    }
    return false;
}

// How a flag is to be read. `context` is set for one that says what runs; its `value` is the rest
// of the word, or the next word when it `takes` one.
struct Flag {
    bool known = true;
    std::size_t takes = 0;  // words behind it
    std::optional<Context> context = {};
    std::string_view value = {};
};

// `contextOf(flag)` knows the flags that say what runs. Short flags without a value (`letters`) may
// stand in one word, with one that has a value at their end: "-um" is "-u -m".
template <typename ContextOf>
Flag readFlag(std::string_view word, std::string_view values, std::string_view letters,
              std::string_view switches, ContextOf contextOf) {
    const std::size_t equals = word.find('=');
    if (const auto context = contextOf(word.substr(0, equals))) {
        const bool attached = equals != std::string_view::npos;
        return {true, attached ? 0u : 1u, context,
                attached ? word.substr(equals + 1) : std::string_view()};
    }
    if (contains(values, word)) {
        return {.takes = 1};
    }
    if (word.starts_with("--")) {
        return {.known = equals != std::string_view::npos || switches == "*" ||
                         contains(switches, word)};
    }
    for (std::size_t i = 1; i < word.size(); ++i) {
        const char flag[] = {word[0], word[i]};
        const std::string_view asFlag(flag, 2);
        const auto context = contextOf(asFlag);
        if (context || contains(values, asFlag)) {
            return {true, i + 1 == word.size() ? 1u : 0u, context, word.substr(i + 1)};
        }
        if (letters.find(word[i]) == std::string_view::npos) {
            return {.known = i == 1 && word.find_first_not_of("0123456789", 1) == word.npos};
        }
    }
    return {};
}

// A path, or a name with the extension of a script.
bool looksLikeFile(std::string_view word) {
    const bool path = word.starts_with('/') || word.starts_with("./") || word.starts_with("../") ||
                      word == "." || word.find(":\\") == 1;
    return path || stemOf(word).size() + 1 < baseName(word).size();
}

// runuser(1) takes a program only with the flag that names the user; else the first argument does.
bool hasUser(Words words) {
    return std::any_of(words.begin(), words.end(), [](std::string_view word) {
        return word == "--user" || word.starts_with("--user=") || word.starts_with("-u");
    });
}

template <typename Table>
const typename Table::value_type* findIn(const Table& table, std::string_view program) {
    std::string name;
    for (char c : program) {
        name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    for (int round = 0; round < 2; ++round) {
        for (const auto& entry : table) {
            if (entry.name == name) {
                return &entry;
            }
        }
        // python3.11, lua5.4, wine64, tclsh8.6
        name.erase(name.find_last_not_of("0123456789.-") + 1);
    }
    return nullptr;
}

}  // namespace

std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    return word;
}

std::string_view baseName(std::string_view path) {
    constexpr std::string_view deleted = " (deleted)";
    if (path.ends_with(deleted)) {
        path.remove_suffix(deleted.size());
    }
    const bool windows = path.size() > 2 && isLetter(path[0]) && path[1] == ':' && path[2] == '\\';
    const std::string_view separators = windows ? "\\/" : "/";
    path = path.substr(0, path.find_last_not_of(separators) + 1);
    path.remove_prefix(path.find_last_of(separators) + 1);  // npos + 1 is 0
    if (path.size() > 1 && path.front() == '-') {
        path.remove_prefix(1);
    }
    return path;
}

std::vector<std::string_view> splitCommand(std::string_view text, std::string_view comm) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::size_t end = std::string_view::npos;
    constexpr std::size_t commBytes = 15;  // TASK_COMM_LEN less its NUL
    for (std::size_t at = 0; !comm.empty() && at < text.size() && end > text.size();) {
        at = std::min(text.find(' ', at + 1), text.size());
        const std::string_view base = baseName(text.substr(0, at));
        if (base == comm || (comm.size() == commBytes && base.starts_with(comm))) {
            end = at;
        }
    }
    if (end > text.size()) {
        end = std::min(text.find(' '), text.size());
        const std::string_view folder = text.substr(0, text.rfind('/', end) + 1);
        const std::size_t limit =
            std::min({text.find(" -"), text.find(" /"), text.find(" (deleted)"), text.size()});
        const std::size_t lastSlash = text.rfind('/', limit > 0 ? limit - 1 : 0);
        // "/opt/Some Folder/some program", but not "/usr/bin/cat folder/file" or "/srv/tool key/x"
        if (text.starts_with("/opt/") && text.find('/', 5) > end &&
            lastSlash != std::string_view::npos && lastSlash > end && !folder.ends_with("bin/") &&
            folder.find("/lib") == std::string_view::npos) {
            end = limit;
        }
    }
    std::vector<std::string_view> words{text.substr(0, end)};
    for (text.remove_prefix(end); !text.empty();) {
        const std::string_view word = takeWord(text);
        if (!word.empty()) {
            words.push_back(word);
        }
    }
    return words;
}

std::string_view valueOf(Words words, std::string_view flag) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == flag) {
            return i + 1 < words.size() ? words[i + 1] : std::string_view();
        }
        if (words[i].starts_with(flag) && words[i].substr(flag.size()).starts_with('=')) {
            return words[i].substr(flag.size() + 1);
        }
    }
    return {};
}

const Interpreter* findInterpreter(std::string_view program) {
    return findIn(NameLists::interpreters, program);
}

const Launcher* findLauncher(std::string_view program) {
    return findIn(NameLists::launchers, program);
}

Launched launched(Words words, const Launcher& launcher) {
    const auto codeOf = [&](std::string_view flag) {
        return contains(launcher.code, flag) ? std::optional(Context::code) : std::nullopt;
    };
    bool options = true;
    bool certain = true;  // no flag so far that may have a value
    bool wantsSubcommand = !launcher.subcommands.empty();
    int positionals = launcher.positionals;
    if (launcher.name == "runuser" && !hasUser(words)) {
        positionals = noProgram;
    }
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (options && word == "--") {
            options = false;
            certain = true;
        } else if (options && word.size() > 1 && word.front() == '-') {
            if (launcher.name == "bwrap" && contains(NameLists::twoValues, word)) {
                i += 2;
                continue;
            }
            const Flag flag =
                readFlag(word, launcher.values, launcher.letters, launcher.switches, codeOf);
            if (flag.context) {
                const std::string_view next = i + 1 < words.size() ? words[i + 1] : "";
                return {0, flag.takes > 0 ? next : flag.value};
            }
            certain = certain && flag.known;
            i += flag.takes;
        } else if (!certain) {
            return {};
        } else if (wantsSubcommand) {
            if (!contains(launcher.subcommands, word)) {
                return {};
            }
            wantsSubcommand = false;
        } else if (positionals > 0) {
            --positionals;
        } else if (!isAssignment(word) && !word.empty()) {  // env(1), sudo(8)
            return launcher.code == "*" ? Launched{0, word} : Launched{i, {}};
        }
    }
    return {};
}

std::optional<Target> interpreterTarget(Words words, const Interpreter& interpreter) {
    const bool isShell = contains(NameLists::shells, interpreter.name);
    bool options = true;
    bool certain = true;  // no flag so far that may have a value
    bool isCode = false;  // the first argument that is no flag is code
    bool readsInput = false;
    bool subcommand = !interpreter.subcommands.empty();
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (options && word == "--") {
            options = false;
        } else if (!options || word.empty() || (word.front() != '-' && word.front() != '+')) {
            if (isCode) {
                return Target{Context::code, word, i};
            }
            if (readsInput) {
                return std::nullopt;
            }
            if (subcommand && contains(interpreter.subcommands, word)) {
                subcommand = false;
            } else if (!word.empty() && word.front() != '@') {  // java's argument files
                const bool blanks = word.find_first_of(" \t\n") != std::string_view::npos;
                const bool file = looksLikeFile(word) && word.find('\n') == std::string_view::npos;
                return file || (certain && !blanks) ? std::optional(Target{Context::file, word, i})
                                                    : std::nullopt;
            }
        } else if (word == "-") {
            return std::nullopt;
        } else {
            const Flag flag =
                readFlag(word, interpreter.values, interpreter.cluster, interpreter.switches,
                         [&](std::string_view name) { return contextOf(name, interpreter); });
            const bool shortFlags = isShell && !word.starts_with("--");
            if (shortFlags && word.front() == '-' && flag.takes == 0 && !flag.context) {
                readsInput = readsInput || word.find('s') != std::string_view::npos;
            }
            if (flag.context == Context::code && shortFlags && interpreter.name != "fish") {
                isCode = true;  // sh(1): the code is an argument, not the value of the flag
            } else if (flag.context) {
                const std::string_view next = i + 1 < words.size() ? words[i + 1] : "";
                return Target{*flag.context, flag.takes > 0 ? next : flag.value, i + flag.takes};
            } else {
                // "-Xmx1g", "-Mstrict": what stands in one word is complete in many.
                const bool complete = word.size() > 2 && word[1] != '-' &&
                                      contains(NameLists::joinsValues, interpreter.name);
                certain = certain && (flag.known || complete || startsLikeSwitch(word));
                i += flag.takes;
            }
        }
    }
    return std::nullopt;
}

}  // namespace vostel::CommandWords
