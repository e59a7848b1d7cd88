// The checks that a module is put through.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "korva/module/check/verdict.h"

namespace korva::tool {

struct CheckSetting {
    std::filesystem::path file;
    std::uint32_t seed;
};

/// What has to work before a check makes sense.
enum class Need { nothing, library, instance };

struct Check {
    std::string_view name;
    std::string_view claim;  ///< What holds for a module that passes.
    Need need;
    /// Runs in a process of its own, and throws as `CheckProcesses` says.
    Verdict (*run)(const CheckSetting& setting);
};

/// In the order in which they run: first `load` and `create`, which others need.
[[nodiscard]] std::span<const Check> allChecks();

/// The checks that a check of that need stands on.
[[nodiscard]] std::span<const std::string_view> neededChecks(Need need);

// Each in the source of its group.
Verdict checkLoad(const CheckSetting& setting);
Verdict checkUnload(const CheckSetting& setting);
Verdict checkExports(const CheckSetting& setting);
Verdict checkCreate(const CheckSetting& setting);
Verdict checkTable(const CheckSetting& setting);
Verdict checkFormats(const CheckSetting& setting);
Verdict checkPairs(const CheckSetting& setting);
Verdict checkParameters(const CheckSetting& setting);
Verdict checkData(const CheckSetting& setting);
Verdict checkCuts(const CheckSetting& setting);
Verdict checkRepeatable(const CheckSetting& setting);
Verdict checkInstances(const CheckSetting& setting);
Verdict checkSignals(const CheckSetting& setting);
Verdict checkBounds(const CheckSetting& setting);
Verdict checkUnusedPlanes(const CheckSetting& setting);
Verdict checkRealtime(const CheckSetting& setting);
Verdict checkSpeed(const CheckSetting& setting);

}  // namespace korva::tool
