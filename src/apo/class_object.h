// What makes the objects of a class for a host.
#pragma once

#include "apo/effect_class.h"

namespace korva::apo {

/// The class object of `clsid`, by its face `id`: an IClassFactory, whose objects hold the library as it does
/// itself. Null unless the result is S_OK. E_POINTER, CLASS_E_CLASSNOTAVAILABLE, E_NOINTERFACE,
/// E_OUTOFMEMORY. [com]
[[nodiscard]] HRESULT getClassObject(REFCLSID clsid, REFIID id, void** object) noexcept;

/// Whether a host still has anything of this library.  [any]
[[nodiscard]] bool isInUse() noexcept;

}  // namespace korva::apo
