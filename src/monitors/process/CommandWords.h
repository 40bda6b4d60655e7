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

// What a launcher starts: a program, given by its index, or shell code; neither is set (0, "") when
// that is nothing or cannot be told from the value of a flag that is not known.
struct Launched {
    std::size_t at = 0;
    std::string_view code;
};
Launched launched(Words words, const NameLists::Launcher& launcher);

// What an interpreter runs, and the index of the word that says so; nothing when it reads from its
// input or when that cannot be told.
struct Target {
    NameLists::Context context = NameLists::Context::file;
    std::string_view value;
    std::size_t at = 0;
};
std::optional<Target> interpreterTarget(Words words, const NameLists::Interpreter& interpreter);

// The value of a long flag, "--flag=value" or "--flag value"; "" when it is not there.
std::string_view valueOf(Words words, std::string_view flag);

// Blanks in front skipped, cut at the next blank; `text` moves behind it.
std::string_view takeWord(std::string_view& text);

}  // namespace vostel::CommandWords
