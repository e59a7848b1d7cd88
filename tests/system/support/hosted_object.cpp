#include "tests/system/support/hosted_object.h"

namespace korva::test {

using published::APO_CONNECTION_DESCRIPTOR;
using published::APO_CONNECTION_PROPERTY;
using published::UNCOMPRESSEDAUDIOFORMAT;

HostedObject::HostedObject(const HostedLibrary& library, const ClassFacts& facts)
    : unknown(library.make(facts)),
      apo(query<published::IAudioProcessingObject>(*unknown, iid::processingObject)),
      configuration(query<published::IAudioProcessingObjectConfiguration>(*unknown, iid::configuration)),
      realtime(query<published::IAudioProcessingObjectRT>(*unknown, iid::realtime)),
      effects(query<published::IAudioSystemEffects3>(*unknown, iid::effects3)),
      notifications(query<published::IAudioProcessingObjectNotifications>(*unknown, iid::notifications)) {}

HRESULT HostedObject::lock(const UNCOMPRESSEDAUDIOFORMAT& in, const UNCOMPRESSEDAUDIOFORMAT& out) {
    OwnMediaType inType(in);
    OwnMediaType outType(out);
    Connection input(inType);
    Connection output(outType);
    return lock(input, output);
}

HRESULT HostedObject::lock(Connection& input, Connection& output) {
    APO_CONNECTION_DESCRIPTOR* inputs[] = {&input};
    APO_CONNECTION_DESCRIPTOR* outputs[] = {&output};
    return configuration->LockForProcess(1, inputs, 1, outputs);
}

std::vector<float> HostedObject::play(std::span<const float> samples, std::uint32_t inChannels,
                                      std::uint32_t outChannels) {
    const auto frames = static_cast<std::uint32_t>(samples.size() / inChannels);
    std::vector<float> played(std::size_t{frames} * outChannels, untouched);
    APO_CONNECTION_PROPERTY input = bufferOf(samples, frames);
    APO_CONNECTION_PROPERTY output = bufferOf(played, 0);
    process(input, output);
    return played;
}

void HostedObject::process(APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) {
    APO_CONNECTION_PROPERTY* inputs[] = {&input};
    APO_CONNECTION_PROPERTY* outputs[] = {&output};
    realtime->APOProcess(1, inputs, 1, outputs);
}

ULONG HostedObject::release() {
    apo.release();
    configuration.release();
    realtime.release();
    effects.release();
    notifications.release();
    return unknown.release();
}

}  // namespace korva::test
