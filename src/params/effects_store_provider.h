// Who provides the sets of effect properties of a device.
#pragma once

#include <cstdint>

#include "framework/ref.h"
#include "params/fx_property_sets.h"

namespace korva::params {

/// {598D00DA-D0C7-49B2-91C9-967530047135}: whose sets of properties these are. Sets are asked for by it, and
/// notifications carry it.
inline constexpr GUID storeContext = {
    0x598D00DA, 0xD0C7, 0x49B2, {0x91, 0xC9, 0x96, 0x75, 0x30, 0x04, 0x71, 0x35}};

/// Whether a system of this version has a provider of its own.
[[nodiscard]] constexpr bool systemSuppliesEffectStores(std::uint32_t major, std::uint32_t build) noexcept {
    return major >= 10 && build >= 22000;
}

/// The same of the running system.  [any]
[[nodiscard]] bool systemSuppliesEffectStores() noexcept;

/// A provider. `fallback` is set if it is one of our own, which whoever uses it keeps open as long.
struct EffectsStore {
    framework::Ref<published::IAudioSystemEffectsPropertyStore> store;
    framework::Held<FxPropertySets> fallback;
};

/// `overrideStore` if there is one; else the system's for `device` if the system has one (`systemSupplies`)
/// and gives it; else one of our own, which calls `onChange` and is the calling thread's. None without a
/// device.  [owner]
[[nodiscard]] EffectsStore openEffectsStore(
    const framework::Ref<IMMDevice>& device,
    const framework::Ref<published::IAudioSystemEffectsPropertyStore>& overrideStore, bool systemSupplies,
    FxPropertySets::OnChange onChange);

}  // namespace korva::params
