// The audio object's three classes.
#pragma once

#include "apo/apo_base.h"
#include "apo/effect_class.h"
#include "engine/effect_core.h"

namespace korva::apo {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// An object of the class whose own interface is `Own`. Made on the heap; its last reference ends it.
template <class Own>
class EffectObject final : public ApoBase, public Own {
public:
    /// `effect` outlives the object. `outer` is the object that this one becomes a part of, or null.
    EffectObject(const EffectClass& effect, IUnknown* outer)
        : ApoBase(effect.record, outer, [&] {
              return CoreThread::start(static_cast<std::uint32_t>(effect.kind), engine::Surroundings());
          }) {}
    /// One whose core is started otherwise.
    EffectObject(const EffectClass& effect, IUnknown* outer, const std::function<CoreThread()>& startCore)
        : ApoBase(effect.record, outer, startCore) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        return ApoBase::QueryInterface(id, object);
    }
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override { return ApoBase::AddRef(); }
    platform::ReferenceCount STDMETHODCALLTYPE Release() override { return ApoBase::Release(); }

private:
    ~EffectObject() override = default;

    [[nodiscard]] IUnknown* ownFace() noexcept override { return static_cast<Own*>(this); }
};

#pragma GCC diagnostic pop

using KORVASFX = EffectObject<IKORVASFX>;
using KORVAMFX = EffectObject<IKORVAMFX>;
using KORVAEFX = EffectObject<IKORVAEFX>;

/// Makes an object of the class and asks it for the face `id`. `outer` is the object that it becomes a part
/// of, or null; a part is asked for IUnknown only, its own one. Null unless the result is S_OK. E_POINTER,
/// CLASS_E_NOAGGREGATION for another face of a part, E_NOINTERFACE, E_OUTOFMEMORY.  [com, blocks]
[[nodiscard]] HRESULT makeObject(const EffectClass& effect, IUnknown* outer, REFIID id,
                                 void** object) noexcept;

}  // namespace korva::apo
