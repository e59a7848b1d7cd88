#include "korva/doctor/library_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "apo/effect_class.h"
#include "korva/doctor/library_contents.h"
#include "korva/file_path.h"
#include "korva/host/host_error.h"
#include "platform/counted_object.h"
#include "platform/module_library.h"
#include "platform/published/class_factory.h"
#include "platform/published/results.h"
#include "platform/unicode.h"

namespace korva::tool {
namespace {

using platform::ModuleLibrary;
using GetClassObject = HRESULT STDMETHODCALLTYPE(const CLSID&, const IID&, void**);

constexpr std::array<const char*, 4> ownExports = {"DllGetClassObject", "DllCanUnloadNow",
                                                   "DllRegisterServer", "DllUnregisterServer"};
constexpr const char* otherBuild =
    "Put a whole build of the library in its place, or name another with --library.";

Finding finding(Severity severity, std::string what, std::string cause, std::string remedy = otherBuild) {
    return {Subject::library, severity, std::move(what), std::move(cause), std::move(remedy)};
}

Finding cannotLoad(const std::filesystem::path& library, const std::string& reason) {
    return finding(Severity::fault, fmt::format("The library '{}' can't be loaded.", textOfPath(library)),
                   reason.empty() ? "The system gives no reason." : fmt::format("The reason: {}.", reason));
}

HRESULT askForClass(GetClassObject& getClassObject, const CLSID& classId) {
    void* found = nullptr;
    const HRESULT result = getClassObject(classId, published::iidOf<IClassFactory>, &found);
    if (published::succeeded(result)) {
        static_cast<IClassFactory*>(found)->Release();
    }
    return result;
}

/// What has no function to be asked by was told before.
Findings classFindings(const ModuleLibrary& library, const std::filesystem::path& file) {
    auto* const getClassObject = reinterpret_cast<GetClassObject*>(library.find(ownExports[0]));
    Findings findings;
    for (const apo::EffectClass* const effect : apo::effectClasses) {
        const HRESULT result =
            getClassObject == nullptr ? published::ok : askForClass(*getClassObject, effect->record.clsid);
        if (published::failed(result)) {
            findings.push_back(
                finding(Severity::fault,
                        fmt::format("The library '{}' gives no class object of {}.", textOfPath(file),
                                    platform::toUtf8(effect->record.szFriendlyName)),
                        fmt::format("It answers {}.", resultText(result))));
        }
    }
    return findings;
}

/// Where a file doesn't tell its functions, those that are looked for.
std::vector<std::string> foundExports(const ModuleLibrary& library) {
    std::vector<std::string> found;
    std::ranges::copy_if(ownExports, std::back_inserter(found),
                         [&](const char* name) { return library.find(name) != nullptr; });
    return found;
}

}  // namespace

Findings exportFindings(const std::filesystem::path& library, const std::vector<std::string>& exports) {
    Findings findings;
    const std::string name = textOfPath(library);
    for (const char* const own : ownExports) {
        if (std::ranges::find(exports, own) == exports.end()) {
            findings.push_back(finding(Severity::fault, fmt::format("The library '{}' lacks {}.", name, own),
                                       "It is no library of audio objects, or its build went wrong."));
        }
    }
    const auto others = std::ranges::count_if(exports, [](const std::string& other) {
        return std::ranges::find(ownExports, other) == ownExports.end();
    });
    if (others != 0) {
        findings.push_back(finding(
            Severity::remark, fmt::format("The library '{}' offers more than its four functions.", name),
            fmt::format("It was built without its list of exports: it has {} others, which "
                        "may take the place of functions of its host.",
                        others)));
    }
    return findings;
}

Findings checkLibrary(const std::filesystem::path& library) {
    std::error_code none;
    if (!std::filesystem::exists(library, none)) {
        return {finding(Severity::fault, fmt::format("There is no library '{}'.", textOfPath(library)),
                        "It was not built, or lies elsewhere.")};
    }
    const LibraryContents contents = readLibraryContents(library);
    if (!contents.fault.empty()) {
        return {cannotLoad(library, contents.fault)};
    }
    std::string reason;
    const ModuleLibrary loaded = ModuleLibrary::load(library, reason);
    if (!loaded) {
        return {cannotLoad(library, reason)};
    }
    Findings findings = exportFindings(library, contents.exports ? *contents.exports : foundExports(loaded));
    std::ranges::move(classFindings(loaded, library), std::back_inserter(findings));
    return findings;
}

}  // namespace korva::tool
