#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "monitors/process/NameLists.h"

// Reading command lines: which word is the program, which one says what it runs. The views returned
// point into what was handed in.
namespace vostel::CommandWords {

using Words = std::span<const std::string_view>;

// The last component of a path, "/" and, for "C:\..." paths, "\" as separators; trailing
// separators, the "-" of a login shell and the kernel's " (deleted)" are dropped.
std::string_view baseName(std::string_view path);

// A command line whose arguments were joined by blanks. The program's own blanks are found by the
// kernel's short name when there is one, else by guessing: the program ends before " -", or at the
// first blank when it lies in a folder for programs.
std::vector<std::string_view> splitCommand(std::string_view text, std::string_view comm);

// The entry of a program in the lists of interpreters and launchers, by its base name in lower
// case, with or without its version; nullptr when it is in neither.
const NameLists::Interpreter* findInterpreter(std::string_view program);
const NameLists::Launcher* findLauncher(std::string_view program);

// The index of the program that a launcher starts, 0 when it starts none.
std::size_t launchedProgram(Words words, const NameLists::Launcher& launcher);

// What an interpreter runs; nothing when it reads from its input.
struct Target {
    NameLists::Context context = NameLists::Context::file;
    std::string_view value;
};
std::optional<Target> interpreterTarget(Words words, const NameLists::Interpreter& interpreter);

// Blanks in front skipped, cut at the next blank; `text` moves behind it.
std::string_view takeWord(std::string_view& text);

}  // namespace vostel::CommandWords
