#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "apo/registration/registry_script.h"
#include "platform/stored_values.h"

namespace korva::apo {
namespace {

using platform::RegistryRoot;

constexpr std::size_t deepestKey = 64;
constexpr std::size_t longestKeyName = 255;      // UTF-16 units.
constexpr std::size_t longestValueName = 16383;  // The same.

char lowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameWord(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
}

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isMark(char c) noexcept {
    return c == '{' || c == '}' || c == '=';
}

/// A piece of a script: a mark, or a text, which may be empty only between quotes.
struct Token {
    enum class Kind { end, mark, word, quoted };

    Kind kind = Kind::end;
    std::string_view text{};  ///< As it is written, without the quotes around it.
    std::size_t line = 1;

    [[nodiscard]] bool isText() const noexcept { return kind == Kind::word || kind == Kind::quoted; }
    [[nodiscard]] bool isMark(std::string_view mark) const noexcept {
        return kind == Kind::mark && text == mark;
    }
    [[nodiscard]] bool isWord(std::string_view word) const noexcept {
        return kind == Kind::word && isSameWord(text, word);
    }
};

/// Takes a script apart; always one token ahead.
class Tokens {
public:
    explicit Tokens(std::string_view script) : rest(script) { advance(); }

    [[nodiscard]] const Token& next() const noexcept { return ahead; }

    Token take() {
        const Token taken = ahead;
        advance();
        return taken;
    }

    /// Takes a mark, which must come now.
    void expect(std::string_view mark) {
        if (!ahead.isMark(mark)) {
            throw RegistryScriptError(ahead.line, "expected " + std::string(mark));
        }
        advance();
    }

private:
    void advance() {
        while (!rest.empty() && isBlank(rest.front())) {
            line += std::size_t{rest.front() == '\n'};
            rest.remove_prefix(1);
        }
        ahead = {.line = line};
        if (rest.empty()) {
            return;
        }
        if (isMark(rest.front())) {
            ahead = {Token::Kind::mark, cut(1), line};
        } else if (rest.front() == '\'') {
            rest.remove_prefix(1);
            ahead = {Token::Kind::quoted, cut(quotedLength()), line};
            line += static_cast<std::size_t>(std::count(ahead.text.begin(), ahead.text.end(), '\n'));
            rest.remove_prefix(1);
        } else {
            const auto end = std::find_if(rest.begin(), rest.end(),
                                          [](char c) { return isBlank(c) || isMark(c) || c == '\''; });
            ahead = {Token::Kind::word, cut(static_cast<std::size_t>(end - rest.begin())), line};
        }
    }

    std::string_view cut(std::size_t length) {
        const std::string_view piece = rest.substr(0, length);
        rest.remove_prefix(length);
        return piece;
    }

    /// Up to the quote that isn't one of two.
    [[nodiscard]] std::size_t quotedLength() const {
        std::size_t end = rest.find('\'');
        while (end != rest.npos && rest.substr(end + 1).starts_with('\'')) {
            end = rest.find('\'', end + 2);
        }
        if (end == rest.npos) {
            throw RegistryScriptError(line, "expected a quote that ends the text");
        }
        return end;
    }

    std::string_view rest;
    std::size_t line = 1;
    Token ahead;
};

const std::string& replacementOf(std::string_view name, std::size_t line, const Replacements& replacements) {
    const auto found = std::find_if(replacements.begin(), replacements.end(),
                                    [name](const auto& entry) { return isSameWord(entry.first, name); });
    if (found == replacements.end()) {
        throw RegistryScriptError(line, "expected a replacement for %" + std::string(name) + "%");
    }
    return found->second;
}

/// A token's text with its replacements. What they bring is not looked at again.
std::string textOf(const Token& token, const Replacements& replacements) {
    std::string text;
    for (std::size_t i = 0; i < token.text.size(); ++i) {
        const char c = token.text[i];
        if (c == '%') {
            const std::size_t end = token.text.find('%', i + 1);
            if (end == token.text.npos) {
                throw RegistryScriptError(token.line, "expected a % that ends the name");
            }
            const std::string_view name = token.text.substr(i + 1, end - i - 1);
            text += name.empty() ? "%" : replacementOf(name, token.line, replacements);
            i = end;
        } else {
            text += c;
            // Between quotes, only two of them in a row are left.
            i += std::size_t{token.kind == Token::Kind::quoted && c == '\''};
        }
    }
    return text;
}

std::uint32_t numberOf(std::string_view text, std::size_t line) {
    const bool isHexadecimal = text.size() > 2 && text[0] == '&' && lowerAscii(text[1]) == 'h';
    const std::string_view digits = isHexadecimal ? text.substr(2) : text;
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        throw RegistryScriptError(line, "expected a number of 32 bits");
    }
    return number;
}

class Reader {
public:
    Reader(std::string_view text, const Replacements& byName) : tokens(text), replacements(byName) {}

