#include "korva/host/audio_object_library.h"

#include <system_error>

#include "korva/file_path.h"
#include "korva/host/host_error.h"
#include "platform/property_key.h"
#include "platform/published/results.h"

namespace korva::tool {
namespace {

platform::ModuleLibrary loadLibrary(const std::filesystem::path& file, const std::string& name) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        throw HostError("there is no library '" + name + "'; --library says where it is");
    }
    platform::ModuleLibrary library = platform::ModuleLibrary::load(file);
    if (!library) {
        throw HostError("'" + name + "' can't be loaded as a library");
    }
    return library;
}

}  // namespace

AudioObjectLibrary::AudioObjectLibrary(const std::filesystem::path& file,
                                       const std::filesystem::path& knownAs)
    : name(textOfPath(knownAs)),
      library(loadLibrary(file, name)),
      getClassObject(find<GetClassObject>("DllGetClassObject")),
      canUnloadNow(find<Ask>("DllCanUnloadNow")) {}

template <class Function>
Function* AudioObjectLibrary::find(const char* function) const {
    void* const found = library.find(function);
    if (found == nullptr) {
        throw HostError("'" + name + "' is no library of audio objects: it lacks the export '" + function +
                        "'");
    }
    return reinterpret_cast<Function*>(found);
}

platform::Reference<IUnknown> AudioObjectLibrary::createObject(const CLSID& classId) const {
    const std::string words = "'" + name + "' makes no object of the class " + platform::guidText(classId);
    void* found = nullptr;
    throwIfFailed(getClassObject(classId, published::iidOf<IClassFactory>, &found), words);
    const platform::Reference<IClassFactory> factory(static_cast<IClassFactory*>(found));
    void* object = nullptr;
    throwIfFailed(factory->CreateInstance(nullptr, published::iidOf<IUnknown>, &object), words);
    return platform::Reference<IUnknown>(static_cast<IUnknown*>(object));
}

bool AudioObjectLibrary::canUnload() const {
    return canUnloadNow() == published::ok;
}

void AudioObjectLibrary::registerClasses() const {
    throwIfFailed(find<Ask>("DllRegisterServer")(), "'" + name + "' can't register its classes");
}

void AudioObjectLibrary::unregisterClasses() const {
    throwIfFailed(find<Ask>("DllUnregisterServer")(),
                  "'" + name + "' can't take its classes out of the registry");
}

std::filesystem::path ownAudioObjectLibrary() {
    return platform::ownLibraryFolder() / KORVA_LIBRARY_NAME;
}

}  // namespace korva::tool
