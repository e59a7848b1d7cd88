// Several strings in one text: as many are taken as were counted, and with a zero behind each they are the
// text again.
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/require.h"
#include "fuzz/units_of.h"
#include "platform/multi_string.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using korva::fuzz::require;
    using korva::platform::WideString;
    using korva::platform::WideView;

    WideString text = korva::fuzz::unitsOf(std::as_bytes(std::span(data, size)));
    WideView rest = text;
    WideString joined;
    for (std::size_t left = korva::platform::stringCount(text); left > 0; --left) {
        require(!rest.empty());
        const WideView string = korva::platform::takeString(rest);
        require(string.find(WCHAR{0}) == WideView::npos);
        joined += string;
        joined += WCHAR{0};
    }
    require(rest.empty());
    if (!text.empty() && text.back() != 0) {
        text += WCHAR{0};
    }
    require(joined == text);
    return 0;
}
