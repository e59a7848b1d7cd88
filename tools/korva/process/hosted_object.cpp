#include "korva/process/hosted_object.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <utility>

#include "engine/audio_media_type.h"
#include "engine/engine_config_document.h"
#include "engine/stream_format.h"
#include "korva/errors.h"
#include "platform/memory_lock.h"
#include "platform/property_key.h"
#include "platform/published/audio_interfaces.h"
#include "platform/published/audio_notifications.h"
#include "platform/published/results.h"
#include "platform/unicode.h"
#include "rt/kernels/kernels.h"
#include "rt/realtime.h"

namespace korva::tool {

using engine::DspEngine;
using engine::EffectCore;
using framework::Held;
using framework::Ref;
using published::APO_CONNECTION_DESCRIPTOR;
using published::IAudioMediaType;

namespace {

std::string supportedNames() {
    std::string names;
    for (const rt::Kernels* version : rt::supportedKernels()) {
        names += names.empty() ? "" : ", ";
        names += version->name;
    }
    return names;
}

/// The kernels' own choice passes over a name that it doesn't know. Whoever forces one wants that one.
void checkKernels() {
    const char* const forced = std::getenv("KORVA_KERNELS");
    if (forced != nullptr && *forced != '\0' && rt::findKernels(forced) == nullptr) {
        fail("KORVA_KERNELS names '{}', which isn't supported here; supported are {}", forced,
             supportedNames());
    }
}

bool lockCode() {
    const rt::CodeRange code = rt::realtimeCode();
    return platform::lockMemory(code.start, code.size);
}

Ref<IAudioMediaType> mediaTypeOf(const SoundFormat& format) {
    rt::EngineFormat record;
    record.Assign(format.sampleRate, static_cast<std::int32_t>(format.channels), format.mask);
    IAudioMediaType* type = nullptr;
    if (published::failed(engine::AudioMediaType::Create(engine::floatFormatOf(record), &type))) {
        fail("a stream of {} can't be announced", describe(format));
    }
    return Ref<IAudioMediaType>::adopt(type);
}

/// A connection as it is announced.
APO_CONNECTION_DESCRIPTOR announce(IAudioMediaType* type, std::uint32_t maxFrames) {
    return {.Type = published::APO_CONNECTION_BUFFER_TYPE_EXTERNAL,
            .pBuffer = 0,
            .u32MaxFrameCount = maxFrames,
            .pFormat = type,
            .u32Signature = published::connectionDescriptorSignature};
}

/// The audio engine takes no other format than the one that it asked for.
void negotiate(EffectCore& core, IAudioMediaType* in, IAudioMediaType* out) {
    IAudioMediaType* supported = nullptr;
    HRESULT result = core.isOutputFormatSupported(in, out, &supported);
    const auto outputType = Ref<IAudioMediaType>::adopt(std::exchange(supported, nullptr));
    if (result == published::ok) {
        result = core.isInputFormatSupported(out, in, &supported);
    }
    const auto inputType = Ref<IAudioMediaType>::adopt(supported);
    if (result != published::ok) {
        fail("the module refuses these formats of input and output");
    }
}

}  // namespace

HostedObject::HostedObject(params::EffectKind kind, const std::filesystem::path& moduleFolder)
    : codeLocked(lockCode()) {
    checkKernels();
    worker = framework::Dispatcher::start(framework::RootType::of<EffectCore>());
    worker->runSynchronously([&] {
        core = Held<EffectCore>::first(framework::create<EffectCore>(
            static_cast<std::uint32_t>(kind), engine::Surroundings{.moduleFolder = moduleFolder}));
        core->dspEngine.subscribe(this, nullptr,
                                  [](void* self, framework::ListenedTo&, framework::ActiveObject&,
                                     const void* published, void*, const void*, framework::Reason) {
                                      if (*static_cast<const Held<DspEngine>*>(published)) {
                                          ++static_cast<HostedObject*>(self)->enginesBuilt;
                                      }
                                  });
    });
}

HostedObject::~HostedObject() {
    worker->runSynchronously([this] { core = nullptr; });
}

void HostedObject::initialize(const std::string& endpointId) {
    core->endpointIdStrW.set(platform::toWide(endpointId));
}

void HostedObject::lock(const SoundFormat& in, const SoundFormat& out, std::uint32_t maxFrames,
                        bool metered) {
    const Ref<IAudioMediaType> inputType = mediaTypeOf(in);
    const Ref<IAudioMediaType> outputType = mediaTypeOf(out);
    APO_CONNECTION_DESCRIPTOR input = announce(inputType.get(), maxFrames);
    APO_CONNECTION_DESCRIPTOR output = announce(outputType.get(), maxFrames);
    core->realtime().levelMetersEnabled.set(metered ? 1 : 0);
    inspect([&](EffectCore& object) {
        negotiate(object, inputType.get(), outputType.get());
        APO_CONNECTION_DESCRIPTOR* const inputs[] = {&input};
        APO_CONNECTION_DESCRIPTOR* const outputs[] = {&output};
        object.lockForProcess(inputs, outputs);
    });
    samplesPerFrame = in.channels;
    lockedFrames = maxFrames;
}

void HostedObject::process(APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) noexcept {
    assert(input.u32ValidFrameCount <= lockedFrames);
    APO_CONNECTION_PROPERTY* const inputs = &input;
    APO_CONNECTION_PROPERTY* const outputs = &output;
    core->realtime().Process(1, &inputs, 1, &outputs, samplesPerFrame);
}

void HostedObject::unlock() {
    inspect([](EffectCore& object) { object.unlockForProcess(); });
    lockedFrames = 0;
}

void HostedObject::notifyVolume(float scalar) {
    inspect([&](EffectCore& object) {
        AUDIO_VOLUME_NOTIFICATION_DATA volume{};
        volume.fMasterVolume = scalar;
        published::APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
        notification.audioEndpointVolumeChange = {object.device.value().get(), &volume};
        object.onApoNotification(notification);
    });
}

void HostedObject::inspect(const std::function<void(EffectCore&)>& look) {
    worker->runSynchronously([&] { look(*core); });
}

EngineUse HostedObject::engineUse() {
    EngineUse use;
    inspect([&](EffectCore& object) {
        use.built = enginesBuilt;
        use.started = object.presetLoadCount.value();
        if (const Held<DspEngine>& engine = object.dspEngine.value()) {
            const std::vector<std::string> names = engine->document().platformModuleNames();
            use.module = names.empty() ? std::string() : names.front();
            use.isLoaded = engine->hasInstance();
            use.wantsHardware = (object.modeFlags.value() & engine::modeHardware) != 0;
            use.onHardware = object.realtime().hardwareMode.get();
            use.engineId = platform::guidText(engine->engineId());
        }
    });
    return use;
}

std::uint64_t HostedObject::lastProcessNs() const noexcept {
    return core->realtime().lastProcessNs.get();
}

void HostedObject::raise(Peaks& peaks) const noexcept {
    const rt::RtProcessor& processor = core->realtime();
    for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
        peaks.input[plane] = std::max(peaks.input[plane], processor.inputPeak[plane].get());
        peaks.output[plane] = std::max(peaks.output[plane], processor.outputPeak[plane].get());
    }
}

std::string_view HostedObject::kernelsName() const noexcept {
    return rt::chosenKernels().name;
}

bool HostedObject::isCodeLocked() const noexcept {
    return codeLocked;
}

}  // namespace korva::tool
