// The keys in which live audio objects show themselves, and those that were left by processes which died.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// A key below the one of all instances.
struct InstanceKey {
    enum class Kind {
        live,
        stale,      ///< Its process died.
        link,       ///< It points at another key; nobody follows.
        unreadable  ///< `code` tells why.
    };
    std::string name;
    Kind kind = Kind::live;
    platform::RegistryResult code = 0;
};

struct InstanceKeys {
    platform::RegistryResult code = 0;  ///< Why nothing could be listed, else 0.
    bool hasTelemetry = false;          ///< Whether objects can show themselves.
    std::vector<InstanceKey> keys{};
};

/// All keys with the name of an instance, in the registry's order. What else lies among them is left out.
/// [any, blocks]
[[nodiscard]] InstanceKeys listInstances();

/// The name that a text stands for, in the form that keys have: braces and capitals may differ. Nothing for a
/// text that is no GUID.  [any]
[[nodiscard]] std::optional<std::string> instanceNameOf(std::string_view text);

/// Whether the process that made an instance still has it.  [any, blocks]
[[nodiscard]] bool isInstanceLive(const std::string& name);

/// Opens an instance's key.  [any, blocks]
[[nodiscard]] platform::RegistryResult openInstance(const std::string& name, platform::RegistryAccess access,
                                                    platform::RegistryKey& key);

enum class Removal { removed, isLive, isLink, gone, failed };

/// Takes a left-over key away with all below it, and what is left of its mutex. One that turns out to be live
/// or a link stays. `code` is why it failed.  [any, blocks]
[[nodiscard]] Removal removeStaleInstance(const std::string& name, platform::RegistryResult& code);

}  // namespace korva::tool
