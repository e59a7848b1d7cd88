#include "tests/support/effect_rig.h"

#include <gtest/gtest.h>

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
namespace registry_type = platform::registry_type;

namespace {

constexpr const char* moduleNames[] = {"TANMER64", "DRIVOL64", "PELLUX64"};

/// Tells a format, and knows nothing else.
class FakeMediaType final
    : public framework::PublishedObject<FakeMediaType, framework::ObjectBase, published::IAudioMediaType> {
public:
    explicit FakeMediaType(const StreamFormat& told) : format(told) {}

    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override {
        *compressed = 0;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType*, DWORD*) override {
        return published::notImplemented;
    }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return nullptr; }
    HRESULT STDMETHODCALLTYPE
    GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* uncompressed) override {
        *uncompressed = {published::ieeeFloatFormat,      format.channels, 4, 32,
                         static_cast<float>(format.rate), format.mask};
        return published::ok;
    }

private:
    const StreamFormat format;
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

LockedConnection::LockedConnection(const StreamFormat& format)
    : type(framework::create<FakeMediaType>(format)) {
    descriptor.pFormat = type.get();
    descriptor.u32MaxFrameCount = 4096;
    descriptor.u32Signature = published::connectionDescriptorSignature;
}

EffectRig::EffectRig(const std::string& answers, std::uint32_t effectType)
    : recording(answers),
      device(framework::create<FakeDevice>(endpoint.id())),
      devices(framework::create<FakeDevices>()),
      type(effectType) {
    for (const char* const name : moduleNames) {
        modules.putLibrary(KORVA_RECORDER_MODULE, name);
    }
    static_cast<void>(endpoint.makeSet(params::property_set::user));
    devices->put(endpoint.id(), device);
    engine::Surroundings surroundings{.moduleFolder = modules.path(),
                                      .systemSuppliesStores = false,
                                      .newDeviceEnumerator = [this] { return devices; }};
    on([&] {
        held = Held<EffectCore>::first(framework::create<EffectCore>(effectType, std::move(surroundings)));
    });
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

void EffectRig::setValue(REFPROPERTYKEY key, std::uint32_t valueType, std::span<const std::byte> data) {
    EXPECT_EQ(
        endpoint.makeSet(params::property_set::user).setValue(platform::KeyToText(key), valueType, data), 0);
}

void EffectRig::setText(REFPROPERTYKEY key, std::string_view text) {
    platform::WideString wide = platform::toWide(text);
    wide.push_back(0);
    setValue(key, registry_type::string, bytesOf(wide));
}

void EffectRig::setNumber(REFPROPERTYKEY key, std::uint32_t number) {
    setValue(key, registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

void EffectRig::setBlob(REFPROPERTYKEY key, std::span<const std::byte> bytes) {
    setValue(key, registry_type::binary, bytes);
}

void EffectRig::setTexts(REFPROPERTYKEY key, const std::vector<std::string>& texts) {
    platform::WideString list;
    for (const std::string& text : texts) {
        list += platform::toWide(text);
        list.push_back(0);
    }
    setValue(key, registry_type::multiString, bytesOf(list));
}

void EffectRig::remove(REFPROPERTYKEY key) {
    EXPECT_EQ(endpoint.makeSet(params::property_set::user).deleteValue(platform::KeyToText(key)), 0);
}

PROPERTYKEY EffectRig::fxIdKey() const {
    return params::selectionKey(static_cast<params::EffectKind>(type));
}

// What names the effect's properties comes last: all of them are there by then.
void EffectRig::install(const EngineChoice& choice) {
    using namespace params::effect_property;
    setNumber({choice.fxId, presetVersion}, choice.presetVersion);
    setNumber({choice.fxId, modeFlags}, choice.modeFlags);
    setText({choice.fxId, engineId}, platform::guidText(choice.engineId));
    setText(fxIdKey(), platform::guidText(choice.fxId));
}

void EffectRig::begin(const std::string& endpointId) {
    core().endpointIdStrW.set(platform::toWide(endpointId));
}

void EffectRig::lock(const StreamFormat& in, const StreamFormat& out) {
    LockedConnection input(in);
    LockedConnection output(out);
    APO_CONNECTION_DESCRIPTOR* const inputs[] = {input.get()};
    APO_CONNECTION_DESCRIPTOR* const outputs[] = {output.get()};
    on([&] { EXPECT_EQ(core().lockForProcess(inputs, outputs), 0); });
    inFormat = in;
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

std::vector<std::string> EffectRig::newCalls() {
    std::vector<std::string> names;
    on([&] { names = functionsOf(recording.calls()); });
    std::vector<std::string> added(names.begin() + static_cast<std::ptrdiff_t>(seenCalls), names.end());
    seenCalls = names.size();
    std::erase(added, "process");
    return added;
}

}  // namespace korva::test
