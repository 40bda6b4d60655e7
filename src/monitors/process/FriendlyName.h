#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vostel {

// The name under which a person knows a process: the last path component of its program; for an
// interpreter or a launcher what it runs, with the interpreter in parentheses; for a process that
// wrote a title over its arguments that title; the helper's role in parentheses for browsers'
// helpers. Always printable UTF-8 of at most 64 characters, and nothing of the later arguments,
// which may hold secrets.
//
// `arguments` is the argument vector, any bytes; `comm` the kernel's short name, which is taken
// when there are no arguments (kernel threads, zombies) or when they do not name the program.
std::string friendlyName(std::span<const std::string> arguments, std::string_view comm);

// The same from one line of text, as ps prints it: the arguments joined by blanks.
std::string friendlyName(std::string_view commandLine);

// The base name, without extension, of the file that an interpreter runs, past any launchers; ""
// for other programs.
std::string scriptName(std::span<const std::string> arguments);

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
