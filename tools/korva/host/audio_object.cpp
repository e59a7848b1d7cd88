#include "korva/host/audio_object.h"

#include <algorithm>
#include <cassert>

#include "korva/host/engine_services.h"
#include "korva/host/host_error.h"
#include "korva/host/media_type.h"
#include "params/effects_store_provider.h"
#include "platform/audio_devices.h"
#include "platform/published/results.h"
#include "platform/unicode.h"

namespace korva::tool {

using platform::Reference;
using published::APO_CONNECTION_DESCRIPTOR;
using published::APO_CONNECTION_PROPERTY;
using published::IAudioMediaType;

namespace {

template <class Interface>
Reference<Interface> faceOf(IUnknown& object, const char* name) {
    void* face = nullptr;
    throwIfFailed(object.QueryInterface(published::iidOf<Interface>, &face),
                  std::string("the object has no ") + name);
    return Reference<Interface>(static_cast<Interface*>(face));
}

Reference<IPropertyStore> propertiesOf(IMMDevice* endpoint) {
    IPropertyStore* store = nullptr;
    if (endpoint == nullptr ||
        published::failed(endpoint->OpenPropertyStore(published::accessRead, &store))) {
        return Reference<IPropertyStore>(new EmptyStore);
    }
    return Reference<IPropertyStore>(store);
}

template <class Record>
Record recordFor(const CLSID& classId) {
    Record record{};
    record.APOInit = {sizeof(Record), classId};
    record.AudioProcessingMode = published::processing_mode::defaultMode;
    return record;
}

template <class Record>
HRESULT initializeWith(published::IAudioProcessingObject& object, Record& record) {
    return object.Initialize(sizeof(Record), reinterpret_cast<BYTE*>(&record));
}

/// A connection as it is announced.
APO_CONNECTION_DESCRIPTOR announce(std::span<float> samples, std::uint32_t maxFrames, IAudioMediaType* type) {
    return {.Type = published::APO_CONNECTION_BUFFER_TYPE_EXTERNAL,
            .pBuffer = reinterpret_cast<UINT_PTR>(samples.data()),
            .u32MaxFrameCount = maxFrames,
            .pFormat = type,
            .u32Signature = published::connectionDescriptorSignature};
}

APO_CONNECTION_PROPERTY connect(std::span<float> samples, std::uint32_t frames) {
    return {.pBuffer = reinterpret_cast<UINT_PTR>(samples.data()),
            .u32ValidFrameCount = frames,
            .u32BufferFlags = published::BUFFER_VALID,
            .u32Signature = published::connectionPropertySignature};
}

}  // namespace

Reference<IMMDevice> findEndpoint(const std::string& id) {
    IMMDeviceEnumerator* found = nullptr;
    if (published::failed(platform::createDeviceEnumerator(&found))) {
        return nullptr;
    }
    const Reference<IMMDeviceEnumerator> devices(found);
    IMMDevice* device = nullptr;
    const HRESULT result = devices->GetDevice(platform::toWide(id).c_str(), &device);
    return Reference<IMMDevice>(published::failed(result) ? nullptr : device);
}

AudioObject::AudioObject(const Reference<IUnknown>& made)
    : object(faceOf<published::IAudioProcessingObject>(*made, "IAudioProcessingObject")),
      configuration(faceOf<published::IAudioProcessingObjectConfiguration>(
          *made, "IAudioProcessingObjectConfiguration")),
      realtime(faceOf<published::IAudioProcessingObjectRT>(*made, "IAudioProcessingObjectRT")),
      notifications(faceOf<published::IAudioProcessingObjectNotifications>(
          *made, "IAudioProcessingObjectNotifications")),
      effects(faceOf<published::IAudioSystemEffects2>(*made, "IAudioSystemEffects2")),
      effectProperties(new EmptyStore) {}

AudioObject::~AudioObject() {
    if (isLocked) {
        configuration->UnlockForProcess();
    }
}

void AudioObject::initialize(const CLSID& classId, Generation generation, IMMDevice* endpoint) {
    device = endpoint == nullptr ? nullptr : platform::shareReference(*endpoint);
    const Reference<IPropertyStore> properties = propertiesOf(endpoint);
    const Reference<EndpointCollection> devices(new EndpointCollection(endpoint));
    const Reference<EngineServices> services(new EngineServices);
    HRESULT result = published::ok;
    if (generation == Generation::second) {
        auto record = recordFor<published::APOInitSystemEffects2>(classId);
        record.pAPOEndpointProperties = properties.get();
        record.pAPOSystemEffectsProperties = effectProperties.get();
        record.pDeviceCollection = devices.get();
        result = initializeWith(*object, record);
    } else {
        auto record = recordFor<published::APOInitSystemEffects3>(classId);
        record.pAPOEndpointProperties = properties.get();
        record.pServiceProvider = services.get();
        record.pDeviceCollection = devices.get();
        result = initializeWith(*object, record);
    }
    throwIfFailed(result, "the object can't be initialised");
}

void AudioObject::lock(EngineBuffers& buffers) {
    const Reference<IAudioMediaType> inputType(new MediaType(buffers.inputFormat()));
    const Reference<IAudioMediaType> outputType(new MediaType(buffers.outputFormat()));
    negotiate(inputType.get(), outputType.get());
    auto input = announce(buffers.input(), buffers.maxFrames(), inputType.get());
    auto output = announce(buffers.output(), buffers.maxFrames(), outputType.get());
    APO_CONNECTION_DESCRIPTOR* inputs = &input;
    APO_CONNECTION_DESCRIPTOR* outputs = &output;
    throwIfFailed(configuration->LockForProcess(1, &inputs, 1, &outputs), "the object can't be locked");
    isLocked = true;
}

/// An engine that can't do otherwise takes no other format than the one that it asked for.
void AudioObject::negotiate(IAudioMediaType* in, IAudioMediaType* out) {
    IAudioMediaType* suggested = nullptr;
    HRESULT result = object->IsOutputFormatSupported(in, out, &suggested);
    const Reference<IAudioMediaType> outputType(suggested);
    suggested = nullptr;
    if (result == published::ok) {
        result = object->IsInputFormatSupported(out, in, &suggested);
    }
    const Reference<IAudioMediaType> inputType(suggested);
    if (result == published::okButNo || result == published::formatNotSupported) {
        throw HostError("the module refuses these formats of input and output");
    }
    throwIfFailed(result, "the object can't tell whether it takes these formats of input and output");
}

void AudioObject::process(EngineBuffers& buffers, std::uint32_t frames) noexcept {
    assert(isLocked && frames <= buffers.maxFrames());
    auto input = connect(buffers.input(), frames);
    auto output = connect(buffers.output(), frames);
    APO_CONNECTION_PROPERTY* inputs = &input;
    APO_CONNECTION_PROPERTY* outputs = &output;
    realtime->APOProcess(1, &inputs, 1, &outputs);
    // What an output holds that is called silent doesn't count.
    if (output.u32BufferFlags == published::BUFFER_SILENT) {
        std::ranges::fill(buffers.output(), 0.0F);
    }
}

void AudioObject::unlock() {
    isLocked = false;
    throwIfFailed(configuration->UnlockForProcess(), "the object can't be unlocked");
}

void AudioObject::notifyVolume(float scalar) {
    AUDIO_VOLUME_NOTIFICATION_DATA volume{};
    volume.fMasterVolume = scalar;
    published::APO_NOTIFICATION notification{};
    notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
    notification.audioEndpointVolumeChange = {device.get(), &volume};
    notifications->HandleNotification(&notification);
}

void AudioObject::notifyEffectProperty(const PROPERTYKEY& key) {
    published::APO_NOTIFICATION notification{};
    notification.type = published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE;
    notification.audioSystemEffectsPropertyChange = {device.get(), params::storeContext,
                                                     published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER,
                                                     effectProperties.get(), key};
    notifications->HandleNotification(&notification);
}

void AudioObject::reset() {
    throwIfFailed(object->Reset(), "the object can't be reset");
}

}  // namespace korva::tool
