#include "apo/registration/server_registration.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "apo/effect_class.h"
#include "apo/registration/apo_registration.h"
#include "apo/registration/registry_script.h"
#include "platform/module_library.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "platform/registry_values.h"
#include "platform/resources.h"
#include "platform/stored_values.h"
#include "platform/thread_locale.h"

namespace korva::apo {
namespace {

constexpr std::uint16_t applicationScript = 101;
constexpr HRESULT noSuchObject = platform::hresultOf(platform::registry_result::notFound);

/// One thing that is written, and how it is taken back. The second is right also if the first has failed.
struct Step {
    std::function<HRESULT()> apply;
    std::function<HRESULT()> undo;
};

HRESULT removeObject(const EffectClass& effect) {
    const HRESULT result = UnregisterAPO(effect.record.clsid);
    return result == noSuchObject ? published::ok : result;
}

Step objectStep(const EffectClass& effect) {
    return {[&effect] { return RegisterAPO(&effect.record); }, [&effect] { return removeObject(effect); }};
}

/// The list itself is made with its first object.
Step listStep() {
    return {[] { return published::ok; }, removeEmptyObjectList};
}

RegistryScript scriptOf(std::uint16_t number, const std::filesystem::path& library) {
    const auto text = platform::textResource(number);
    if (!text) {
        throw RegistryScriptError(0, "expected a script of that number");
    }
    const std::u8string path = library.u8string();
    return readRegistryScript(*text, {{"APPID", platform::upperGuidText(serverApplication)},
                                      {"MODULE", std::string(path.begin(), path.end())}});
}

/// Reads the script at once: one that can't be read stops all before anything is written.
Step scriptStep(std::uint16_t number, const std::filesystem::path& library) {
    const RegistryScript script = scriptOf(number, library);
    return {[script] { return applyRegistryScript(script); },
            [script] { return undoRegistryScript(script); }};
}

Step typeLibraryStep(const std::filesystem::path& library) {
    return {[library] { return platform::registerTypeLibrary(serverTypeLibrary, library); },
            [] { return platform::unregisterTypeLibrary(serverTypeLibrary); }};
}

/// All that is registered: first the objects, then what COM knows of the library.
class ServerEntry {
public:
    ServerEntry() {
        objects.push_back(listStep());
        for (const EffectClass* const effect : effectClasses) {
            objects.push_back(objectStep(*effect));
            classes.push_back(scriptStep(effect->script, library));
        }
        application.push_back(scriptStep(applicationScript, library));
        typeLibrary.push_back(typeLibraryStep(library));
    }

    HRESULT write() {
        if (library.empty()) {
            return published::unspecifiedFailure;
        }
        HRESULT result = writeAll(objects);
        if (published::succeeded(result)) {
            const platform::SystemLocale locale;
            result = writeAll(application);
            result = published::succeeded(result) ? writeAll(classes) : result;
            result = published::succeeded(result) ? writeAll(typeLibrary) : result;
        }
        if (published::failed(result)) {
            remove(written);
        }
        return result;
    }

    HRESULT remove() {
        // The last one of a list goes first, and the list of the objects with the last object.
        HRESULT result = published::ok;
        {
            const platform::SystemLocale locale;
            for (const auto* const steps : {&classes, &typeLibrary, &application}) {
                result = firstFailure(result, remove(*steps));
            }
        }
        return firstFailure(result, remove(objects));
    }

private:
    static HRESULT firstFailure(HRESULT first, HRESULT second) noexcept {
        return published::failed(first) ? first : second;
    }

    HRESULT writeAll(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            // A step that fails may have written something.
            written.push_back(step);
            if (const HRESULT result = platform::publishedCall(step.apply); published::failed(result)) {
                return result;
            }
        }
        return published::ok;
    }

    static HRESULT remove(const std::vector<Step>& steps) {
        HRESULT result = published::ok;
        for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
            result = firstFailure(result, platform::publishedCall(step->undo));
        }
        return result;
    }

    const std::filesystem::path library = platform::ownLibraryPath();
    std::vector<Step> objects;
    std::vector<Step> application;
    std::vector<Step> classes;
    std::vector<Step> typeLibrary;
    std::vector<Step> written;
};

using Values = std::vector<platform::RegistryChange>;

void addValue(Values& values, std::string path, std::string name, platform::RegistryValue value) {
    values.push_back({.kind = platform::RegistryChange::Kind::setValue,
                      .root = platform::RegistryRoot::classesRoot,
                      .path = std::move(path),
                      .name = std::move(name),
                      .value = std::move(value)});
}

void addKeys(Values& values, const std::string& above, const std::vector<ScriptKey>& keys) {
    for (const ScriptKey& key : keys) {
        for (const ScriptValue& value : key.values) {
            addValue(values, above + key.name, value.name, value.value);
        }
        addKeys(values, above + key.name + "\\", key.keys);
    }
}

void addScript(Values& values, std::uint16_t number, const std::filesystem::path& library) {
    for (const ScriptRoot& root : scriptOf(number, library)) {
        addKeys(values, "", root.keys);
    }
}

}  // namespace

Values serverValues(const std::filesystem::path& library) {
    Values values;
    for (const EffectClass* const effect : effectClasses) {
        ListedObject object = listedObject(effect->record);
        for (auto& [name, value] : object.values) {
            addValue(values, object.path, name, std::move(value));
        }
    }
    addScript(values, applicationScript, library);
    for (const EffectClass* const effect : effectClasses) {
        addScript(values, effect->script, library);
    }
    const std::u8string path = library.u8string();
    addValue(
        values, platform::typeLibraryFileKey(serverTypeLibrary), "",
        platform::stringValue(platform::toWide({reinterpret_cast<const char*>(path.data()), path.size()})));
    return values;
}

HRESULT registerServer() noexcept {
    return platform::publishedCall([] { return ServerEntry().write(); });
}

HRESULT unregisterServer() noexcept {
    return platform::publishedCall([] { return ServerEntry().remove(); });
}

}  // namespace korva::apo
