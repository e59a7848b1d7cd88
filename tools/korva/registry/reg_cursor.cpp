#include "korva/registry/reg_cursor.h"

#include <algorithm>

#include "korva/registry/reg_text.h"

namespace korva::tool {
namespace {

using platform::WideString;
using platform::WideView;

constexpr std::uint32_t noDigit = 16;

std::uint32_t hexDigit(WCHAR unit) {
    if (unit >= '0' && unit <= '9') {
        return static_cast<std::uint32_t>(unit - '0');
    }
    if (unit >= 'a' && unit <= 'f') {
        return static_cast<std::uint32_t>(unit - 'a' + 10);
    }
    if (unit >= 'A' && unit <= 'F') {
        return static_cast<std::uint32_t>(unit - 'A' + 10);
    }
    return noDigit;
}

bool isLineBreak(WCHAR unit) {
    return unit == '\r' || unit == '\n';
}

std::size_t lineLength(WideView text) {
    return static_cast<std::size_t>(std::ranges::find_if(text, isLineBreak) - text.begin());
}

}  // namespace

bool RegCursor::isAtLineEnd() const {
    return rest.empty() || isLineBreak(rest.front()) || isAt(';');
}

bool RegCursor::take(char c) {
    const bool isThere = isAt(c);
    rest.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

bool RegCursor::take(std::string_view ascii) {
    const bool isThere =
        rest.size() >= ascii.size() && std::equal(ascii.begin(), ascii.end(), rest.begin(),
                                                  [](char c, WCHAR unit) { return unit == WCHAR(c); });
    rest.remove_prefix(isThere ? ascii.size() : 0);
    return isThere;
}

void RegCursor::skipBlanks() {
    while (isAt(' ') || isAt('\t')) {
        rest.remove_prefix(1);
    }
}

void RegCursor::skipBlanksAndJoints(const char* expected) {
    skipBlanks();
    while (take('\\')) {
        do {
            skipBlanks();
            skipComment();
            if (!takeLineBreak()) {
                fail(isAtEnd() ? expected : "expected the end of the line behind a '\\'");
            }
            skipBlanks();
        } while (isAt(';'));
        if (isAtLineEnd()) {
            fail(expected);
        }
    }
}

bool RegCursor::takeLineBreak() {
    const bool isCr = take('\r');
    const bool isLf = take('\n');
    lineNumber += isCr || isLf ? 1U : 0U;
    return isCr || isLf;
}

void RegCursor::skipComment() {
    rest.remove_prefix(isAt(';') ? lineLength(rest) : 0);
}

std::uint32_t RegCursor::takeHex(std::size_t maxDigits, const char* expected) {
    std::uint32_t value = 0;
    std::size_t digits = 0;
    while (digits < rest.size() && digits <= maxDigits && hexDigit(rest[digits]) != noDigit) {
        value = value << 4 | hexDigit(rest[digits]);
        ++digits;
    }
    if (digits == 0 || digits > maxDigits) {
        fail(expected);
    }
    rest.remove_prefix(digits);
    return value;
}

WideString RegCursor::takeQuoted() {
    const std::size_t firstLine = lineNumber;
    WideString text;
    rest.remove_prefix(1);
    while (!take('"')) {
        if (isAtEnd()) {
            throw RegTextError(firstLine, "expected a '\"' at the end of the text that begins here");
        }
        const WideView before = rest;
        if (takeLineBreak()) {
            text += before.substr(0, before.size() - rest.size());
        } else {
            takeEscaped(text);
        }
    }
    return text;
}

void RegCursor::takeEscaped(WideString& text) {
    if (!take('\\')) {
        text += rest.front();
        rest.remove_prefix(1);
        return;
    }
    constexpr std::string_view letters = "\\\"nr0";
    constexpr std::string_view meanings("\\\"\n\r\0", 5);
    const auto* const letter = std::ranges::find_if(letters, [&](char c) { return take(c); });
    if (letter == letters.end()) {
        fail("expected \\\\ or \\\" behind a '\\' in quotes: a backslash is written twice");
    }
    text += WCHAR(meanings[static_cast<std::size_t>(letter - letters.begin())]);
}

WideView RegCursor::takeBracketed() {
    rest.remove_prefix(1);
    const WideView here = rest.substr(0, lineLength(rest));
    const std::size_t closing = here.rfind(WCHAR(']'));
    if (closing == WideView::npos) {
        fail("expected a ']' behind the key");
    }
    rest.remove_prefix(closing + 1);
    return here.substr(0, closing);
}

void RegCursor::endLine() {
    skipBlanks();
    if (!isAtLineEnd()) {
        fail("expected the end of the line");
    }
    skipComment();
    if (!takeLineBreak()) {
        fail("expected a line break at the end: the text may be cut short");
    }
}

void RegCursor::fail(const std::string& expected) const {
    throw RegTextError(lineNumber, expected);
}

}  // namespace korva::tool
