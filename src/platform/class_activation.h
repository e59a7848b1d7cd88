// Objects of classes that libraries on this system are registered for.
#pragma once

#include "platform/published/unknown.h"

namespace korva::platform {

/// No library is registered for a class.
inline constexpr auto classNotRegistered = static_cast<HRESULT>(0x80040154U);  ///< REGDB_E_CLASSNOTREG

/// Makes an object of a class, in this process, and gives its face `id`, which is the caller's to release. On
/// Windows COM does it; on Linux the library that the registry names is loaded as COM does,
///
///     HKEY_CLASSES_ROOT\CLSID\{guid}\InprocServer32
///
/// and stays for as long as the process. The calling thread is in a COM apartment. `*object` is null if that
/// fails, with `classNotRegistered` or what the library says.  [any, blocks]
HRESULT createObjectOfClass(const CLSID& classId, const IID& id, void** object) noexcept;

}  // namespace korva::platform
