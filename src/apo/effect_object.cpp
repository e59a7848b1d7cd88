#include "apo/effect_object.h"

#include "framework/ref.h"
#include "platform/published/results.h"
#include "platform/published_call.h"

namespace korva::apo {

using framework::Ref;

namespace {

// The object is the reference's from here on; a face that it doesn't have ends it.
template <class Object>
HRESULT make(const EffectClass& effect, IUnknown* outer, REFIID id, void** object) {
    const auto inner = Ref<IUnknown>::share(&(new Object(effect, outer))->inner());
    return inner->QueryInterface(id, object);
}

HRESULT makeOfKind(const EffectClass& effect, IUnknown* outer, REFIID id, void** object) {
    switch (effect.kind) {
        case params::EffectKind::stream:
            return make<KORVASFX>(effect, outer, id, object);
        case params::EffectKind::mode:
            return make<KORVAMFX>(effect, outer, id, object);
        case params::EffectKind::endpoint:
            return make<KORVAEFX>(effect, outer, id, object);
    }
    return published::classNotAvailable;
}

}  // namespace

HRESULT makeObject(const EffectClass& effect, IUnknown* outer, REFIID id, void** object) noexcept {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = nullptr;
    if (outer != nullptr && !(id == published::iidOf<IUnknown>)) {
        return published::noAggregation;
    }
    return platform::publishedCall([&] { return makeOfKind(effect, outer, id, object); });
}

}  // namespace korva::apo
