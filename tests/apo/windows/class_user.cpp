// A host of the server's classes. `class_user`: makes an object of each class by COM, asks it for all its
// interfaces, lets it go, and sees that the library goes too. `class_user absent`: COM must not know the
// classes. Exit code 0 if all is so; else a line tells what isn't.
#include <windows.h>

#include <objbase.h>

#include <array>
#include <cstdio>
#include <string_view>

#include "tests/support/wait_until.h"

namespace {

struct Class {
    const wchar_t* clsid;
    const wchar_t* ownInterface;
};

constexpr std::array<Class, 3> classes = {{
    {L"{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}", L"{CE99F2CF-3CEE-4D7F-B682-74906B40D4AC}"},
    {L"{8F3540DF-18B0-4943-B916-D4A79801587D}", L"{2E7354F1-E611-457C-95CD-BD4178D88363}"},
    {L"{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}", L"{5AC1067F-C44E-47ED-9472-79D1751CA083}"},
}};

constexpr std::array<const wchar_t*, 8> commonInterfaces = {
    L"{00000000-0000-0000-C000-000000000046}",  // IUnknown
    L"{FD7F2B29-24D0-4B5C-B177-592C39F9CA10}",  // IAudioProcessingObject
    L"{0E5ED805-ABA6-49C3-8F9A-2B8C889C4FA8}",  // IAudioProcessingObjectConfiguration
    L"{9E1D6A6D-DDBC-4E95-A4C7-AD64BA37846C}",  // IAudioProcessingObjectRT
    L"{5FA00F27-ADD6-499A-8A9D-6B98521FA75B}",  // IAudioSystemEffects
    L"{BAFE99D2-7436-44CE-9E0E-4D89AFBFFF56}",  // IAudioSystemEffects2
    L"{C58B31CD-FC6A-4255-BC1F-AD29BB0A4A17}",  // IAudioSystemEffects3
    L"{56B0C76F-02FD-4B21-A52E-9F8219FC86E4}",  // IAudioProcessingObjectNotifications
};

GUID guidOf(const wchar_t* text) {
    GUID guid{};
    return SUCCEEDED(CLSIDFromString(text, &guid)) ? guid : GUID{};
}

bool isSo(bool claim, const char* what, HRESULT result = 0) {
    if (!claim) {
        std::printf("class_user: %s, %08lx\n", what, static_cast<unsigned long>(result));
    }
    return claim;
}

bool hasInterface(IUnknown& object, const wchar_t* id) {
    void* found = nullptr;
    const HRESULT result = object.QueryInterface(guidOf(id), &found);
    if (!isSo(SUCCEEDED(result) && found != nullptr, "an interface is missing", result)) {
        return false;
    }
    static_cast<IUnknown*>(found)->Release();
    return true;
}

bool makesObject(const Class& made) {
    void* face = nullptr;
    const HRESULT result =
        CoCreateInstance(guidOf(made.clsid), nullptr, CLSCTX_INPROC_SERVER, guidOf(made.ownInterface), &face);
    if (!isSo(result == S_OK && face != nullptr, "no object of a class", result)) {
        return false;
    }
    auto& object = *static_cast<IUnknown*>(face);
    bool hasAll = true;
    for (const wchar_t* const id : commonInterfaces) {
        hasAll = hasInterface(object, id) && hasAll;
    }
    return isSo(object.Release() == 0, "a reference is left") && hasAll;
}

bool isKnown(const Class& asked) {
    void* face = nullptr;
    return CoCreateInstance(guidOf(asked.clsid), nullptr, CLSCTX_INPROC_SERVER, guidOf(asked.ownInterface),
                            &face) != REGDB_E_CLASSNOTREG;
}

bool isLoaded() {
    return GetModuleHandleW(L"KORVA.dll") != nullptr;
}

/// Objects' threads leave the library last, and COM asks it anew each time.
bool isUnloaded() {
    return korva::test::waitUntil([] {
        CoFreeUnusedLibrariesEx(0, 0);
        return !isLoaded();
    });
}

bool usesClasses() {
    bool isWell = true;
    for (const Class& made : classes) {
        isWell = makesObject(made) && isWell;
    }
    isWell = isSo(isLoaded(), "the objects came from elsewhere") && isWell;
    return isSo(isUnloaded(), "the library stays loaded") && isWell;
}

bool findsNoClass() {
    bool isWell = true;
    for (const Class& asked : classes) {
        isWell = isSo(!isKnown(asked), "a class is still known") && isWell;
    }
    return isWell;
}

}  // namespace

int main(int count, char** words) {
    if (!isSo(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), "no COM")) {
        return 2;
    }
    const bool isAbsent = count > 1 && std::string_view(words[1]) == "absent";
    const bool isWell = isAbsent ? findsNoClass() : usesClasses();
    CoUninitialize();
    return isWell ? 0 : 1;
}
