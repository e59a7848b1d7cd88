// An audio object as a host has it: by its faces.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/published/audio_objects.h"
#include "tests/system/support/com_pointer.h"
#include "tests/system/support/connections.h"
#include "tests/system/support/hosted_library.h"
#include "tests/system/support/known_ids.h"
#include "tests/system/support/own_media_type.h"

namespace korva::test {

/// A new object of a class, of which the test holds each face once.
class HostedObject {
public:
    HostedObject(const HostedLibrary& library, const ClassFacts& facts);

    /// Locks a stream of these formats.
    HRESULT lock(const published::UNCOMPRESSEDAUDIOFORMAT& in, const published::UNCOMPRESSEDAUDIOFORMAT& out);
    HRESULT lock(const published::UNCOMPRESSEDAUDIOFORMAT& both) { return lock(both, both); }
    HRESULT lock(Connection& input, Connection& output);
    HRESULT unlock() { return configuration->UnlockForProcess(); }

    /// One call with a valid input; gives the output, whose samples are `untouched` before.
    std::vector<float> play(std::span<const float> samples, std::uint32_t inChannels,
                            std::uint32_t outChannels);
    void process(published::APO_CONNECTION_PROPERTY& input, published::APO_CONNECTION_PROPERTY& output);

    /// Drops all references; once. Gives what the last `Release` gave.
    ULONG release();

    static constexpr float untouched = 77.0f;

    ComPointer<IUnknown> unknown;
    ComPointer<published::IAudioProcessingObject> apo;
    ComPointer<published::IAudioProcessingObjectConfiguration> configuration;
    ComPointer<published::IAudioProcessingObjectRT> realtime;
    ComPointer<published::IAudioSystemEffects3> effects;
    ComPointer<published::IAudioProcessingObjectNotifications> notifications;
};

}  // namespace korva::test
