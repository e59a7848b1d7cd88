// Text between UTF-8 and UTF-16: a text is exact if, and only if, it comes back as it was; what is made of
// any text is exact; and well-formed UTF-16, which is easily told, always is.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/units_of.h"
#include "platform/unicode.h"

namespace {

using korva::fuzz::require;
using korva::platform::exactUtf8;
using korva::platform::exactWide;
using korva::platform::toUtf8;
using korva::platform::toWide;
using korva::platform::WideView;

bool isHighSurrogate(WCHAR unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool isLowSurrogate(WCHAR unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/// Whether a low surrogate follows each high one, and none stands elsewhere.
bool isWellFormed(WideView text) {
    bool expectsLow = false;
    for (const WCHAR unit : text) {
        if (isLowSurrogate(unit) != expectsLow) {
            return false;
        }
        expectsLow = isHighSurrogate(unit);
    }
    return !expectsLow;
}

void checkUtf8(std::string_view text) {
    const auto wide = toWide(text);
    const auto exact = exactWide(text);
    require(isWellFormed(wide));
    require(exact.has_value() == (toUtf8(wide) == text));
    require(!exact || *exact == wide);
    require(toWide(toUtf8(wide)) == wide);
}

void checkWide(WideView text) {
    const auto utf8 = toUtf8(text);
    const auto exact = exactUtf8(text);
    require(exact.has_value() == isWellFormed(text));
    require(exact.has_value() == (toWide(utf8) == text));
    require(!exact || *exact == utf8);
    require(exactWide(utf8).has_value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkUtf8({reinterpret_cast<const char*>(data), size});
    checkWide(korva::fuzz::unitsOf(std::as_bytes(std::span(data, size))));
    return 0;
}
