// The entry of this library in the registry, by which hosts find its classes.
#pragma once

#include <filesystem>
#include <vector>

#include "platform/published/base_types.h"
#include "platform/registry.h"
#include "platform/type_library.h"

namespace korva::apo {

/// The interfaces and classes as korva.idl declares them.
/// {48E3D58C-375D-4140-8990-8907E4F9418F}
inline constexpr platform::TypeLibrary serverTypeLibrary = {
    {0x48E3D58C, 0x375D, 0x4140, {0x89, 0x90, 0x89, 0x07, 0xE4, 0xF9, 0x41, 0x8F}},
    1,
    0,
    "KORVA 1.0 Type Library"};

/// The library as an application of COM's.
/// {0A21D954-674A-4C09-806E-DB4FBE8F199C}
inline constexpr GUID serverApplication = {
    0x0A21D954, 0x674A, 0x4C09, {0x80, 0x6E, 0xDB, 0x4F, 0xBE, 0x8F, 0x19, 0x9C}};

/// Writes, all below HKEY_CLASSES_ROOT and over what is there:
///
///   AudioEngine\AudioProcessingObjects\{class}   the record of each class
///   AppID\{application}, AppID\KORVA.DLL         the library as an application
///   CLSID\{class}                                the file that has the class: the one this is linked into
///   TypeLib\{id}\1.0                             the type library in it
///
/// At a failure everything that was written goes again, also what an earlier registration had there.
/// [any, blocks]
[[nodiscard]] HRESULT registerServer() noexcept;

/// The values that this writes for a library, in its order, all below HKEY_CLASSES_ROOT; of the type library
/// only the file. Raises `RegistryScriptError` where the scripts aren't linked in.  [any]
[[nodiscard]] std::vector<platform::RegistryChange> serverValues(const std::filesystem::path& library);

/// Takes all that back. Keys that registration had to make stay only if others have put something there, and
/// CLSID, AppID and TypeLib themselves. What isn't there counts as taken back, so it may be called twice; at
/// a failure it goes on, and gives the first one.  [any, blocks]
[[nodiscard]] HRESULT unregisterServer() noexcept;

}  // namespace korva::apo
