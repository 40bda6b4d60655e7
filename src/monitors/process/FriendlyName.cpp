#include "monitors/process/FriendlyName.h"

#include <optional>
#include <vector>

#include "monitors/process/CommandWords.h"
#include "monitors/process/NameLists.h"
#include "monitors/process/PrintableText.h"
#include "monitors/process/ShellCode.h"

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

// What is known of a process beside its arguments. `comm` is that of its own program, not of those
// that the arguments name further on.
struct Known {
    std::string_view comm;
    ProcessPlace place;
    int depth = 0;

    Known within() const { return {{}, place, depth + 1}; }
};

Name nameOf(Words words, const Known& known);

// The first command of shell code, "" when that cannot be told.
std::string codeLabel(std::string_view code, const Known& known) {
    const std::vector<std::string> command = firstCommand(code);
    const std::vector<std::string_view> words(command.begin(), command.end());
    constexpr std::string_view plainWord =
        " abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._/+@-";
    if (words.empty() || known.depth >= deepestNesting ||
        words[0].find_first_not_of(plainWord.substr(words[0].starts_with('/') ? 0 : 1)) !=
            std::string_view::npos ||
        contains(NameLists::shellWords, words[0])) {
        return {};
    }
    return nameOf(words, known.within()).plain;
}

std::string_view editorRole(Words words) {
    constexpr std::string_view flag = "--type=";
    for (const std::string_view word : words) {
        for (const NameLists::EditorRole& entry : NameLists::editorRoles) {
            if (word.starts_with(flag) && word.substr(flag.size()) == entry.type) {
                return entry.role;
            }
        }
    }
    return {};
}

// A file that an interpreter runs.
Name scriptNameOf(Words words, const CommandWords::Target& target,
                  const NameLists::Interpreter& interpreter, const Known& known) {
    if (const auto* launcher = CommandWords::findLauncher(baseName(target.value));
        launcher != nullptr && launcher->script && known.depth < deepestNesting) {
        return nameOf(words.subspan(target.at), known.within());
    }
    if (std::string editor = remoteEditor(target.value); !editor.empty()) {
        const std::string_view role = editorRole(words);
        return {std::move(editor), role.empty() ? interpreter.name : role};
    }
    return {fileLabel(target.value, words[0], known.place), interpreter.name};
}

Name targetName(Words words, const CommandWords::Target& target,
                const NameLists::Interpreter& interpreter, const Known& known) {
    const std::string_view value = target.value;
    switch (target.context) {
        case Context::code:
            return {contains(NameLists::shells, interpreter.name) ? codeLabel(value, known) : "",
                    interpreter.name};
        case Context::module: {
            const std::string module = cleanModule(value);
            const std::string project = isGenericName(module) ? projectFromVenv(words[0]) : "";
            return {project.empty() ? module : project, interpreter.name};
        }
        case Context::className:
            return {classLabel(value), interpreter.name};
        case Context::archive:
        case Context::project:
            return {fileLabel(value, {}, known.place), interpreter.name};
        case Context::file:
            break;
    }
    if (value.starts_with("/dev/") || value.starts_with("/proc/")) {
        return {};
    }
    if (interpreter.name == "java" && value.find('/') == std::string_view::npos &&
        !value.ends_with(".java")) {
        return {classLabel(value), interpreter.name};
    }
    if (interpreter.name == "dotnet" && value == "run") {
        const std::string_view project = CommandWords::valueOf(words, "--project");
        return {fileLabel(project.empty() ? "." : project, {}, known.place), interpreter.name};
    }
    return scriptNameOf(words, target, interpreter, known);
}

Name interpreterName(Words words, const NameLists::Interpreter& interpreter, const Known& known) {
    const auto target = CommandWords::interpreterTarget(words, interpreter);
    Name name = target ? targetName(words, *target, interpreter, known) : Name();
    if (name.plain.empty()) {
        name = {projectFromVenv(words[0]), interpreter.name};
    }
    if (name.plain.empty() || name.plain == interpreter.name) {
        return {std::string(baseName(words[0])), {}};
    }
    return name;
}

