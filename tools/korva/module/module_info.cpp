#include "korva/module/module_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "korva/errors.h"
#include "korva/json.h"
#include "korva/module/export_costs.h"

namespace korva::tool {
namespace {

std::string joined(const std::vector<std::string>& names) {
    return names.empty() ? "-" : asOneLine(fmt::format("{}", fmt::join(names, ", ")));
}

std::string traceFault(const LoaderTrace& trace) {
    if (!trace.missingLibraries.empty()) {
        return fmt::format("it needs what isn't there: {}", joined(trace.missingLibraries));
    }
    if (!trace.missingSymbols.empty()) {
        return fmt::format("it needs what no library has: {}", joined(trace.missingSymbols));
    }
    return asOneLine(trace.fault);
}

std::string exportsText(const ModuleInfo& info) {
    std::string text;
    for (const ModuleExport& wanted : moduleExports()) {
        text += fmt::format("  {:<34}{}\n", wanted.name,
                            info.exports(wanted.name) ? "present" : fmt::format("missing: {}", wanted.cost));
    }
    return text;
}

Json exportsJson(const ModuleInfo& info) {
    Json exports = Json::array();
    for (const ModuleExport& wanted : moduleExports()) {
        const bool present = info.exports(wanted.name);
        exports.push_back({{"name", wanted.name},
                           {"present", present},
                           {"cost", present ? Json(nullptr) : Json(wanted.cost)}});
    }
    return exports;
}

}  // namespace

bool ModuleInfo::exports(const std::string& name) const {
    return std::ranges::find(file.exports, name) != file.exports.end();
}

std::string ModuleInfo::fault() const {
    if (!file.fault.empty()) {
        return file.fault;
    }
    if (!trace.isClean()) {
        return traceFault(trace);
    }
    return exports(moduleExports()[0].name) ? "" : fmt::format("it has no {}", moduleExports()[0].name);
}

ModuleInfo readModuleInfo(const std::string& path) {
    ModuleInfo info = {.path = path, .file = readLibraryFile(path)};
    if (info.file.fault.empty()) {
        info.trace = traceLoader(std::filesystem::absolute(path));
    }
    return info;
}

std::string moduleInfoText(const ModuleInfo& info) {
    const std::string fault = info.fault();
    std::string text = fmt::format("{:<15}{}\n", "Module", asOneLine(info.path));
    if (info.file.fault.empty()) {
        text += fmt::format("{:<15}{}\n", "Needs", joined(info.file.needs));
        text += fmt::format("{:<15}{}\n", "Not found", joined(info.trace.missingLibraries));
        text += fmt::format("{:<15}{}\n", "Not defined", joined(info.trace.missingSymbols));
        text += "Exports\n" + exportsText(info);
    }
    return text + fmt::format("{:<15}{}\n", "Usable", fault.empty() ? "yes" : "no: " + fault);
}

std::string moduleInfoJson(const ModuleInfo& info) {
    const std::string fault = info.fault();
    const Json json = {{"module", info.path},
                       {"usable", fault.empty()},
                       {"fault", fault.empty() ? Json(nullptr) : Json(fault)},
                       {"needs", info.file.needs},
                       {"missingLibraries", info.trace.missingLibraries},
                       {"missingSymbols", info.trace.missingSymbols},
                       {"exports", exportsJson(info)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korva::tool
