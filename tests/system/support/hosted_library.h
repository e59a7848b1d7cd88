// The library, loaded by path as a host does.
#pragma once

#include <filesystem>
#include <string>

#include "platform/com_apartment.h"
#include "platform/published/class_factory.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"
#include "tests/system/support/com_pointer.h"
#include "tests/system/support/known_ids.h"

namespace korva::test {

/// A copy of the library in a folder of its own, where it finds no module but those that are put there. At
/// its end nobody holds anything of the library, and it unloads; both is asserted.
class HostedLibrary {
public:
    HostedLibrary();
    ~HostedLibrary();
    HostedLibrary(const HostedLibrary&) = delete;
    HostedLibrary& operator=(const HostedLibrary&) = delete;

    /// Puts a DSP module beside the library.
    void putModule(const std::filesystem::path& module, const std::string& name) const;
    /// The recorder under each name that a module can have.
    void putRecorders() const;

    // The library's functions.
    [[nodiscard]] HRESULT getClassObject(REFCLSID clsid, REFIID id, void** object) const {
        return classObjectGetter(clsid, id, object);
    }
    [[nodiscard]] HRESULT canUnloadNow() const { return unloadTest(); }

    [[nodiscard]] ComPointer<IClassFactory> classObject(const ClassFacts& facts) const;
    /// A new object's face.
    template <class Interface = IUnknown>
    [[nodiscard]] ComPointer<Interface> make(const ClassFacts& facts, REFIID id = iid::unknown) const {
        ComPointer<Interface> made;
        const ComPointer<IClassFactory> factory = classObject(facts);
        static_cast<void>(factory->CreateInstance(nullptr, id, made.receiveAny()));
        return made;
    }

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return file; }
    [[nodiscard]] const std::filesystem::path& folder() const noexcept { return home.path(); }

private:
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID clsid, REFIID id, void** object);
    using CanUnloadNow = HRESULT STDMETHODCALLTYPE();

    const platform::ComApartment apartment;
    const OwnFolder home;
    const std::filesystem::path file;
    LoadedLibrary library;
    GetClassObject* const classObjectGetter;
    CanUnloadNow* const unloadTest;
};

}  // namespace korva::test
