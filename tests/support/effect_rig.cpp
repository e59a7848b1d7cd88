#include "tests/support/effect_rig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "params/effect_keys.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::test {

using engine::EffectCore;
using framework::Held;
using framework::Ref;
using published::APO_CONNECTION_DESCRIPTOR;
using published::APO_CONNECTION_PROPERTY;
using published::UNCOMPRESSEDAUDIOFORMAT;
namespace registry_type = platform::registry_type;

namespace {

constexpr const char* moduleNames[] = {"TANMER64", "DRIVOL64", "PELLUX64"};

UNCOMPRESSEDAUDIOFORMAT uncompressed(const StreamFormat& format) {
    return {published::ieeeFloatFormat, format.channels, 4, 32, static_cast<float>(format.rate), format.mask};
}

/// Tells a format, and knows nothing else.
class FakeMediaType final
    : public framework::PublishedObject<FakeMediaType, framework::ObjectBase, published::IAudioMediaType> {
public:
    FakeMediaType(const UNCOMPRESSEDAUDIOFORMAT& told, HRESULT toldWith) : format(told), result(toldWith) {}

    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override {
        *compressed = 0;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType*, DWORD*) override {
        return published::notImplemented;
    }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return nullptr; }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* told) override {
        *told = format;
        return result;
    }

private:
    const UNCOMPRESSEDAUDIOFORMAT format;
    const HRESULT result;
};

std::span<const std::byte> bytesOf(platform::WideView text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

APO_CONNECTION_PROPERTY connectionTo(const float* samples, std::uint32_t frames) {
    return {reinterpret_cast<UINT_PTR>(samples), frames, published::BUFFER_VALID,
            published::connectionPropertySignature};
}

}  // namespace

GUID effectGuid(std::uint8_t n) {
    return {0x5AB10000, 0, 0, {0, 0, 0, 0, 0, 0, 0, n}};
}

LockedConnection::LockedConnection(const StreamFormat& format) : LockedConnection(uncompressed(format)) {}

LockedConnection::LockedConnection(const UNCOMPRESSEDAUDIOFORMAT& told, HRESULT result)
    : type(framework::create<FakeMediaType>(told, result)) {
    descriptor.pFormat = type.get();
    descriptor.u32MaxFrameCount = 4096;
    descriptor.u32Signature = published::connectionDescriptorSignature;
}

EffectRig::EffectRig(const RigOptions& options)
    : recording(options.answers),
      device(framework::create<FakeDevice>(endpoint.id())),
      otherDevice(framework::create<FakeDevice>(otherEndpoint.id())),
      devices(framework::create<FakeDevices>()),
      type(options.effectType) {
    for (const char* const name : moduleNames) {
        modules.putLibrary(KORVA_RECORDER_MODULE, name);
    }
    static_cast<void>(endpoint.makeSet(params::property_set::user));
    if (options.hasTelemetry) {
        telemetryBase.emplace();
    }
    devices->put(endpoint.id(), device);
    devices->put(otherEndpoint.id(), otherDevice);
    engine::Surroundings surroundings{
        .moduleFolder = modules.path(),
        .systemSuppliesStores = options.systemSuppliesStores,
        .newDeviceEnumerator = [this, has = options.hasEnumerator]() -> Ref<IMMDeviceEnumerator> {
            ++enumerations;
            return has ? devices : nullptr;
        }};
    on([&] { held = Held<EffectCore>::first(framework::create<EffectCore>(type, std::move(surroundings))); });
}

EffectRig::~EffectRig() {
    close();
}

void EffectRig::close() {
    on([this] { held = nullptr; });
}

void EffectRig::settleAll() {
    on([] {});
    worker->post([] {}).waitUntilDone();
}

void EffectRig::setValueAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::uint32_t valueType,
                           std::span<const std::byte> data) {
    EXPECT_EQ(at.makeSet(params::property_set::user).setValue(platform::KeyToText(key), valueType, data), 0);
}

void EffectRig::setTextAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::string_view text) {
    platform::WideString wide = platform::toWide(text);
    wide.push_back(0);
    setValueAt(at, key, registry_type::string, bytesOf(wide));
}

