// A process of its own that has audio objects, and asks those of others as a tool does. Each line of standard
// input is a command, and gets a line in answer:
//     hold            makes an audio object, and keeps it; "yes" if it could
//     drop            lets the last one go
//     ask PATH N      writes a number to all requests of an instance's key; the registry's result
//     read PATH NAME  the bytes of a value there; "none" if there is none
#include <array>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/com_apartment.h"
#include "platform/published/class_factory.h"
#include "platform/registry.h"
#include "tests/support/loaded_library.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/system/support/com_pointer.h"
#include "tests/system/support/known_ids.h"

namespace korva::test {
namespace {

constexpr std::array requests = {"CaptureDSPCycleCount", "CaptureDSPFrameCount", "CaptureParamBytesSentByDSP",
                                 "CaptureParamBytesReceivedByDSP", "CaptureLevelMeters"};

platform::RegistryKey keyAt(const std::string& path) {
    platform::RegistryKey key;
    static_cast<void>(platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                          .open(path, platform::RegistryAccess::readWrite, key));
    return key;
}

class Companion {
public:
    std::string answerTo(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        std::string path;
        words >> command >> path;
        if (command == "hold") {
            objects.push_back(made());
            return objects.back() ? "yes" : "no";
        }
        if (command == "drop") {
            objects.pop_back();
            return "yes";
        }
        if (command == "ask") {
            std::uint32_t number = 0;
            words >> number;
            return ask(keyAt(path), number) ? "yes" : "no";
        }
        std::string name;
        words >> name;
        platform::RegistryValue value;
        return command == "read" && keyAt(path).readValue(name, value) == 0 ? hexOf(value.data) : "none";
    }

private:
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID clsid, REFIID id, void** object);

    ComPointer<IUnknown> made() {
        ComPointer<IClassFactory> factory;
        ComPointer<IUnknown> object;
        if (getClassObject(modeClass.clsid, iid::classFactory, factory.receiveAny()) == result::ok) {
            static_cast<void>(factory->CreateInstance(nullptr, iid::unknown, object.receiveAny()));
        }
        return object;
    }

    static bool ask(const platform::RegistryKey& key, std::uint32_t number) {
        bool isAsked = true;
        for (const char* const request : requests) {
            isAsked = setNumber(key, request, number) && isAsked;
        }
        return isAsked;
    }

    const platform::ComApartment apartment;
    LoadedLibrary library{KORVA_LIBRARY};
    GetClassObject* const getClassObject = library.function<GetClassObject>("DllGetClassObject");
    std::vector<ComPointer<IUnknown>> objects;
};

}  // namespace
}  // namespace korva::test

int main() {
    korva::test::Companion companion;
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << companion.answerTo(line) << std::endl;
    }
    return 0;
}