Name launcherName(Words words, const NameLists::Launcher& launcher, std::string_view program,
                  const Known& known) {
    const CommandWords::Launched inner = CommandWords::launched(words, launcher);
    Name name;
    if (known.depth < deepestNesting) {
        name = inner.at > 0 ? nameOf(words.subspan(inner.at), known.within())
                            : Name{codeLabel(inner.code, known), {}};
    }
    if (name.plain.empty()) {
        return {std::string(program), {}};
    }
    if (launcher.name == "flatpak" && name.plain.find('.') != std::string::npos) {
        name.plain = classLabel(name.plain);
    }
    return {name.plain, name.addition.empty() ? launcher.name : name.addition};
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
Name nameOf(Words words, const Known& known) {
    std::string_view program = baseName(words[0]);
    if (program.empty() || words[0].starts_with("/proc/")) {
        program = known.comm.empty() ? program : known.comm;
    }
    if (const std::string_view role = helperRole(words); !role.empty()) {
        const std::string_view app = appPath(words);
        const bool shared = CommandWords::findInterpreter(program) != nullptr && !app.empty();
        return {shared ? fileLabel(app, words[0], {}) : std::string(program), role};
    }
    if (const auto* launcher = CommandWords::findLauncher(program)) {
        return launcherName(words, *launcher, program, known);
    }
    if (const auto* interpreter = CommandWords::findInterpreter(program)) {
        return interpreterName(words, *interpreter, known);
    }
    const bool hasPath = program == baseName(words[0]);
    return {hasPath ? programLabel(words[0], known.place) : std::string(program), {}};
}

// A title without a colon: "npm run dev". Later words may be arguments that were joined.
std::string shortTitle(std::string_view text) {
    constexpr int mostWords = 3;
    std::string title;
    for (int i = 0; i < mostWords; ++i) {
        const std::string_view word = CommandWords::takeWord(text);
        if (word.empty() || word.find_first_of("=:@") != std::string_view::npos) {
            break;
        }
        title += (title.empty() ? "" : " ") + std::string(word);
    }
    return title;
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

std::string friendlyName(std::span<const std::string> arguments, std::string_view comm,
                         const ProcessPlace& place) {
    if (arguments.empty()) {
        return finished({std::string(comm), {}}, comm);
    }
    const std::string_view first = arguments.front();
    if (const auto title = titleOf(first)) {
        return finished({*title, {}}, comm);
    }
    std::vector<std::string_view> words(arguments.begin(), arguments.end());
    const bool windows = first.find(":\\") == 1;
    if (words.size() == 1 && first.find(' ') != std::string_view::npos && !windows) {
        if (first.find(" -") != std::string_view::npos) {
            words = CommandWords::splitCommand(first, comm);  // joined by the process itself
        } else if (first.find('/') > first.find(' ')) {
            return finished({shortTitle(first), {}}, comm);
        }
    }
    return finished(nameOf(words, {comm, place}), comm);
}

std::string friendlyName(const ProcessDetails& details, std::string_view comm) {
    return friendlyName(details.arguments, comm, {details.folder, details.image});
}

std::string friendlyName(std::string_view commandLine) {
    if (const auto title = titleOf(commandLine)) {
        return finished({*title, {}}, {});
    }
    if (commandLine.starts_with('[') && commandLine.ends_with(']') &&
        commandLine.find(' ') == std::string_view::npos) {  // a kernel thread
        return finished({std::string(commandLine.substr(1, commandLine.size() - 2)), {}}, {});
    }
    return finished(nameOf(CommandWords::splitCommand(commandLine, {}), {}), {});
}

std::string scriptName(std::span<const std::string> arguments) {
    const std::vector<std::string_view> storage(arguments.begin(), arguments.end());
    Words words = storage;
    for (int depth = 0; !words.empty() && depth < deepestNesting; ++depth) {
        const std::string_view program = baseName(words[0]);
        if (const auto* launcher = CommandWords::findLauncher(program)) {
            const std::size_t at = CommandWords::launched(words, *launcher).at;
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

}  // namespace vostel
