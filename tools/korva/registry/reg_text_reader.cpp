#include <optional>
#include <utility>

#include "korva/registry/key_place.h"
#include "korva/registry/reg_characters.h"
#include "korva/registry/reg_cursor.h"
#include "korva/registry/reg_text.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryValue;
using platform::WideString;
using platform::WideView;

RegistryValue stringOf(const WideString& text) {
    RegistryValue value{platform::registry_type::string, {}};
    appendUnits(value.data, text + WCHAR{0});
    return value;
}

RegistryValue dwordOf(std::uint32_t number) {
    RegistryValue value{platform::registry_type::dword, {}};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        value.data.push_back(static_cast<std::byte>(number >> shift & 0xFF));
    }
    return value;
}

class Reader {
public:
    explicit Reader(WideView text) : at(text) {}

    RegText read() {
        readSignature();
        while (!at.isAtEnd()) {
            readLine();
        }
        return std::move(result);
    }

private:
    void readSignature() {
        if (at.take("REGEDIT4")) {
            at.fail("expected 'Windows Registry Editor Version 5.00'; the older form 'REGEDIT4' isn't read");
        }
        if (!at.take(regTextSignature)) {
            at.fail("expected 'Windows Registry Editor Version 5.00'");
        }
        at.endLine();
    }

    void readLine() {
        at.skipBlanks();
        if (at.isAtEnd()) {
            return;
        }
        lineOfChange = at.line();
        if (at.isAt('[')) {
            readKey();
        } else if (at.isAt('@') || at.isAt('"')) {
            readNamed();
        } else if (!at.isAtLineEnd()) {
            at.fail("expected a key in brackets, a value's name in quotes, or a comment");
        }
        at.endLine();
    }

    void readKey() {
        WideView inside = at.takeBracketed();
        const bool isDeletion = inside.starts_with(WCHAR('-'));
        inside.remove_prefix(isDeletion ? 1 : 0);
        const KeyPlace place = keyOf(inside);
        if (isDeletion && place.isRoot()) {
            fail("expected a key below its root: a root can't be deleted");
        }
        key = isDeletion ? std::nullopt : std::optional(place);
        add({isDeletion ? RegistryChange::Kind::deleteTree : RegistryChange::Kind::createKey,
             place.root,
             place.path,
             {},
             {}});
    }

    [[nodiscard]] KeyPlace keyOf(WideView text) const {
        const auto utf8 = platform::exactUtf8(text);
        if (!utf8) {
            fail("expected a key of whole characters: half of a pair of surrogates is in it");
        }
        ParsedKey parsed = parseKey(*utf8);
        if (!parsed.place) {
            fail(parsed.expected);
        }
        return std::move(*parsed.place);
    }

    void readNamed() {
        if (!key) {
            fail("expected a key in brackets before its values");
        }
        RegistryChange change{RegistryChange::Kind::setValue, key->root, key->path, readName(), {}};
        at.skipBlanks();
        if (!at.take('=')) {
            at.fail("expected a '=' behind the value's name");
        }
        at.skipBlanks();
        if (at.take('-')) {
            change.kind = RegistryChange::Kind::deleteValue;
        } else {
            change.value = readValue();
        }
        add(std::move(change));
    }

    [[nodiscard]] std::string readName() {
        if (at.take('@')) {
            return {};
        }
        const WideString name = at.takeQuoted();
        auto utf8 = platform::exactUtf8(name);
        if (!utf8 || name.find(WCHAR{0}) != WideString::npos) {
            fail("expected a name of whole characters: a zero or half of a pair of surrogates is in it");
        }
        return std::move(*utf8);
    }

    [[nodiscard]] RegistryValue readValue() {
        if (at.isAt('"')) {
            return stringOf(at.takeQuoted());
        }
        if (at.take("dword:")) {
            return dwordOf(at.takeHex(8, "expected 1 to 8 hexadecimal digits behind 'dword:'"));
        }
        if (at.take("hex")) {
            return readHex();
        }
        at.fail("expected a value behind '=': \"text\", dword:, hex:, hex(TYPE): or -");
    }

    [[nodiscard]] RegistryValue readHex() {
        RegistryValue value{platform::registry_type::binary, {}};
        if (at.take('(')) {
            value.type = at.takeHex(8, "expected a type of 1 to 8 hexadecimal digits behind 'hex('");
            if (!at.take(')')) {
                at.fail("expected a ')' behind the type");
            }
        }
        if (!at.take(':')) {
            at.fail("expected a ':' before the bytes");
        }
        readBytes(value.data);
        return value;
    }

    void readBytes(std::vector<std::byte>& data) {
        constexpr const char* expected = "expected a byte of 1 or 2 hexadecimal digits";
        at.skipBlanksAndJoints(expected);
        if (at.isAtLineEnd()) {
            return;
        }
        do {
            at.skipBlanksAndJoints(expected);
            data.push_back(static_cast<std::byte>(at.takeHex(2, expected)));
            at.skipBlanksAndJoints("expected a ',' and more bytes behind a '\\'");
        } while (at.take(','));
    }

    /// The same path may be repeated by every line below it, so a short text can ask for much.
    void add(RegistryChange change) {
        bytesUsed +=
            sizeof(RegistryChange) + change.path.size() + change.name.size() + change.value.data.size();
        if (bytesUsed > maxRegChangesBytes) {
            fail("expected less to change: this takes more than 512 MiB of memory");
        }
        result.changes.push_back(std::move(change));
        result.lines.push_back(lineOfChange);
    }

    [[noreturn]] void fail(const char* expected) const { throw RegTextError(lineOfChange, expected); }

    RegCursor at;
    std::optional<KeyPlace> key;   ///< That the values belong to.
    std::size_t lineOfChange = 1;  ///< Where what is being read began.
    std::size_t bytesUsed = 0;
    RegText result;
};

}  // namespace

RegText readRegText(std::span<const std::byte> bytes) {
    const WideString text = decodeRegText(bytes);
    return Reader(text).read();
}

}  // namespace korva::tool
