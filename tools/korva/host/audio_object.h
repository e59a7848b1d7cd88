// An audio object as an audio engine drives it: by its published interfaces only.
#pragma once

#include <cstdint>
#include <string>

#include "korva/host/engine_buffers.h"
#include "platform/counted_object.h"
#include "platform/published/audio_objects.h"
#include "platform/published/device_interfaces.h"

namespace korva::tool {

/// Which of the published records an object is initialised with.
enum class Generation { second = 2, third = 3 };

/// The device of an endpoint's identifier; null if the system knows none. The calling thread is in a COM
/// apartment.  [any, blocks]
[[nodiscard]] platform::Reference<IMMDevice> findEndpoint(const std::string& id);

/// One object with its stream: `initialize` first, `process` between `lock` and `unlock`. One thread plays
/// the engine's control thread and its audio thread; the object's own threads run beside it. All calls but
/// `process` wait for these.
class AudioObject {
public:
    /// Throws `HostError` for an object that lacks one of the faces that an engine asks for.
    explicit AudioObject(const platform::Reference<IUnknown>& object);
    /// Ends a stream that is locked.
    ~AudioObject();
    AudioObject(const AudioObject&) = delete;
    AudioObject& operator=(const AudioObject&) = delete;

    /// Sets the object up for the endpoint, or for none, in the default mode. Throws `HostError` unless it
    /// succeeds.
    void initialize(const CLSID& classId, Generation generation, IMMDevice* endpoint);

    /// Starts a stream of the buffers' formats, which live until `unlock`. Throws `HostError` if the object,
    /// or its module, takes other formats only: an engine then looks for another one.
    void lock(EngineBuffers& buffers);
    /// Processes the first `frames` frames of the input; the output has as many then.
    void process(EngineBuffers& buffers, std::uint32_t frames) noexcept;
    /// Throws `HostError` unless it succeeds.
    void unlock();

    /// Tells of the endpoint's volume, and of an effect property of its user's set, as the system would.
    void notifyVolume(float scalar);
    void notifyEffectProperty(const PROPERTYKEY& key);

    /// Comes back when the thread of the object has no call before this one left. Tasks that it has set
    /// itself may be left.
    void reset();

private:
    void negotiate(published::IAudioMediaType* in, published::IAudioMediaType* out);

    platform::Reference<IMMDevice> device;  ///< Null without an endpoint.
    platform::Reference<published::IAudioProcessingObject> object;
    platform::Reference<published::IAudioProcessingObjectConfiguration> configuration;
    platform::Reference<published::IAudioProcessingObjectRT> realtime;
    platform::Reference<published::IAudioProcessingObjectNotifications> notifications;
    platform::Reference<published::IAudioSystemEffects2> effects;  ///< By which an engine knows it.
    platform::Reference<IPropertyStore> effectProperties;
    bool isLocked = false;
};

}  // namespace korva::tool
