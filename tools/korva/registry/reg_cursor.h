// A place in .reg text that moves forward, and knows its line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/unicode.h"

namespace korva::tool {

/// All that is here belongs to any line of the format; what lines there are is the reader's.
///
/// What isn't found raises `RegTextError` with what was expected.
class RegCursor {
public:
    /// `text` has to live as long.
    explicit RegCursor(platform::WideView text) : rest(text) {}

    [[nodiscard]] std::size_t line() const { return lineNumber; }
    [[nodiscard]] bool isAtEnd() const { return rest.empty(); }
    /// Whether the line has nothing more to say: its end, that of the text, or a comment.
    [[nodiscard]] bool isAtLineEnd() const;
    [[nodiscard]] bool isAt(char c) const { return !rest.empty() && rest.front() == WCHAR(c); }

    /// Whether the text goes on so. Then it moves behind it.
    bool take(char c);
    bool take(std::string_view ascii);
    void skipBlanks();
    /// Blanks, and where a backslash ends a line all up to the first word of the next one. There has to be
    /// one: `expected` tells what.
    void skipBlanksAndJoints(const char* expected);

    /// 1 to `maxDigits` hexadecimal digits, at most 8, and no more of them behind.
    [[nodiscard]] std::uint32_t takeHex(std::size_t maxDigits, const char* expected);
    /// What stands in quotes, without its escapes. It may go over several lines.
    [[nodiscard]] platform::WideString takeQuoted();
    /// What stands in brackets: up to the last closing one of the line, as names may have some as well.
    [[nodiscard]] platform::WideView takeBracketed();
    /// Blanks, a comment, and the end of the line, which only an empty line may lack.
    void endLine();

    [[noreturn]] void fail(const std::string& expected) const;

private:
    bool takeLineBreak();
    void skipComment();
    void takeEscaped(platform::WideString& text);

    platform::WideView rest;
    std::size_t lineNumber = 1;
};

}  // namespace korva::tool
