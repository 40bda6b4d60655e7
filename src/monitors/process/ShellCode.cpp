#include "monitors/process/ShellCode.h"

#include <algorithm>

#include "monitors/process/NameLists.h"

namespace vostel {

using NameLists::contains;

namespace {

constexpr std::size_t mostWords = 64;
constexpr std::string_view nameLetters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
constexpr std::string_view blanks = " \t";

struct Word {
    std::string text;
    std::size_t quotedFrom = std::string::npos;  // where the first quoted letter stands
    bool known = true;                           // nothing in it that only a shell could tell
};

// Splits one simple command after the other off the code (POSIX.1-2017, Shell Command Language,
// 2.3), as far as that needs no knowledge of what runs before.
class Scanner {
  public:
    explicit Scanner(std::string_view code) : rest(code) {}

    enum class End { command, other, code, unclear };  // other: a pipe, a redirection

    // The words up to the end of the command; what ends it is taken, too.
    End take(std::vector<Word>& words) {
        words.clear();
        while (true) {
            skip(rest.find_first_not_of(blanks));
            if (rest.empty()) {
                return End::code;
            }
            if (rest.front() == '#') {
                skip(rest.find('\n'));
            } else if (starts(";") || starts("\n") || starts("&&")) {
                skip(starts("&&") ? 2 : 1);
                return End::command;
            } else if (starts("<") || starts(">") || starts("|") || starts("&")) {
                return End::other;
            } else if (starts("(") || starts(")")) {
                return End::unclear;
            } else if (Word word; takeWord(word)) {
                words.push_back(std::move(word));
            } else {
                return End::unclear;
            }
        }
    }

  private:
    bool starts(std::string_view text) const { return rest.starts_with(text); }
    void skip(std::size_t count) { rest.remove_prefix(std::min(count, rest.size())); }

    bool takeWord(Word& word) {
        constexpr std::string_view ends = " \t\n;&|<>()";
        while (!rest.empty() && ends.find(rest.front()) == std::string_view::npos) {
            const char c = rest.front();
            if (c == '\'' || c == '"' || c == '\\') {
                word.quotedFrom = std::min(word.quotedFrom, word.text.size());
            }
            if (c == '\'') {
                const std::size_t end = rest.find('\'', 1);
                if (end == std::string_view::npos) {
                    return false;
                }
                word.text += rest.substr(1, end - 1);
                skip(end + 1);
            } else if (c == '"') {
                skip(1);
                while (!starts("\"")) {
                    if (!takeCharacter(word)) {
                        return false;
                    }
                }
                skip(1);
            } else if (!takeCharacter(word)) {
                return false;
            }
        }
        // "2>file": the number is the redirection's.
        if ((starts("<") || starts(">")) &&
            word.text.find_first_not_of("0123456789") == std::string::npos) {
            word.known = false;
        }
        return true;
    }

    // One letter, an escaped one, or "$NAME", which makes the word unknown.
    bool takeCharacter(Word& word) {
        if (rest.empty() || rest.front() == '`') {
            return false;
        }
        if (rest.front() == '$') {
            word.known = false;
            skip(1);
            if (starts("(") || starts("'")) {
                return false;
            }
            if (starts("{")) {
                const std::size_t end = rest.find_first_not_of(nameLetters, 1);
                skip(end);
                if (!starts("}")) {
                    return false;
                }
                skip(1);
            } else {
                skip(rest.find_first_not_of(nameLetters));
            }
            return true;
        }
        if (rest.front() == '\\') {
            skip(1);
            if (rest.empty()) {
                return false;
            }
        }
        word.text += rest.front();
        skip(1);
        return true;
    }

    std::string_view rest;
};

bool isAssignment(const Word& word) {
    const std::size_t equals = word.text.find('=');
    return equals != std::string::npos && equals > 0 && equals < word.quotedFrom &&
           word.text.find_first_not_of(nameLetters) == equals;
}

}  // namespace

std::vector<std::string> firstCommand(std::string_view code) {
    Scanner scanner(code);
    std::vector<Word> words;
    while (true) {
        const Scanner::End end = scanner.take(words);
        if (end == Scanner::End::unclear) {
            return {};
        }
        auto first = std::find_if_not(words.begin(), words.end(), isAssignment);
        if (first != words.end() && first->text == "exec" && first->known) {
            ++first;
        }
        const bool prepares = first == words.end() ||
                              (first->known && contains(NameLists::shellPreparation, first->text));
        if (!prepares) {
            std::vector<std::string> result;
            for (; first != words.end() && first->known && result.size() < mostWords; ++first) {
                result.push_back(std::move(first->text));
            }
            return result;
        }
        if (end != Scanner::End::command) {
            return {};
        }
    }
}

}  // namespace vostel
