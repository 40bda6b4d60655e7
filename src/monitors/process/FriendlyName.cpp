#include "monitors/process/FriendlyName.h"

#include <optional>
#include <vector>

#include "monitors/process/CommandWords.h"
#include "monitors/process/NameLists.h"
#include "monitors/process/PrintableText.h"

namespace vostel {

using CommandWords::baseName;
using CommandWords::Words;
using NameLists::contains;
using NameLists::Context;

namespace {

constexpr std::size_t mostCharacters = 64;
constexpr int deepestNesting = 4;  // sudo env sh -c ...

struct Name {
    std::string plain;
    std::string_view addition;  // goes in parentheses; the interpreter, the role; may be empty
};

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

bool isGeneric(std::string_view part) {
    return contains(NameLists::genericParts, lower(part));
}

// "1.2.3", "v20.11", "python3.11", "22"
bool isVersion(std::string_view part) {
    const std::size_t digit = part.find_first_of("0123456789");
    if (digit == std::string_view::npos ||
        part.find_first_not_of("0123456789._-", digit) != std::string_view::npos) {
        return false;
    }
    const std::string head = lower(part.substr(0, digit));
    return head.empty() || head == "v" || contains(NameLists::genericDirs, head);
}

std::vector<std::string_view> splitPath(std::string_view path) {
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        if (end > 0 && path.substr(0, end) != ".") {
            parts.push_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

// The file name without the extensions of scripts ("server.bundle.js" -> "server") and "-cli".
std::string_view stemOf(std::string_view path) {
    std::string_view stem = baseName(path);
    for (std::size_t dot = stem.rfind('.'); dot != std::string_view::npos && dot > 0;
         dot = stem.rfind('.')) {
        if (!contains(NameLists::scriptExts, lower(stem.substr(dot + 1)))) {
            break;
        }
        stem = stem.substr(0, dot);
    }
    for (std::string_view suffix : {"-cli", "_cli"}) {
        if (stem.size() > suffix.size() && stem.ends_with(suffix)) {
            stem.remove_suffix(suffix.size());
        }
    }
    return stem;
}

std::string fileLabel(std::string_view path, std::string_view interpreterPath) {
    const std::string_view stem = stemOf(path);
    if (isGeneric(stem) || contains(NameLists::genericScripts, lower(stem))) {
        std::string better = parentDirName(path);
        if (better.empty()) {
            better = projectFromVenv(interpreterPath);
        }
        if (!better.empty()) {
            return better;
        }
    }
    return std::string(stem);
}

// "org.example.tool.Main" -> "tool": the last part that says something.
std::string classLabel(std::string_view name) {
    name = name.substr(0, name.find('/'));  // module/class
    for (std::string_view rest = name; !rest.empty();) {
        const std::size_t dot = rest.rfind('.');
        const std::string_view part = rest.substr(dot + 1);  // npos + 1 is 0
        if (!part.empty() && !isGeneric(part)) {
            return std::string(part);
        }
        rest = dot == std::string_view::npos ? std::string_view() : rest.substr(0, dot);
    }
    return std::string(name);
}

Name nameOf(Words words, std::string_view comm, int depth);

// The first command of a shell's "-c" text, when it is a plain one.
std::string codeLabel(std::string_view code, int depth) {
    for (bool again = true; again;) {
        std::string_view rest = code;
        const std::string_view word = CommandWords::takeWord(rest);
        const std::size_t next = rest.find_first_of("&;\n");
        again = (word == "cd" || word == "set") && next != std::string_view::npos;
        if (again) {
            code = rest.substr(std::min(rest.find_first_not_of("&;\n ", next), rest.size()));
        } else if (word == "exec" || (word.find('=') != std::string_view::npos &&
                                      word.find_first_of("'\"$`(") == std::string_view::npos)) {
            again = !rest.empty();
            code = rest;
        }
    }
    std::vector<std::string_view> words;
    code = code.substr(0, code.find_first_of("&;|\n<>"));
    while (!code.empty() && words.size() < 64) {
        if (const std::string_view word = CommandWords::takeWord(code); !word.empty()) {
            words.push_back(word);
        }
    }
    constexpr std::string_view plainWord =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._/+@-";
    if (words.empty() || words[0].find_first_not_of(plainWord) != std::string_view::npos ||
        contains(NameLists::shellWords, words[0])) {
        return {};
    }
    return nameOf(words, {}, depth + 1).plain;
}

Name interpreterName(Words words, const NameLists::Interpreter& interpreter, int depth) {
    const auto target = CommandWords::interpreterTarget(words, interpreter);
    std::string label;
    if (target && target->context == Context::code) {
        const bool isShell = contains("sh bash dash ash zsh ksh fish", interpreter.name);
        label = isShell && depth < deepestNesting ? codeLabel(target->value, depth) : "";
    } else if (target && target->context == Context::module) {
        label = cleanModule(target->value);
        if (isGeneric(label)) {
            const std::string project = projectFromVenv(words[0]);
            label = project.empty() ? label : project;
        }
    } else if (target &&
               (target->context == Context::className ||
                (interpreter.name == "java" && target->value.find('/') == std::string_view::npos &&
                 !target->value.ends_with(".java")))) {
        label = target->value.ends_with(".jar") ? fileLabel(target->value, words[0])
                                                : classLabel(target->value);
    } else if (target && !target->value.starts_with("/dev/") &&
               !target->value.starts_with("/proc/")) {
        label = fileLabel(target->value, words[0]);
    }
    if (label.empty()) {
        label = projectFromVenv(words[0]);
    }
    if (label.empty() || label == interpreter.name) {
        return {std::string(baseName(words[0])), {}};
    }
    return {label, interpreter.name};
}

// The value of a helper's "--type=", or what a "-contentproc" process ends with.
std::string_view helperRole(Words words) {
    std::string_view role;
    for (std::string_view word : words.subspan(1)) {
        constexpr std::string_view type = "--type=";
        constexpr std::string_view subType = "--utility-sub-type=";
        if (word == "-contentproc" && contains(NameLists::contentRoles, words.back())) {
            return words.back();
        }
        if (role.empty() && word.starts_with(type) &&
            contains(NameLists::helperRoles, word.substr(type.size()))) {
            role = word.substr(type.size());
        } else if (role == "utility" && word.starts_with(subType)) {
            word.remove_prefix(subType.size());
            role = word.substr(0, word.find('.'));
        }
    }
    return role == "gpu-process" ? "gpu" : role;
}

std::string_view appPath(Words words) {
    constexpr std::string_view flag = "--app-path=";
    for (std::string_view word : words) {
        if (word.starts_with(flag)) {
            return word.substr(flag.size());
        }
    }
    return {};
}

// `words` is not empty.
Name nameOf(Words words, std::string_view comm, int depth) {
    std::string_view program = baseName(words[0]);
    if (program.empty() || words[0].starts_with("/proc/")) {
        program = comm.empty() ? program : comm;
    }
    if (const std::string_view role = helperRole(words); !role.empty()) {
        const std::string_view app = appPath(words);
        const bool shared = CommandWords::findInterpreter(program) != nullptr && !app.empty();
        return {shared ? fileLabel(app, words[0]) : std::string(program), role};
    }
    if (const auto* launcher = CommandWords::findLauncher(program)) {
        const std::size_t at = CommandWords::launchedProgram(words, *launcher);
        if (at == 0 || depth >= deepestNesting) {
            return {std::string(program), {}};
        }
        Name inner = nameOf(words.subspan(at), {}, depth + 1);
        if (launcher->name == "flatpak" && inner.plain.find('.') != std::string::npos) {
            inner.plain = classLabel(inner.plain);
        }
        return {inner.plain, inner.addition.empty() ? launcher->name : inner.addition};
    }
    if (const auto* interpreter = CommandWords::findInterpreter(program)) {
        return interpreterName(words, *interpreter, depth);
    }
    return {std::string(program), {}};
}

// "sshd: u@pts/0", "postgres: writer", "nginx: master process /usr/sbin/nginx -g ...": a title that
// a process gave itself. Its text up to the first path or option.
std::optional<std::string> titleOf(std::string_view text) {
    const std::size_t colon = text.find(": ");
    if (colon == std::string_view::npos || colon == 0 ||
        text.substr(0, colon).find_first_of(" =\\") != std::string_view::npos ||
        text.front() == '-') {
        return std::nullopt;
    }
    std::string_view rest = text.substr(colon);
    rest = rest.substr(0, std::min({rest.find(" /"), rest.find(" (/"), rest.find(" -")}));
    std::string title(baseName(text.substr(0, colon)));
    title += rest;
    title.erase(title.find_last_not_of(": ") + 1);
    return title;
}

std::string finished(const Name& name, std::string_view comm) {
    std::string text = printableText(name.plain, mostCharacters);
    if (text.empty()) {
        text = printableText(comm, mostCharacters);
    }
    if (text.empty()) {
        return "?";
    }
    if (!name.addition.empty()) {
        const std::string addition = " (" + printableText(name.addition, 24) + ")";
        text = printableText(text, mostCharacters - addition.size()) + addition;
    }
    return text;
}

}  // namespace

std::string friendlyName(std::span<const std::string> arguments, std::string_view comm) {
    if (arguments.empty()) {
        return finished({std::string(comm), {}}, comm);
    }
    const std::string_view first = arguments.front();
    if (const auto title = titleOf(first)) {
        return finished({*title, {}}, comm);
    }
    std::vector<std::string_view> words(arguments.begin(), arguments.end());
    if (words.size() == 1 && first.find(' ') != std::string_view::npos) {
        if (first.find(" -") != std::string_view::npos) {
            words = CommandWords::splitCommand(first, comm);  // joined by the process itself
        } else if (first.find('/') > first.find(' ')) {
            return finished({std::string(first), {}},
                            comm);  // a title without colon: "npm run dev"
        }
    }
    return finished(nameOf(words, comm, 0), comm);
}

std::string friendlyName(std::string_view commandLine) {
    if (const auto title = titleOf(commandLine)) {
        return finished({*title, {}}, {});
    }
    if (commandLine.starts_with('[') && commandLine.ends_with(']')) {  // a kernel thread
        return finished({std::string(commandLine.substr(1, commandLine.size() - 2)), {}}, {});
    }
    return finished(nameOf(CommandWords::splitCommand(commandLine, {}), {}, 0), {});
}

std::string scriptName(std::span<const std::string> arguments) {
    const std::vector<std::string_view> storage(arguments.begin(), arguments.end());
    Words words = storage;
    for (int depth = 0; !words.empty() && depth < deepestNesting; ++depth) {
        const std::string_view program = baseName(words[0]);
        if (const auto* launcher = CommandWords::findLauncher(program)) {
            const std::size_t at = CommandWords::launchedProgram(words, *launcher);
            words = at > 0 ? words.subspan(at) : Words();
        } else if (const auto* interpreter = CommandWords::findInterpreter(program)) {
            const auto target = CommandWords::interpreterTarget(words, *interpreter);
            return target && target->context == Context::file ? std::string(stemOf(target->value))
                                                              : std::string();
        } else {
            break;
        }
    }
    return {};
}

std::string cleanModule(std::string_view module) {
    for (std::size_t dot = module.rfind('.'); dot != std::string_view::npos && dot > 0;
         dot = module.rfind('.')) {
        const std::string_view part = module.substr(dot + 1);
        if (!isGeneric(part) && !part.empty() && part.front() != '_') {
            break;
        }
        module = module.substr(0, dot);
    }
    return std::string(module);
}

std::string projectFromVenv(std::string_view path) {
    const std::vector<std::string_view> parts = splitPath(path);
    for (std::size_t i = parts.size(); i-- > 0;) {
        if (contains(NameLists::venvHomes, parts[i]) && i + 2 < parts.size()) {
            std::string_view name = parts[i + 1];  // "shop", or "shop-Ab3dE_g1-py3.11"
            const std::size_t python = name.rfind("-py");
            constexpr std::size_t hashLetters = 8;
            if (python != std::string_view::npos && python > hashLetters + 1 &&
                name[python - hashLetters - 1] == '-') {
                name = name.substr(0, python - hashLetters - 1);
            }
            return std::string(name);
        }
        if (contains(NameLists::venvDirs, parts[i]) && i > 0 && i + 1 < parts.size()) {
            const bool home = i == 2 && parts[0] == "home";
            return home ? "" : std::string(parts[i - 1]);
        }
    }
    return {};
}

std::string parentDirName(std::string_view path) {
    std::vector<std::string_view> parts = splitPath(path);
    if (!parts.empty()) {
        parts.pop_back();
    }
    const bool underHome = path.starts_with("/home/");
    for (std::size_t i = parts.size(); i-- > (underHome ? 2u : 0u);) {
        if (parts[i] != ".." && !contains(NameLists::genericDirs, lower(parts[i])) &&
            !isVersion(parts[i])) {
            return std::string(parts[i]);
        }
    }
    return {};
}

}  // namespace vostel
