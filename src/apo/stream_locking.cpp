// The begin and the end of streams: what is checked on the caller's thread, and the core's part.
#include <algorithm>
#include <mutex>

#include "apo/apo_base.h"
#include "framework/ref.h"
#include "platform/published/results.h"
#include "platform/published_call.h"

namespace korva::apo {

using framework::Ref;
using published::IAudioMediaType;

namespace {

IAudioMediaType* formatOf(const APO_CONNECTION_DESCRIPTOR* connection) noexcept {
    return connection != nullptr ? connection->pFormat : nullptr;
}

}  // namespace

// Another thread may have ended the stream before the core has heard of it: then there is none to begin.
HRESULT ApoBase::LockForProcess(UINT32 inputCount, APO_CONNECTION_DESCRIPTOR** inputs, UINT32 outputCount,
                                APO_CONNECTION_DESCRIPTOR** outputs) {
    const Connections connections = {{inputCount, inputs}, {outputCount, outputs}};
    std::uint64_t stream = 0;
    if (const HRESULT result = baseLock(connections, stream); published::failed(result)) {
        return result;
    }
    const std::unique_lock guard = coreTurn();
    if (!isCurrent(stream)) {
        return published::ok;
    }
    const HRESULT result = core.call([&](engine::EffectCore& object) {
        return object.lockForProcess(connections.inputs.all(), connections.outputs.all());
    });
    if (published::failed(result)) {
        static_cast<void>(baseUnlock());
    }
    return result;
}

HRESULT ApoBase::UnlockForProcess() {
    const std::unique_lock guard = coreTurn();
    core.call([](engine::EffectCore& object) {
        object.unlockForProcess();
        return published::ok;
    });
    return baseUnlock();
}

std::unique_lock<platform::Mutex> ApoBase::coreTurn() {
    std::unique_lock turn(streamLock, std::defer_lock);
    if (!core.isCurrent()) {
        turn.lock();
    }
    return turn;
}

HRESULT ApoBase::baseLock(const Connections& connections, std::uint64_t& stream) {
    return platform::publishedCall([&] {
        const std::lock_guard guard(processLock);
        if (isLocked()) {
            return published::objectLocked;
        }
        const HRESULT result = checkAll(connections);
        return published::failed(result) ? result : takeLock(stream);
    });
}

// The first rule that is broken gives the result. The traits stay for a pass-through: an object that lets the
// number of channels change has none there, and copies nothing.
HRESULT ApoBase::checkAll(const Connections& connections) {
    const std::uint32_t flags = registrationProperties.Flags;
    HRESULT result = checkArrays(connections);
    if (result == published::ok) {
        result = checkCounts(registrationProperties, connections);
    }
    if (result == published::ok) {
        result = readTraits(flags, connections, traits);
        samplesPerFrame.set(traits.samplesPerFrame);
    }
    if (result == published::ok) {
        result = checkFormats(connections);
    }
    if (result == published::ok) {
        result = checkDescriptors(flags, traits, connections);
    }
    if (result == published::ok) {
        result = checkFrameCounts(flags, connections);
    }
    if (result == published::ok) {
        result = checkOverlaps(flags, connections);
    }
    return result == published::ok ? CheckConnections(connections) : result;
}

HRESULT ApoBase::checkFormats(const Connections& connections) {
    for (const APO_CONNECTION_DESCRIPTOR* const input : connections.inputs.all()) {
        for (const APO_CONNECTION_DESCRIPTOR* const output : connections.outputs.all()) {
            if (!isAccepted(&ApoBase::IsOutputFormatSupported, formatOf(input), formatOf(output)) ||
                !isAccepted(&ApoBase::IsInputFormatSupported, formatOf(output), formatOf(input))) {
                return published::formatNotSupported;
            }
        }
    }
    return published::ok;
}

bool ApoBase::isAccepted(FormatTest test, IAudioMediaType* opposite, IAudioMediaType* requested) {
    IAudioMediaType* supported = nullptr;
    const HRESULT result = (this->*test)(opposite, requested, &supported);
    const auto released = Ref<IAudioMediaType>::adopt(supported);
    return result == published::ok;
}

HRESULT ApoBase::CheckConnections(const Connections&) {
    return published::ok;
}

// A format that was asked about itself may have come first.
HRESULT ApoBase::takeLock(std::uint64_t& stream) noexcept {
    const std::lock_guard guard(stateLock);
    if (locked) {
        return published::objectLocked;
    }
    locked = true;
    stream = ++lastStream;
    return published::ok;
}

HRESULT ApoBase::baseUnlock() noexcept {
    const std::lock_guard guard(stateLock);
    if (!locked) {
        return published::alreadyUnlocked;
    }
    locked = false;
    return published::ok;
}

bool ApoBase::isLocked() noexcept {
    const std::lock_guard guard(stateLock);
    return locked;
}

bool ApoBase::isCurrent(std::uint64_t stream) noexcept {
    const std::lock_guard guard(stateLock);
    return locked && lastStream == stream;
}

}  // namespace korva::apo
