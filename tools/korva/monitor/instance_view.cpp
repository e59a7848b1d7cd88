#include "korva/monitor/instance_view.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace korva::tool {
namespace {

using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;
namespace types = platform::registry_type;

template <class T>
std::optional<T> bytesAs(const RegistryValue& stored, std::uint32_t type) {
    T value{};
    if (stored.type != type || stored.data.size() != sizeof(value)) {
        return std::nullopt;
    }
    std::memcpy(&value, stored.data.data(), sizeof(value));
    return value;
}

std::optional<std::uint32_t> decoded(const RegistryValue& stored, const Reading<std::uint32_t>&) {
    return bytesAs<std::uint32_t>(stored, types::dword);
}

std::optional<std::uint64_t> decoded(const RegistryValue& stored, const Reading<std::uint64_t>&) {
    return bytesAs<std::uint64_t>(stored, types::qword);
}

std::optional<MeterLevels> decoded(const RegistryValue& stored, const Reading<MeterLevels>&) {
    return bytesAs<MeterLevels>(stored, types::binary);
}

/// Objects write the bytes of a narrow text and a zero, whatever the type says of units.
std::optional<std::string> decoded(const RegistryValue& stored, const Reading<std::string>&) {
    const auto end = std::ranges::find(stored.data, std::byte{0});
    if (stored.type != types::string || end == stored.data.end()) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(stored.data.data()),
                       static_cast<std::size_t>(end - stored.data.begin()));
}

/// Reads values one by one until the key fails.
class KeyReader {
public:
    KeyReader(const RegistryKey& from, std::vector<std::string>& wrong) : key(from), malformed(wrong) {}

    template <class T>
    void read(std::string_view name, Reading<T>& reading) {
        RegistryValue stored;
        const RegistryResult code = state == result::success ? key.readValue(name, stored) : state;
        if (code == result::notFound || code != result::success) {
            state = code == result::notFound ? state : code;
            return;
        }
        reading.value = decoded(stored, reading);
        reading.isMalformed = !reading.value;
        if (reading.isMalformed) {
            malformed.emplace_back(name);
        }
    }

    void read(const std::string& prefix, const std::string& suffix, StreamSide& side) {
        read(prefix + suffix + "ChannelCount", side.channels);
        read(prefix + (suffix == "Input" ? "In" : "Out") + "ChannelMask", side.mask);
    }

    void read(const std::string& name, ByteCounter& counter) {
        read(name, counter.bytes);
        read(name + "ClockStart", counter.clockStart);
        read(name + "ClockEnd", counter.clockEnd);
    }

    [[nodiscard]] RegistryResult code() const { return state; }

private:
    const RegistryKey& key;
    std::vector<std::string>& malformed;
    RegistryResult state = result::success;
};

void readStream(KeyReader& reader, InstanceView& view) {
    reader.read("APOTypeStr", view.effect);
    reader.read("EndpointIdStrW", view.endpointId);
    reader.read("", "Input", view.input);
    reader.read("", "Output", view.output);
    reader.read("DSP", "Input", view.dspInput);
    reader.read("DSP", "Output", view.dspOutput);
    reader.read("SampleRate", view.sampleRate);
    reader.read("BufferSizeMS", view.bufferMs);
    reader.read("CPUUsage", view.load);
}

void readModule(KeyReader& reader, InstanceView& view) {
    reader.read("ModuleVersion", view.libraryVersion);
    reader.read("DSPModuleVersion", view.moduleVersion);
    reader.read("PresetLoadCount", view.engineStarts);
    reader.read("PresetLoadStartTimeMS", view.engineStartMs);
    reader.read("PresetLoad_ParamBytesReceivedByDSP", view.engineStartBytes);
    reader.read("DSPCycleCount", view.cycleCount);
    reader.read("DSPFrameCount", view.frameCount);
    reader.read("ParamBytesSentByDSP", view.sent);
    reader.read("ParamBytesReceivedByDSP", view.received);
    reader.read("PresetDSPParamBytesSent", view.presetBytesSent);
}

void readMeters(KeyReader& reader, InstanceView& view) {
    constexpr std::array<std::string_view, meterSetCount> names = {
        "InputLevelMeters", "OutputLevelMeters", "DSPInputLevelMeters", "DSPOutputLevelMeters"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        reader.read(names[i], view.meters[i]);
    }
    reader.read("WriteTime", view.writeTime);
}

}  // namespace

RegistryResult readInstance(const RegistryKey& key, const std::string& name, InstanceView& view) {
    InstanceView seen;
    seen.name = name;
    KeyReader reader(key, seen.malformed);
    readStream(reader, seen);
    readModule(reader, seen);
    readMeters(reader, seen);
    if (reader.code() == result::success) {
        view = std::move(seen);
    }
    return reader.code();
}

}  // namespace korva::tool
