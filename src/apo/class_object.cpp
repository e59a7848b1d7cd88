#include "apo/class_object.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "apo/effect_object.h"
#include "framework/server_lock.h"
#include "platform/counted_object.h"
#include "platform/published/class_factory.h"
#include "platform/published/results.h"
#include "platform/published_call.h"

namespace korva::apo {

namespace {

constinit std::atomic<std::uint32_t> hostLocks{0};

bool takeHostLock() noexcept {
    std::uint32_t locks = hostLocks.load();
    while (locks != 0) {
        if (hostLocks.compare_exchange_weak(locks, locks - 1)) {
            return true;
        }
    }
    return false;
}

class ClassObject final : public platform::CountedObject<IClassFactory> {
public:
    explicit ClassObject(const EffectClass& itsClass) noexcept : effect(itsClass) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        return makeObject(effect, outer, id, object);
    }

    // An unlock that answers no lock of a host's would let go of what its objects hold.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock != 0) {
            hostLocks.fetch_add(1);
            return published::ok;
        }
        return takeHostLock() ? published::ok : published::unspecifiedFailure;
    }

private:
    ~ClassObject() override = default;

    const framework::ServerLock serverLock;
    const EffectClass& effect;
};

}  // namespace

HRESULT getClassObject(REFCLSID clsid, REFIID id, void** object) noexcept {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = nullptr;
    const auto* const found = std::ranges::find_if(
        effectClasses, [&](const EffectClass* effect) { return effect->record.clsid == clsid; });
    if (found == effectClasses.end()) {
        return published::classNotAvailable;
    }
    return platform::publishedCall([&] {
        const platform::Reference<ClassObject> made(new ClassObject(**found));
        return made->QueryInterface(id, object);
    });
}

bool isInUse() noexcept {
    return framework::ServerLock::isHeld() || hostLocks.load() != 0;
}

}  // namespace korva::apo
