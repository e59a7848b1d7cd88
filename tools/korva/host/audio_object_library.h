// The library that brings the classes of audio objects, known by what it exports.
#pragma once

#include <filesystem>
#include <string>

#include "platform/counted_object.h"
#include "platform/module_library.h"
#include "platform/published/class_factory.h"

namespace korva::tool {

/// One reference on the library. It goes after all that came from it.  [any, blocks]
class AudioObjectLibrary {
public:
    /// Throws `HostError` for a file that isn't there, is no library, or lacks one of the exports by which
    /// objects are made. `file` is absolute.
    explicit AudioObjectLibrary(const std::filesystem::path& file) : AudioObjectLibrary(file, file) {}
    /// The same for a file that messages call by another name.
    AudioObjectLibrary(const std::filesystem::path& file, const std::filesystem::path& knownAs);

    /// An object of a class, by its class object. Throws `HostError`.
    [[nodiscard]] platform::Reference<IUnknown> createObject(const CLSID& classId) const;

    /// Whether nothing of the library is in use.
    [[nodiscard]] bool canUnload() const;

    /// Has it write its classes into the registry, and take them out again: with an export for each, which
    /// objects do without. Throws `HostError`.
    void registerClasses() const;
    void unregisterClasses() const;

private:
    using GetClassObject = HRESULT STDMETHODCALLTYPE(const CLSID&, const IID&, void**);
    using Ask = HRESULT STDMETHODCALLTYPE();

    template <class Function>
    [[nodiscard]] Function* find(const char* name) const;

    const std::string name;  ///< For messages.
    platform::ModuleLibrary library;
    GetClassObject* getClassObject;
    Ask* canUnloadNow;
};

/// The library's file in the folder of the program that this is linked into.  [any]
[[nodiscard]] std::filesystem::path ownAudioObjectLibrary();

}  // namespace korva::tool
