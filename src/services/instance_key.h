// The key of the registry in which a live instance shows itself, and the mutex that tells that it lives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/named_mutex.h"
#include "platform/new_guid.h"
#include "platform/registry.h"

namespace korva::services {

/// Where instances show themselves, below HKEY_LOCAL_MACHINE.
namespace instance_place {
/// Made by whoever installs the object: without it no instance shows itself.
inline constexpr std::string_view base = "Software\\Kestrelwright";
inline constexpr std::string_view instances = "Software\\Kestrelwright\\APO\\Instances";

/// Of the instance called `name`.
[[nodiscard]] std::string keyPath(std::string_view name);
[[nodiscard]] std::string mutexName(std::string_view name);
}  // namespace instance_place

/// One instance's key and mutex, both named after a GUID of its own. Whoever finds a key without its mutex
/// knows that the process has died. Writing never fails loudly: without a key all of it does nothing. [owner]
class InstanceKey {
public:
    /// Makes both, unless the base is missing or the system refuses the mutex. Then there is neither.
    explicit InstanceKey(const GUID& guid = platform::newGuid());
    ~InstanceKey();
    InstanceKey(const InstanceKey&) = delete;
    InstanceKey& operator=(const InstanceKey&) = delete;

    /// Where the key is, below HKEY_LOCAL_MACHINE; empty once it is removed.
    [[nodiscard]] const std::string& path() const noexcept { return instanceKeyPath; }
    [[nodiscard]] bool isOpen() const noexcept { return static_cast<bool>(instanceKey); }

    /// Each gives 0 without a key, and otherwise what the registry says: of the value, or if that was
    /// written, of the value "WriteTime" that follows each.
    platform::RegistryResult writeDword(std::string_view name, std::uint32_t value);
    platform::RegistryResult writeQword(std::string_view name, std::uint64_t value);
    platform::RegistryResult writeBlob(std::string_view name, std::span<const std::byte> data);
    /// A string of 8-bit characters, as which readers have to take it, and a zero.
    platform::RegistryResult writeString(std::string_view name, std::string_view text);

    /// What a tool has written; nothing unless it is a REG_DWORD.
    [[nodiscard]] std::optional<std::uint32_t> readDword(std::string_view name) const;

    /// Deletes the key with all that others put below it. The mutex stays for as long as this object.
    void remove();

private:
    platform::RegistryResult write(std::string_view name, std::uint32_t type,
                                   std::span<const std::byte> data);

    std::string instanceKeyPath;
    platform::NamedMutex instanceMutex;
    platform::RegistryKey instanceKey;
};

}  // namespace korva::services
