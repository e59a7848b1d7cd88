#include "apo/connection_checks.h"

#include <algorithm>

#include "platform/published/audio_interfaces.h"
#include "platform/published/results.h"

namespace korva::apo {

using published::UNCOMPRESSEDAUDIOFORMAT;

namespace {

bool hasFirst(const ConnectionArray& connections) noexcept {
    return connections.count == 0 || (connections.first != nullptr && connections.first[0] != nullptr);
}

const ConnectionArray& firstSide(const Connections& connections) noexcept {
    return connections.inputs.count != 0 ? connections.inputs : connections.outputs;
}

SharedTraits traitsOf(std::uint32_t flags, const UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    SharedTraits traits;
    if ((flags & published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH) != 0) {
        traits.samplesPerFrame = format.dwSamplesPerFrame;
    }
    if ((flags & published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH) != 0) {
        traits.bytesPerSampleContainer = format.dwBytesPerSampleContainer;
        traits.validBitsPerSample = format.dwValidBitsPerSample;
    }
    if ((flags & published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH) != 0) {
        traits.framesPerSecond = format.fFramesPerSecond;
    }
    return traits;
}

HRESULT checkDescriptor(std::uint32_t flags, const SharedTraits& traits,
                        const APO_CONNECTION_DESCRIPTOR* connection) {
    if (connection == nullptr) {
        return published::nullPointer;
    }
    if (connection->u32Signature != published::connectionDescriptorSignature) {
        return published::invalidArgument;
    }
    if (connection->pFormat == nullptr) {
        return published::nullPointer;
    }
    UNCOMPRESSEDAUDIOFORMAT format{};
    if (const HRESULT result = connection->pFormat->GetUncompressedAudioFormat(&format);
        published::failed(result)) {
        return result;
    }
    return traitsOf(flags, format) == traits ? published::ok : published::connectionFormatInvalid;
}

/// A buffer at its longest, from its first byte to behind its last.
struct Extent {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    [[nodiscard]] bool overlaps(const Extent& other) const noexcept {
        return begin < other.end && other.begin < end;
    }
};

// A host's numbers may be any: what would end behind the last address ends there.
HRESULT readExtent(const APO_CONNECTION_DESCRIPTOR& connection, Extent& extent) {
    UNCOMPRESSEDAUDIOFORMAT format{};
    const HRESULT result = connection.pFormat->GetUncompressedAudioFormat(&format);
    if (published::failed(result)) {
        return result;
    }
    extent.begin = connection.pBuffer;
    std::uint64_t size = std::uint64_t{connection.u32MaxFrameCount} * format.dwBytesPerSampleContainer;
    if (__builtin_mul_overflow(size, format.dwSamplesPerFrame, &size) ||
        __builtin_add_overflow(extent.begin, size, &extent.end)) {
        extent.end = UINT64_MAX;
    }
    return published::ok;
}

}  // namespace

HRESULT checkArrays(const Connections& connections) noexcept {
    return hasFirst(connections.inputs) && hasFirst(connections.outputs) ? published::ok
                                                                         : published::nullPointer;
}

HRESULT checkCounts(const APO_REG_PROPERTIES& record, const Connections& connections) noexcept {
    const bool isValid = connections.inputs.count >= record.u32MinInputConnections &&
                         connections.inputs.count <= record.u32MaxInputConnections &&
                         connections.outputs.count >= record.u32MinOutputConnections &&
                         connections.outputs.count <= record.u32MaxOutputConnections;
    return isValid ? published::ok : published::connectionCountInvalid;
}

HRESULT readTraits(std::uint32_t flags, const Connections& connections, SharedTraits& traits) {
    const ConnectionArray& side = firstSide(connections);
    if (side.count == 0) {
        return published::ok;
    }
    if (side.first[0]->pFormat == nullptr) {
        return published::nullPointer;
    }
    UNCOMPRESSEDAUDIOFORMAT format{};
    const HRESULT result = side.first[0]->pFormat->GetUncompressedAudioFormat(&format);
    if (published::succeeded(result)) {
        traits = traitsOf(flags, format);
    }
    return published::failed(result) ? result : published::ok;
}

HRESULT checkDescriptors(std::uint32_t flags, const SharedTraits& traits, const Connections& connections) {
    for (const ConnectionArray* const side : {&connections.inputs, &connections.outputs}) {
        for (const APO_CONNECTION_DESCRIPTOR* const connection : side->all()) {
            if (const HRESULT result = checkDescriptor(flags, traits, connection); result != published::ok) {
                return result;
            }
        }
    }
    return published::ok;
}

HRESULT checkFrameCounts(std::uint32_t flags, const Connections& connections) noexcept {
    if (connections.inputs.count == 0 || connections.outputs.count == 0) {
        return published::ok;
    }
    // A mixer, and an object that changes the rate, has a say of its own in how many frames come out.
    const bool takesAll =
        (flags & (published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH | published::APO_FLAG_MIXER)) ==
        published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH;
    const bool isShort =
        connections.inputs.first[0]->u32MaxFrameCount > connections.outputs.first[0]->u32MaxFrameCount;
    return takesAll && isShort ? published::outputMaxFrameCountInvalid : published::ok;
}

HRESULT checkOverlaps(std::uint32_t flags, const Connections& connections) {
    if ((flags & published::APO_FLAG_INPLACE) != 0) {
        return published::ok;
    }
    for (const APO_CONNECTION_DESCRIPTOR* const input : connections.inputs.all()) {
        Extent in;
        if (const HRESULT result = readExtent(*input, in); published::failed(result)) {
            return result;
        }
        for (const APO_CONNECTION_DESCRIPTOR* const output : connections.outputs.all()) {
            Extent out;
            if (const HRESULT result = readExtent(*output, out); published::failed(result)) {
                return result;
            }
            if (in.overlaps(out)) {
                return published::buffersOverlap;
            }
        }
    }
    return published::ok;
}

}  // namespace korva::apo
