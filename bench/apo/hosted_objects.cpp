#include "bench/apo/hosted_objects.h"

#include <algorithm>
#include <random>
#include <stdexcept>

#include "apo/effect_object.h"
#include "engine/audio_media_type.h"
#include "platform/published/results.h"
#include "tests/support/memory_property_store.h"

namespace korva::bench {

using framework::Ref;
using published::APO_CONNECTION_DESCRIPTOR;
using published::APO_CONNECTION_PROPERTY;

namespace {

void require(HRESULT result, const char* otherwise) {
    if (result != published::ok) {
        throw std::runtime_error(otherwise);
    }
}

APO_CONNECTION_PROPERTY connectionTo(const float* samples, std::uint32_t frames) {
    return {reinterpret_cast<UINT_PTR>(samples), frames, published::BUFFER_VALID,
            published::connectionPropertySignature};
}

template <class Interface>
Ref<Interface> faceOf(apo::KORVAMFX& object) {
    void* face = nullptr;
    require(object.QueryInterface(published::iidOf<Interface>, &face), "a face is missing");
    return Ref<Interface>::adopt(static_cast<Interface*>(face));
}

Ref<published::IAudioMediaType> stereoType() {
    constexpr published::UNCOMPRESSEDAUDIOFORMAT stereo = {published::ieeeFloatFormat, 2, 4, 32, 48000.0f, 3};
    published::IAudioMediaType* created = nullptr;
    require(engine::AudioMediaType::Create(stereo, &created), "no media type");
    return Ref<published::IAudioMediaType>::adopt(created);
}

}  // namespace

StereoBuffer::StereoBuffer(std::uint32_t frames)
    : input(connectionTo(samples.data(), frames)), output(connectionTo(played.data(), frames)) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-0.1f, 0.1f);
    std::generate(samples.begin(), samples.end(), [&] { return level(random); });
}

HostedObject::HostedObject() {
    const auto made = Ref<apo::KORVAMFX>::share(new apo::KORVAMFX(apo::modeEffect, nullptr, [this] {
        auto core = apo::CoreThread::start(static_cast<std::uint32_t>(apo::modeEffect.kind), {});
        behind = core.realtime();
        return core;
    }));
    object = faceOf<published::IAudioProcessingObject>(*made);
    configuration = faceOf<published::IAudioProcessingObjectConfiguration>(*made);
    realtime = faceOf<published::IAudioProcessingObjectRT>(*made);
}

void HostedObject::initialize() {
    const auto properties = test::MemoryPropertyStore::make();
    published::APOInitSystemEffects2 record{};
    record.pAPOEndpointProperties = properties.get();
    record.pAPOSystemEffectsProperties = properties.get();
    record.AudioProcessingMode = published::processing_mode::defaultMode;
    require(object->Initialize(sizeof(record), reinterpret_cast<BYTE*>(&record)), "no initialisation");
}

void HostedObject::lock() {
    const Ref<published::IAudioMediaType> type = stereoType();
    APO_CONNECTION_DESCRIPTOR connection{};
    connection.u32MaxFrameCount = StereoBuffer::mostFrames;
    connection.pFormat = type.get();
    connection.u32Signature = published::connectionDescriptorSignature;
    APO_CONNECTION_DESCRIPTOR* connections = &connection;
    require(configuration->LockForProcess(1, &connections, 1, &connections), "no lock");
}

void HostedObject::unlock() {
    require(configuration->UnlockForProcess(), "no unlock");
}

}  // namespace korva::bench
