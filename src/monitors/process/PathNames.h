#pragma once

#include <string>
#include <string_view>

// What paths, modules and classes say about the program that they belong to.
namespace vostel {

// "main", "index", "launcher": a word that says nothing about the program.
bool isGenericName(std::string_view part);

// A file's name without the extensions of scripts and archives: "server.bundle.js" -> "server".
std::string_view stemOf(std::string_view path);

// Where a process runs, as far as that is known; what is not is empty.
struct ProcessPlace {
    std::string_view folder;  // its working directory
    std::string_view image;   // file name of the AppImage that its program lies in
};

// The name of the file that `interpreter` (a path) runs, or that of its folder or project when the
// file's own says nothing. "" when nothing does: "." in an unknown folder.
std::string fileLabel(std::string_view path, std::string_view interpreter,
                      const ProcessPlace& place);

// The name of a program that is run by itself: its last path component, less what packaging added
// ("game.exe", ".tool-wrapped", "code-<commit>", "AppRun.wrapped").
std::string programLabel(std::string_view path, const ProcessPlace& place);

// "org.example.tool.Main" -> "tool": the last part that says something.
std::string classLabel(std::string_view name);

// The editor server that a file belongs to: "/home/u/.vscode-server/.../server-main.js" ->
// "vscode-server"; "" for other files, among them its extensions.
std::string remoteEditor(std::string_view path);

// A dotted module path without the trailing parts that say nothing: "uvicorn.__main__" ->
// "uvicorn", "pip._internal.cli.main" -> "pip"; at least its first part stays.
std::string cleanModule(std::string_view module);

// The project that a virtual environment on `path` belongs to: "/home/u/shop/.venv/bin/python" ->
// "shop", "/home/u/.virtualenvs/shop/bin/python" -> "shop"; "" when there is none.
std::string projectFromVenv(std::string_view path);

// The nearest folder above the file whose name says something: "/srv/shop/src/main.py" -> "shop";
// "" when there is none. Home folders, versions and the usual folder names say nothing.
std::string parentDirName(std::string_view path);

}  // namespace vostel
