// The audio engine's list of audio objects, in the registry.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/published/audio_object_records.h"
#include "platform/registry.h"

namespace korva::apo {

/// An object on the list: its key below HKEY_CLASSES_ROOT, and what is in it, in the order in which it is
/// written.
struct ListedObject {
    std::string path;
    std::vector<std::pair<std::string, platform::RegistryValue>> values;
};

/// What `RegisterAPO` writes of a record, each of whose texts has a terminator.  [any]
[[nodiscard]] ListedObject listedObject(const published::APO_REG_PROPERTIES& properties);

/// Writes HKEY_CLASSES_ROOT\AudioEngine\AudioProcessingObjects\{clsid} anew from a record, with as many
/// interfaces as it says. E_POINTER for none; E_INVALIDARG if a text has no terminator within its 512 bytes,
/// and nothing is written then. A registry that fails gives its error, and the object isn't in the list.
/// [any, blocks]
[[nodiscard]] HRESULT RegisterAPO(const published::APO_REG_PROPERTIES* properties);

/// Takes the object off the list, with all below its key. 0x80070002 if it isn't there.  [any, blocks]
[[nodiscard]] HRESULT UnregisterAPO(const CLSID& clsid);

/// Deletes the list, and the key above it, as far as they are empty.  [any, blocks]
[[nodiscard]] HRESULT removeEmptyObjectList();

}  // namespace korva::apo
