// .reg text from outside: read whole or refused, and what was read comes back when it is written.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "fuzz/require.h"
#include "korva/registry/reg_text.h"

namespace {

using korva::fuzz::require;
using korva::platform::RegistryChange;
using korva::tool::RegText;

bool sameChange(const RegistryChange& a, const RegistryChange& b) {
    return a.kind == b.kind && a.root == b.root && a.path == b.path && a.name == b.name &&
           a.value.type == b.value.type && a.value.data == b.value.data;
}

std::optional<RegText> readIfText(std::span<const std::byte> bytes) {
    try {
        return korva::tool::readRegText(bytes);
    } catch (const korva::tool::RegTextError& error) {
        require(error.line > 0 && error.line <= bytes.size() + 1);
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = readIfText(std::as_bytes(std::span(data, size)));
    if (!text) {
        return 0;
    }
    const RegText again = korva::tool::readRegText(korva::tool::writeRegText(text->changes));
    require(text->lines.size() == text->changes.size());
    require(std::ranges::equal(text->changes, again.changes, sameChange));
    return 0;
}
