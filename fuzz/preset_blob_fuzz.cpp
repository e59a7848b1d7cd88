// Blobs of preset chunks from outside: slices lie within the blob, and a blob that is made of them gives them
// again. The first byte is the number of parameters, those behind it are their default sizes, the rest is
// the blob.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz/require.h"
#include "params/preset_blob.h"

namespace {

using korva::fuzz::require;
using Bytes = std::span<const std::byte>;
using Slices = std::vector<std::vector<std::byte>>;

bool isWithin(Bytes part, Bytes whole) {
    return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

/// As many slices as the blob has.
Slices slicesOf(Bytes blob, Bytes rest, const std::vector<std::uint32_t>& sizes) {
    Slices slices;
    for (const std::uint32_t size : sizes) {
        const auto slice = korva::params::takeSlice(rest, size);
        if (!slice) {
            require(rest.size() < size);
            break;
        }
        require(slice->size() == size && isWithin(*slice, blob) && isWithin(rest, blob));
        slices.emplace_back(slice->begin(), slice->end());
    }
    return slices;
}

void comeBack(const Slices& slices, std::span<const std::uint32_t> defaultSizes) {
    const auto blob = korva::params::makePresetBlob(slices, defaultSizes);
    require(blob.has_value());
    std::vector<std::uint32_t> sizes(defaultSizes.begin(), defaultSizes.end());
    const auto rest = korva::params::takeOverrides(*blob, sizes);
    require(rest.has_value() && slicesOf(*blob, *rest, sizes) == slices);
    const auto differing = std::ranges::count_if(
        slices, [&, i = 0U](const auto& slice) mutable { return slice.size() != defaultSizes[i++]; });
    require(rest->data() == blob->data() + 4 + 4 * differing);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes input = std::as_bytes(std::span(data, size));
    const std::size_t count = size == 0 ? 0 : std::min<std::size_t>(data[0], size - 1);
    std::vector<std::uint32_t> defaultSizes;
    for (std::size_t i = 0; i < count; ++i) {
        defaultSizes.push_back(data[1 + i]);
    }
    const Bytes blob = input.subspan(std::min(size, 1 + count));
    std::vector<std::uint32_t> sizes = defaultSizes;
    const auto rest = korva::params::takeOverrides(blob, sizes);
    require(rest.has_value() == (blob.size() >= 4));
    if (rest) {
        require(isWithin(*rest, blob));
        const Slices slices = slicesOf(blob, *rest, sizes);
        comeBack(slices, std::span(defaultSizes).first(slices.size()));
    }
    return 0;
}
