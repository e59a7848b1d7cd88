// What an audio object tells of itself in its registry key.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// One value as its key has it. An object writes no value that is at its default, so that one which isn't
/// there stands for 0, or for something unknown.
template <class T>
struct Reading {
    std::optional<T> value{};
    bool isMalformed = false;  ///< It is there, but of another type or size.

    friend bool operator==(const Reading&, const Reading&) = default;
};

struct StreamSide {
    Reading<std::uint32_t> channels;
    Reading<std::uint32_t> mask;
};

/// Parameter bytes, and the clocks between which they were counted, as the module has them.
struct ByteCounter {
    Reading<std::uint32_t> bytes;
    Reading<std::uint32_t> clockStart;
    Reading<std::uint32_t> clockEnd;
};

/// By plane of the bus; linear, full scale is 1.0.
using MeterLevels = std::array<float, 8>;

/// Where levels are measured, in the order of the sound but for the second one.
enum class MeterSet : std::uint8_t { input, output, dspInput, dspOutput };
inline constexpr std::size_t meterSetCount = 4;

/// All that a key tells, as one look at it finds it.
struct InstanceView {
    std::string name;                 ///< Of the key: a GUID in braces.
    Reading<std::string> effect;      ///< "SFX", "MFX", "EFX".
    Reading<std::string> endpointId;  ///< Bytes as they are: perhaps no UTF-8.
    std::string endpointName;         ///< Not the key's: empty where the registry knows none.
    Reading<std::uint64_t> libraryVersion;
    Reading<std::uint32_t> moduleVersion;
    StreamSide input;
    StreamSide output;
    StreamSide dspInput;
    StreamSide dspOutput;
    Reading<std::uint32_t> sampleRate;
    Reading<std::uint32_t> engineStarts;
    Reading<std::uint32_t> engineStartMs;     ///< Of the last one, since its process started.
    Reading<std::uint32_t> engineStartBytes;  ///< Parameter bytes that the module had got by then.
    Reading<std::uint32_t> bufferMs;
    Reading<std::uint32_t> load;  ///< Tenths of a percent of the buffer's time.
    Reading<std::uint32_t> cycleCount;
    Reading<std::uint32_t> frameCount;
    ByteCounter sent;
    ByteCounter received;
    Reading<std::uint32_t> presetBytesSent;
    std::array<Reading<MeterLevels>, meterSetCount> meters;  ///< By `MeterSet`.
    Reading<std::uint32_t> writeTime;                        ///< Milliseconds, modulo 2^32.
    std::vector<std::string> malformed;                      ///< Names of values that are.
};

/// Reads all values of an instance's key. The result is that of the key: 0, 1018 if it was deleted, or why it
/// can't be read; `view` is as it was unless that is 0.  [any, blocks]
[[nodiscard]] platform::RegistryResult readInstance(const platform::RegistryKey& key, const std::string& name,
                                                    InstanceView& view);

}  // namespace korva::tool
