#include "apo/class_object.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "apo/effect_object.h"
#include "framework/ref.h"
#include "framework/server_lock.h"
#include "platform/published/class_factory.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "platform/reference_count.h"

namespace korva::apo {

using framework::Ref;
using published::iidOf;

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

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

class ClassObject final : public IClassFactory {
public:
    explicit ClassObject(const EffectClass& itsClass) noexcept : effect(itsClass) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) {
            return published::nullPointer;
        }
        *object = nullptr;
        if (!(id == iidOf<IUnknown>)&&!(id == iidOf<IClassFactory>)) {
            return published::noInterface;
        }
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return published::ok;
    }

    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override {
        return count.fetch_add(1, std::memory_order_relaxed) + 1;
    }

    platform::ReferenceCount STDMETHODCALLTYPE Release() override {
        const std::uint32_t left = count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

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
    ~ClassObject() = default;

    const framework::ServerLock serverLock;
    const EffectClass& effect;
    std::atomic<std::uint32_t> count{0};
};

#pragma GCC diagnostic pop

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
        const auto made = Ref<ClassObject>::share(new ClassObject(**found));
        return made->QueryInterface(id, object);
    });
}

bool isInUse() noexcept {
    return framework::ServerLock::isHeld() || hostLocks.load() != 0;
}

}  // namespace korva::apo
