// The checks of the file itself.
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/footprint.h"
#include "korva/module/check/tested_module.h"
#include "korva/module/export_costs.h"

namespace korva::tool {
namespace {

/// Without these there is no use of the module, or no end of it.
constexpr std::array<std::string_view, 3> needed = {"ZRDSPAPI_Create", "ZRDSPAPI_Free", "ZRDSPAPI_Process"};

/// Those without which the host does the same so far.
constexpr std::array<std::string_view, 4> spare = {
    "ZRDSPAPI_IsCaptureFormatSupported", "ZRDSPAPI_SetInputGain", "ZRDSPAPI_WakeUp", "ZRDSPAPI_Capture"};

Outcome outcomeWithout(std::string_view name) {
    if (std::ranges::find(needed, name) != needed.end()) {
        return Outcome::failed;
    }
    return std::ranges::find(spare, name) != spare.end() ? Outcome::passed : Outcome::warning;
}

bool isLoaded(const std::filesystem::path& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

void loadAndUnload(const std::filesystem::path& file) {
    { const TestedModule module(file); }
    if (isLoaded(std::filesystem::absolute(file))) {
        failCheck(
            "stays in memory when it is unloaded: something in it, such as a thread-local variable with "
            "a destructor or a symbol that is unique in the process (-fno-gnu-unique), holds it");
    }
}

}  // namespace

Verdict checkLoad(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    return {};
}

Verdict checkUnload(const CheckSetting& setting) {
    expectNoGrowth("load and unload", [&] { loadAndUnload(setting.file); });
    return {};
}

Verdict checkExports(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    Verdict verdict;
    for (const ModuleExport& wanted : moduleExports()) {
        if (module.library.find(wanted.name) == nullptr) {
            verdict.outcome = std::max(verdict.outcome, outcomeWithout(wanted.name));
            verdict.reason +=
                fmt::format("{}{} ({})", verdict.reason.empty() ? "lacks " : ", ", wanted.name, wanted.cost);
        }
    }
    return verdict;
}

}  // namespace korva::tool
