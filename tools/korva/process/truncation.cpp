#include "korva/process/truncation.h"

#include <charconv>
#include <string>

namespace korva::tool {
namespace {

/// A line such as "data : 142084 (should be 59956)".
struct Length {
    std::uint64_t announced;
    std::optional<std::uint64_t> present;
};

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<std::uint64_t> parseNumber(std::string_view text) {
    std::uint64_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<Length> parseLength(std::string_view text) {
    const auto announced = parseNumber(text);
    if (!announced) {
        return std::nullopt;
    }
    constexpr std::string_view remark = "(should be ";
    const auto at = text.find(remark);
    return Length{*announced, at == text.npos ? std::nullopt : parseNumber(text.substr(at + remark.size()))};
}

/// The first line of that name that has a number.
std::optional<Length> findLength(std::string_view log, std::string_view name) {
    while (!log.empty()) {
        const auto end = log.find('\n');
        const std::string_view line = log.substr(0, end);
        log = end == log.npos ? std::string_view() : log.substr(end + 1);
        const auto colon = line.find(':');
        if (colon == line.npos || trimmed(line.substr(0, colon)) != name) {
            continue;
        }
        if (const auto length = parseLength(trimmed(line.substr(colon + 1)))) {
            return length;
        }
    }
    return std::nullopt;
}

/// Programs that write into a pipe put a number just below 2^31 or 2^32 where they don't know the length.
bool isPlaceholder(std::uint64_t length) {
    constexpr std::uint64_t slack = 0x1000;
    return length == 0 || (length >= 0x80000000 - slack && length <= 0x80000000) ||
           (length >= 0x100000000 - slack && length <= 0x100000000) || length > 0x7FFFFFFFFFFFF000;
}

std::optional<Shortfall> shortfallOf(const Length& length, std::uint64_t frameBytes) {
    if (!length.present || isPlaceholder(length.announced) ||
        length.announced / frameBytes <= *length.present / frameBytes) {
        return std::nullopt;
    }
    return Shortfall{length.announced, *length.present};
}

/// For the kinds of file that remark on the whole file's length only: the sound's length against what the
/// frames take up.
std::optional<Shortfall> shortfallOfFrames(std::string_view log, std::string_view whole,
                                           std::string_view sound, std::uint64_t headerBytes,
                                           std::uint64_t presentBytes) {
    const auto file = findLength(log, whole);
    const auto data = findLength(log, sound);
    if (!file || !file->present || file->announced <= *file->present || !data ||
        isPlaceholder(data->announced) || data->announced < headerBytes ||
        data->announced - headerBytes <= presentBytes) {
        return std::nullopt;
    }
    return Shortfall{data->announced - headerBytes, presentBytes};
}

/// The library remarks on a CAF file's length only when more than a dozen bytes are missing.
std::optional<Shortfall> shortfallOfPackets(std::string_view log, std::uint64_t frames) {
    constexpr std::uint64_t editCount = 4;  // bytes ahead of the sound, which the chunk's length includes
    const auto packet = findLength(log, "Bytes / packet");
    const auto data = findLength(log, "data");
    if (!packet || packet->announced == 0 || !data || data->announced < editCount ||
        (data->announced - editCount) / packet->announced <= frames) {
        return std::nullopt;
    }
    return Shortfall{data->announced - editCount, frames * packet->announced};
}

}  // namespace

std::optional<Shortfall> findShortfall(std::string_view log, std::uint64_t frames) {
    const auto blockAlign = findLength(log, "Block Align");
    const std::uint64_t frameBytes = blockAlign && blockAlign->announced > 0 ? blockAlign->announced : 1;
    for (const std::string_view name : {"data", "SSND", "Data Size"}) {  // WAV, AIFF, AU
        if (const auto length = findLength(log, name)) {
            if (const auto shortfall = shortfallOf(*length, frameBytes)) {
                return shortfall;
            }
        }
    }
    constexpr std::uint64_t w64ChunkHeader = 24;  // which the chunk's length includes
    if (const auto w64 = shortfallOfFrames(log, "riff", "data", w64ChunkHeader, frames * frameBytes)) {
        return w64;
    }
    if (const auto rf64 = shortfallOfFrames(log, "Riff size", "Data size", 0, frames * frameBytes)) {
        return rf64;
    }
    return shortfallOfPackets(log, frames);
}

}  // namespace korva::tool
