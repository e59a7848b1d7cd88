#include "korva/registry/tree_changes.h"

#include <ranges>

namespace korva::tool {
namespace {

using Kind = TreeChange::Kind;
using KeyState = TreeState::mapped_type;

void addDeletions(std::vector<TreeChange>& changes, const TreeState& before, const TreeState& after) {
    for (const auto& [key, values] : before | std::views::reverse) {
        const auto now = after.find(key);
        if (now == after.end()) {
            changes.push_back({Kind::deleteKey, key, {}, {}});
            continue;
        }
        for (const auto& [name, value] : values) {
            if (!now->second.contains(name)) {
                changes.push_back({Kind::deleteValue, key, name, {}});
            }
        }
    }
}

bool hasValue(const KeyState& state, const std::string& name, const platform::RegistryValue& value) {
    const auto found = state.find(name);
    return found != state.end() && found->second.type == value.type && found->second.data == value.data;
}

void addSettings(std::vector<TreeChange>& changes, const TreeState& before, const TreeState& after) {
    for (const auto& [key, values] : after) {
        const auto known = before.find(key);
        if (known == before.end()) {
            changes.push_back({Kind::createKey, key, {}, {}});
        }
        for (const auto& [name, value] : values) {
            if (known == before.end() || !hasValue(known->second, name, value)) {
                changes.push_back({Kind::setValue, key, name, value});
            }
        }
    }
}

}  // namespace

std::vector<TreeChange> changesBetween(const TreeState& before, const TreeState& after) {
    std::vector<TreeChange> changes;
    addDeletions(changes, before, after);
    addSettings(changes, before, after);
    return changes;
}

}  // namespace korva::tool
