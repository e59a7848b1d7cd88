// The documents that a host may make an instance from.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korva/module/check/guarded_memory.h"
#include "platform/published/base_types.h"

namespace korva::tool {

struct Document {
    std::string name{};  ///< For a reader: "float platform of engine {...}".
    GUID engine{};
    std::string moduleName{};  ///< The module that the host would load for it; may be empty.
    std::string text{};
};

/// What the engine table gives: each engine and one that nobody knows, on each platform; then one with
/// members that no module knows.
[[nodiscard]] std::vector<Document> allDocuments();

}  // namespace korva::tool
