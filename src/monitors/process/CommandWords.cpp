#include "monitors/process/CommandWords.h"

namespace vostel::CommandWords {

using NameLists::contains;
using NameLists::Context;
using NameLists::Interpreter;
using NameLists::Launcher;

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// A flag of the launcher: how many words it takes, itself included.
std::size_t flagWords(std::string_view flag, const Launcher& launcher) {
    if (launcher.name == "bwrap" && contains(NameLists::twoValues, flag)) {
        return 3;
    }
    return contains(launcher.values, flag) ? 2 : 1;
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

// "-um" is "-u -m": the flag that takes the rest of the word (or the next word) as its value, as a
// position in `word`; 0 when the letters before it do not allow to read the word so.
std::size_t clusteredFlag(std::string_view word, const Interpreter& interpreter) {
    for (std::size_t i = 1; i < word.size(); ++i) {
        const char flag[] = {'-', word[i]};
        const std::string_view asFlag(flag, 2);
        if (contextOf(asFlag, interpreter) || contains(interpreter.values, asFlag)) {
            return i;
        }
        if (interpreter.cluster.find(word[i]) == std::string_view::npos) {
            return 0;
        }
    }
    return 0;
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
        // "/opt/Some Folder/some program", but not "/usr/bin/cat folder/file"
        if (text.starts_with('/') && lastSlash != std::string_view::npos && lastSlash > end &&
            !folder.ends_with("bin/") && folder.find("/lib") == std::string_view::npos) {
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

const Interpreter* findInterpreter(std::string_view program) {
    return findIn(NameLists::interpreters, program);
}

const Launcher* findLauncher(std::string_view program) {
    return findIn(NameLists::launchers, program);
}

std::size_t launchedProgram(Words words, const Launcher& launcher) {
    bool wantsSubcommand = !launcher.subcommands.empty();
    int positionals = launcher.positionals;
    for (std::size_t i = 1; i < words.size();) {
        const std::string_view word = words[i];
        if (word.size() > 1 && word.front() == '-') {
            i += flagWords(word, launcher);
        } else if (wantsSubcommand) {
            if (!contains(launcher.subcommands, word)) {
                return 0;
            }
            wantsSubcommand = false;
            ++i;
        } else if (positionals > 0) {
            --positionals;
            ++i;
        } else if (isAssignment(word) || word.empty()) {
            ++i;  // env(1), sudo(8)
        } else {
            return i;
        }
    }
    return 0;
}

std::optional<Target> interpreterTarget(Words words, const Interpreter& interpreter) {
    bool options = true;
    bool subcommand = !interpreter.subcommands.empty();
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (options && word == "--") {
            options = false;
        } else if (!options || word.empty() || (word.front() != '-' && word.front() != '+')) {
            if (subcommand && contains(interpreter.subcommands, word)) {
                subcommand = false;
            } else if (!word.empty() && word.front() != '@') {  // java's argument files
                return Target{Context::file, word};
            }
        } else if (word == "-") {
            return std::nullopt;
        } else {
            const std::size_t equals = std::min(word.find('='), word.size());
            std::string_view value =
                equals < word.size() ? word.substr(equals + 1)
                                     : (i + 1 < words.size() ? words[i + 1] : std::string_view());
            std::optional<Context> context = contextOf(word.substr(0, equals), interpreter);
            bool takesNext = equals == word.size() &&
                             (context.has_value() || contains(interpreter.values, word));
            if (const std::size_t at = clusteredFlag(word, interpreter);
                !takesNext && at > 0 && !word.starts_with("--")) {
                const char flag[] = {'-', word[at]};
                context = contextOf(std::string_view(flag, 2), interpreter);
                takesNext = at + 1 == word.size();
                value = takesNext ? value : word.substr(at + 1);
            }
            if (context) {
                return Target{*context, value};
            }
            i += takesNext ? 1 : 0;
        }
    }
    return std::nullopt;
}

}  // namespace vostel::CommandWords
