#include "korva/doctor/modules_check.h"

#include <fmt/core.h>

#include <set>
#include <system_error>
#include <vector>

#include "engine/engine_table.h"
#include "korva/doctor/command_word.h"
#include "korva/doctor/library_contents.h"
#include "korva/file_path.h"
#include "korva/module/export_costs.h"
#include "params/catalogue.h"
#include "platform/module_library.h"

namespace korva::tool {
namespace {

using engine::EnginePlatform;
using platform::ModuleLibrary;

/// Of all engines, in order.
std::set<std::string> moduleNames() {
    std::set<std::string> names;
    for (const params::ParamLayout& layout : params::allLayouts()) {
        for (const EnginePlatform platform : {EnginePlatform::floatingPoint, EnginePlatform::hardware}) {
            if (const std::string_view name = engine::moduleName(layout.engineId, platform); !name.empty()) {
                names.emplace(name);
            }
        }
    }
    return names;
}

/// A module that lies there, and who needs it.
struct Module {
    std::string name;
    std::filesystem::path file;
    std::string user;  ///< Empty for nobody.

    [[nodiscard]] Finding finding(std::string what, std::string cause) const {
        const std::string whom = user.empty() ? " No endpoint needs it." : " It is needed by " + user + ".";
        return {Subject::modules, user.empty() ? Severity::remark : Severity::fault, std::move(what),
                std::move(cause) + whom,
                fmt::format("Put a whole build of the module at {}.", commandWord(textOfPath(file)))};
    }
};

Finding cannotLoad(const Module& module, const std::string& reason) {
    return module.finding(
        fmt::format("The module {} can't be loaded.", module.name),
        reason.empty() ? "The system gives no reason." : fmt::format("The reason: {}.", reason));
}

/// Of one that can't create nothing else matters.
void addMissingExports(const ModuleLibrary& library, const Module& module, Findings& findings) {
    for (const ModuleExport& entry : moduleExports()) {
        if (library.find(entry.name) == nullptr) {
            findings.push_back(module.finding(fmt::format("The module {} lacks {}.", module.name, entry.name),
                                              fmt::format("So {}.", entry.cost)));
            if (entry.name == std::string_view("ZRDSPAPI_Create")) {
                return;
            }
        }
    }
}

void addFile(const Module& module, Findings& findings) {
    const LibraryContents contents = readLibraryContents(module.file);
    if (!contents.fault.empty()) {
        findings.push_back(cannotLoad(module, contents.fault));
        return;
    }
    std::string reason;
    const ModuleLibrary library = ModuleLibrary::load(module.file, reason);
    if (library) {
        addMissingExports(library, module, findings);
    } else {
        findings.push_back(cannotLoad(module, reason));
    }
}

/// Those that nobody needs and that aren't there: no more than one line's worth.
Finding unneeded(const std::vector<std::string>& names, const std::filesystem::path& folder) {
    return {Subject::modules, Severity::remark,
            fmt::format("Not in '{}': {}.", textOfPath(folder), fmt::join(names, ", ")),
            "No endpoint needs a module of that name.", ""};
}

}  // namespace

Findings checkModules(const std::filesystem::path& folder, const NeededModules& needed) {
    Findings findings;
    std::vector<std::string> absent;
    for (const std::string& name : moduleNames()) {
        const auto user = needed.find(name);
        const Module module{name, platform::libraryPath(folder, name),
                            user == needed.end() ? "" : user->second};
        std::error_code none;
        if (std::filesystem::exists(module.file, none)) {
            addFile(module, findings);
        } else if (module.user.empty()) {
            absent.push_back(name);
        } else {
            findings.push_back(module.finding(fmt::format("The module {} is missing.", name),
                                              fmt::format("There is no '{}'.", textOfPath(module.file))));
        }
    }
    if (!absent.empty()) {
        findings.push_back(unneeded(absent, folder));
    }
    return findings;
}

}  // namespace korva::tool