    RegistryScript read() {
        RegistryScript script;
        while (tokens.next().kind != Token::Kind::end) {
            const RegistryRoot root = readRoot();
            tokens.expect("{");
            ScriptRoot block{root, {}};
            while (!tokens.next().isMark("}")) {
                block.keys.push_back(readKey(1));
            }
            tokens.expect("}");
            script.push_back(std::move(block));
        }
        return script;
    }

private:
    RegistryRoot readRoot() {
        static constexpr std::array<std::pair<std::string_view, RegistryRoot>, 6> roots = {{
            {"HKCR", RegistryRoot::classesRoot},
            {"HKCU", RegistryRoot::currentUser},
            {"HKLM", RegistryRoot::localMachine},
            {"HKEY_CLASSES_ROOT", RegistryRoot::classesRoot},
            {"HKEY_CURRENT_USER", RegistryRoot::currentUser},
            {"HKEY_LOCAL_MACHINE", RegistryRoot::localMachine},
        }};
        const Token token = tokens.take();
        const auto found = std::find_if(roots.begin(), roots.end(),
                                        [&](const auto& entry) { return token.isWord(entry.first); });
        if (found == roots.end()) {
            throw RegistryScriptError(token.line, "expected a root: HKCR, HKCU or HKLM");
        }
        return found->second;
    }

    ScriptKey readKey(std::size_t depth) {
        if (depth > deepestKey) {
            throw RegistryScriptError(tokens.next().line, "expected no key this deep");
        }
        ScriptKey key{.name = {}, .removal = readRemoval()};
        key.name = readName(longestKeyName);
        if (key.name.empty() || key.name.find('\\') != key.name.npos) {
            throw RegistryScriptError(tokens.next().line, "expected the name of one key");
        }
        if (tokens.next().isMark("=")) {
            key.values.push_back({"", readValue()});
        }
        if (tokens.next().isMark("{")) {
            readContents(key, depth);
        }
        return key;
    }

    void readContents(ScriptKey& key, std::size_t depth) {
        tokens.expect("{");
        while (!tokens.next().isMark("}")) {
            if (tokens.next().isWord("val")) {
                tokens.take();
                std::string name = readName(longestValueName);
                key.values.push_back({std::move(name), readValue()});
            } else {
                key.keys.push_back(readKey(depth + 1));
            }
        }
        tokens.expect("}");
    }

    KeyRemoval readRemoval() {
        if (tokens.next().isWord("NoRemove")) {
            tokens.take();
            return KeyRemoval::never;
        }
        if (tokens.next().isWord("ForceRemove")) {
            tokens.take();
            return KeyRemoval::whole;
        }
        return KeyRemoval::ifEmpty;
    }

    std::string readText(const char* expected) {
        const Token token = tokens.take();
        if (!token.isText()) {
            throw RegistryScriptError(token.line, expected);
        }
        return textOf(token, replacements);
    }

    /// A name that the registry takes. A word of the language is none unless it stands between quotes.
    std::string readName(std::size_t longest) {
        static constexpr std::array<std::string_view, 4> kept = {"NoRemove", "ForceRemove", "Delete", "val"};
        const Token& token = tokens.next();
        const std::size_t line = token.line;
        if (std::any_of(kept.begin(), kept.end(), [&](auto word) { return token.isWord(word); })) {
            throw RegistryScriptError(line, "expected a name");
        }
        std::string name = readText("expected a name");
        const auto wide = platform::exactWide(name);
        if (!wide || wide->size() > longest || name.find('\0') != name.npos) {
            throw RegistryScriptError(line, "expected a name that the registry takes");
        }
        return name;
    }

    platform::RegistryValue readValue() {
        tokens.expect("=");
        const Token type = tokens.take();
        const std::size_t line = tokens.next().line;
        if (type.isWord("s")) {
            const auto wide = platform::exactWide(readText("expected a text"));
            if (!wide || wide->find(WCHAR{}) != wide->npos) {
                throw RegistryScriptError(line, "expected a text of characters");
            }
            return platform::stringValue(*wide);
        }
        if (type.isWord("d")) {
            return platform::numberValue(numberOf(readText("expected a number"), line));
        }
        throw RegistryScriptError(type.line, "expected a type: s or d");
    }

    Tokens tokens;
    const Replacements& replacements;
};

}  // namespace

RegistryScript readRegistryScript(std::string_view text, const Replacements& replacements) {
    return Reader(text, replacements).read();
}

}  // namespace korva::apo