void EffectRig::setNumberAt(const OwnEndpoint& at, REFPROPERTYKEY key, std::uint32_t number) {
    setValueAt(at, key, registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

void EffectRig::setBlob(REFPROPERTYKEY key, std::span<const std::byte> bytes) {
    setValueAt(endpoint, key, registry_type::binary, bytes);
}

void EffectRig::setTexts(REFPROPERTYKEY key, const std::vector<std::string>& texts) {
    platform::WideString list;
    for (const std::string& text : texts) {
        list += platform::toWide(text);
        list.push_back(0);
    }
    setValueAt(endpoint, key, registry_type::multiString, bytesOf(list));
}

void EffectRig::remove(REFPROPERTYKEY key) {
    EXPECT_EQ(endpoint.makeSet(params::property_set::user).deleteValue(platform::KeyToText(key)), 0);
}

PROPERTYKEY EffectRig::fxIdKey() const {
    return params::selectionKey(static_cast<params::EffectKind>(type));
}

// What names the effect's properties comes last: all of them are there by then.
void EffectRig::installAt(const OwnEndpoint& at, const EngineChoice& choice) {
    using namespace params::effect_property;
    setNumberAt(at, {choice.fxId, presetVersion}, choice.presetVersion);
    setNumberAt(at, {choice.fxId, modeFlags}, choice.modeFlags);
    setTextAt(at, {choice.fxId, engineId}, platform::guidText(choice.engineId));
    setTextAt(at, fxIdKey(), platform::guidText(choice.fxId));
}

void EffectRig::begin(const std::string& endpointId) {
    core().endpointIdStrW.set(platform::toWide(endpointId));
}

void EffectRig::lock(const StreamFormat& in, const StreamFormat& out) {
    LockedConnection input(in);
    LockedConnection output(out);
    APO_CONNECTION_DESCRIPTOR* const inputs[] = {input.get()};
    APO_CONNECTION_DESCRIPTOR* const outputs[] = {output.get()};
    EXPECT_EQ(lockConnections(inputs, outputs), published::ok);
    inFormat = in;
}

HRESULT EffectRig::lockConnections(std::span<APO_CONNECTION_DESCRIPTOR* const> inputs,
                                   std::span<APO_CONNECTION_DESCRIPTOR* const> outputs) {
    HRESULT result = published::unspecifiedFailure;
    on([&] { result = core().lockForProcess(inputs, outputs); });
    return result;
}

void EffectRig::unlock() {
    on([&] { core().unlockForProcess(); });
}

std::vector<float> EffectRig::play(std::span<const float> samples, std::uint32_t outputChannels) {
    const auto frames = static_cast<std::uint32_t>(samples.size() / inFormat.channels);
    std::vector<float> played(std::size_t{frames} * outputChannels);
    APO_CONNECTION_PROPERTY input = connectionTo(samples.data(), frames);
    APO_CONNECTION_PROPERTY output = connectionTo(played.data(), frames);
    APO_CONNECTION_PROPERTY* const inputs[] = {&input};
    APO_CONNECTION_PROPERTY* const outputs[] = {&output};
    core().realtime().Process(1, inputs, 1, outputs, inFormat.channels);
    return played;
}

std::vector<RecordedCall> EffectRig::newRecords() {
    std::vector<RecordedCall> calls;
    on([&] { calls = recording.calls(); });
    const std::size_t count = calls.size();
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(seenCalls));
    seenCalls = count;
    std::erase_if(calls, [](const RecordedCall& call) { return call.function == "process"; });
    return calls;
}

std::vector<std::string> EffectRig::newLifeCalls() {
    constexpr std::string_view named[] = {
        "Load", "Create", "isHardwareAvailable", "Initialize", "Uninitialize", "WakeUp", "Free", "Unload"};
    std::vector<std::string> lines;
    for (const RecordedCall& call : newRecords()) {
        if (std::ranges::find(named, call.function) != std::end(named)) {
            const std::string instance = call.instance == 0 ? "" : " " + std::to_string(call.instance);
            lines.push_back(call.function + " " + call.module + instance);
        }
    }
    return lines;
}

std::vector<std::string> EffectRig::documents() {
    std::vector<std::string> texts;
    on([&] {
        for (const RecordedCall& call : callsOf("Create", recording.calls())) {
            texts.push_back(call.text("text"));
        }
    });
    return texts;
}

}  // namespace korva::test
