#include "monitors/process/PathNames.h"

#include <algorithm>
#include <vector>

#include "monitors/process/CommandWords.h"
#include "monitors/process/NameLists.h"

namespace vostel {

using CommandWords::baseName;
using NameLists::contains;

namespace {

constexpr std::string_view imageMount = ".mount_";  // runtimes of AppImages mount them there

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
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

// "." is dropped, ".." takes its folder along.
std::vector<std::string_view> splitPath(std::string_view path) {
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        const std::string_view part = path.substr(0, end);
        if (part == ".." && !parts.empty() && parts.back() != "..") {
            parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

bool isFolder(std::string_view path) {
    const std::string_view last = path.substr(path.rfind('/') + 1);  // npos + 1 is 0
    return last.empty() || last == "." || last == "..";
}

// "Krita-5.2.2-x86_64.AppImage" -> "Krita"
std::string imageLabel(std::string_view image) {
    constexpr std::string_view extension = ".appimage";
    std::string_view name = image;
    if (lower(name).ends_with(extension)) {
        name.remove_suffix(extension.size());
    }
    for (std::size_t at = name.find_first_of("-_ ."); at != std::string_view::npos && at > 0;
         at = name.find_first_of("-_ .", at + 1)) {
        const std::string rest = lower(name.substr(at + 1));
        const std::size_t digit = rest.starts_with('v') ? 1 : 0;
        const bool version = rest.size() > digit && rest[digit] >= '0' && rest[digit] <= '9';
        const auto starts = [&](std::string_view word) { return rest.starts_with(word); };
        if (version || starts("x86_64") || starts("x86-64") || starts("amd64") ||
            starts("aarch64") || starts("arm") || starts("linux") || starts("i686")) {
            return std::string(name.substr(0, at));
        }
    }
    return std::string(name);
}

// The AppImage's own name for a file in its mount; "" for others. The mount's folder holds the
// first letters of the image's file name and six random ones.
std::string imageNameOf(std::string_view path, std::string_view image) {
    for (std::string_view part : splitPath(path)) {
        constexpr std::size_t randomLetters = 6;
        if (part.starts_with(imageMount) && part.size() > imageMount.size() + randomLetters) {
            part = part.substr(imageMount.size());
            return imageLabel(image.empty() ? part.substr(0, part.size() - randomLetters) : image);
        }
    }
    return {};
}

std::string joined(std::string_view folder, std::string_view path) {
    return folder.empty() || path.starts_with('/') ? std::string(path)
                                                   : std::string(folder) + '/' + std::string(path);
}

}  // namespace

bool isGenericName(std::string_view part) {
    return contains(NameLists::genericParts, lower(part));
}

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

std::string fileLabel(std::string_view path, std::string_view interpreter,
                      const ProcessPlace& place) {
    if (isFolder(path)) {
        return parentDirName(joined(place.folder, path) + "/file");
    }
    const std::string_view stem = stemOf(path);
    if (!isGenericName(stem) && !contains(NameLists::genericScripts, lower(stem))) {
        return std::string(stem);
    }
    if (const std::string image = imageNameOf(path, place.image); !image.empty()) {
        return image;
    }
    std::string better = parentDirName(path);
    if (better.empty()) {
        better = projectFromVenv(interpreter);
    }
    if (better.empty() && contains("__main__ __init__", stem)) {  // its folder is the program
        const std::vector<std::string_view> parts = splitPath(path);
        better = parts.size() > 1 && parts[parts.size() - 2] != ".." ? parts[parts.size() - 2] : "";
    }
    if (better.empty()) {
        better = parentDirName(joined(place.folder, path));
    }
    return better.empty() ? std::string(stem) : better;
}

std::string programLabel(std::string_view path, const ProcessPlace& place) {
    const std::string_view base = baseName(path);
    if (lower(base).ends_with(".exe")) {
        return fileLabel(path, {}, {});
    }
    if (lower(base).starts_with("apprun")) {
        std::string image = imageNameOf(path, place.image);
        image = image.empty() ? parentDirName(path) : image;
        return image.empty() ? std::string(base) : image;
    }
    constexpr std::string_view wrapped = "-wrapped";
    if (base.starts_with('.') && base.size() > wrapped.size() + 1 && base.ends_with(wrapped)) {
        return std::string(base.substr(1, base.size() - 1 - wrapped.size()));
    }
    constexpr std::size_t commitDigits = 32;
    const std::size_t dash = base.rfind('-');
    if (dash != std::string_view::npos && dash > 0 && base.size() - dash > commitDigits &&
        base.find_first_not_of("0123456789abcdef", dash + 1) == std::string_view::npos) {
        return std::string(base.substr(0, dash));
    }
    return std::string(base);
}

std::string classLabel(std::string_view name) {
    name = name.substr(0, name.find('/'));  // module/class
    for (const NameLists::KnownClass& known : NameLists::knownClasses) {
        if (name == known.name) {
            return std::string(known.program);
        }
    }
    for (std::string_view rest = name; !rest.empty();) {
        const std::size_t dot = rest.rfind('.');
        const std::string_view part = rest.substr(dot + 1);  // npos + 1 is 0
        if (!part.empty() && !isGenericName(part)) {
            return std::string(part);
        }
        rest = dot == std::string_view::npos ? std::string_view() : rest.substr(0, dot);
    }
    return std::string(name);
}

std::string remoteEditor(std::string_view path) {
    std::string_view editor;
    for (const std::string_view part : splitPath(path)) {
        constexpr std::string_view server = "-server";
        const std::size_t at = part.find(server);
        if (part == "extensions") {
            return {};
        }
        if (part.starts_with('.') && at != std::string_view::npos && at > 1) {
            editor = part.substr(1, at + server.size() - 1);
        }
    }
    return std::string(editor);
}

std::string cleanModule(std::string_view module) {
    for (std::size_t dot = module.rfind('.'); dot != std::string_view::npos && dot > 0;
         dot = module.rfind('.')) {
        const std::string_view part = module.substr(dot + 1);
        if (!isGenericName(part) && !part.empty() && part.front() != '_') {
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
    if (!parts.empty() && parts[0].ends_with(':')) {
        parts.erase(parts.begin());  // "Z:\..."
    }
    const bool absolute = path.starts_with('/') || path.find(":\\") == 1;
    const bool underHome = absolute && !parts.empty() && contains("home users", lower(parts[0]));
    for (std::size_t i = parts.size(); i-- > (underHome ? 2u : 0u);) {
        if (parts[i] != ".." && !contains(NameLists::genericDirs, lower(parts[i])) &&
            !isVersion(parts[i])) {
            return std::string(parts[i]);
        }
    }
    return {};
}

}  // namespace vostel
