// A core that shows itself, and its key as a tool has it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/engine/core_rig.h"
#include "platform/registry.h"

namespace korva::bench {

/// What a tool may ask for, in the order in which it is served.
inline constexpr std::string_view requestNames[] = {"CaptureDSPCycleCount", "CaptureDSPFrameCount",
                                                    "CaptureParamBytesSentByDSP",
                                                    "CaptureParamBytesReceivedByDSP", "CaptureLevelMeters"};

/// A core with a locked stream.
class ShownCore {
public:
    /// `moduleFile` as of `CoreGround`.
    explicit ShownCore(const char* moduleFile);

    CoreGround ground;
    CoreRig rig;
    platform::RegistryKey key;  ///< Another handle than the core's own.
};

/// Writes a new number to each request.
void askForEverything(const platform::RegistryKey& key, std::uint32_t number);

/// A value, and the time of writing that follows it.
void writeShown(const platform::RegistryKey& key, std::string_view name,
                const platform::RegistryValue& value);

struct NamedValue {
    std::string name;
    platform::RegistryValue value;
};

/// All that the key shows, but for the requests and the time of writing.
[[nodiscard]] std::vector<NamedValue> shownValues(const platform::RegistryKey& key);

}  // namespace korva::bench
