#include <gtest/gtest.h>
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korva {
namespace {

struct Releases {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Releases>;

using Names = std::vector<std::wstring>;

/// What the library's type library says of a type.
struct Type {
    TYPEKIND kind{};
    std::wstring id;     ///< All zeros where it has none.
    std::size_t size{};  ///< Of a record, in bytes.
    Names members;       ///< Methods of an interface, fields of a record.
    Names bases;         ///< What an interface is derived from, or a class has.
};

std::wstring textOf(const GUID& guid) {
    wchar_t text[39] = {};
    StringFromGUID2(guid, text, 39);
    return text;
}

std::wstring taken(BSTR text) {
    const std::wstring copy = text == nullptr ? L"" : text;
    SysFreeString(text);
    return copy;
}

std::wstring nameOf(ITypeInfo& type, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr;
    EXPECT_EQ(type.GetDocumentation(member, &name, nullptr, nullptr, nullptr), S_OK);
    return taken(name);
}

Names methodsOf(ITypeInfo& type, UINT count) {
    Names names;
    for (UINT i = 0; i < count; ++i) {
        FUNCDESC* method = nullptr;
        EXPECT_EQ(type.GetFuncDesc(i, &method), S_OK);
        names.push_back(nameOf(type, method->memid));
        type.ReleaseFuncDesc(method);
    }
    return names;
}

Names fieldsOf(ITypeInfo& type, UINT count) {
    Names names;
    for (UINT i = 0; i < count; ++i) {
        VARDESC* field = nullptr;
        EXPECT_EQ(type.GetVarDesc(i, &field), S_OK);
        names.push_back(nameOf(type, field->memid));
        type.ReleaseVarDesc(field);
    }
    return names;
}

Names basesOf(ITypeInfo& type, UINT count) {
    Names names;
    for (UINT i = 0; i < count; ++i) {
        HREFTYPE reference = 0;
        ITypeInfo* base = nullptr;
        EXPECT_EQ(type.GetRefTypeOfImplType(i, &reference), S_OK);
        EXPECT_EQ(type.GetRefTypeInfo(reference, &base), S_OK);
        names.push_back(nameOf(*base));
        base->Release();
    }
    return names;
}

Type typeOf(ITypeInfo& info) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(info.GetTypeAttr(&attributes), S_OK);
    const bool isRecord = attributes->typekind == TKIND_RECORD;
    Type type{.kind = attributes->typekind,
              .id = textOf(attributes->guid),
              .size = attributes->cbSizeInstance,
              .members = isRecord ? fieldsOf(info, attributes->cVars) : methodsOf(info, attributes->cFuncs),
              .bases = basesOf(info, attributes->cImplTypes)};
    info.ReleaseTypeAttr(attributes);
    return type;
}

class ServerTypeLibrary : public testing::Test {
protected:
    void SetUp() override {
        const std::wstring path = std::filesystem::absolute(KORVA_SERVER_LIBRARY).make_preferred().wstring();
        ITypeLib* loaded = nullptr;
        ASSERT_EQ(LoadTypeLib(path.c_str(), &loaded), S_OK);
        library.reset(loaded);
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            ITypeInfo* info = nullptr;
            ASSERT_EQ(library->GetTypeInfo(i, &info), S_OK);
            const Held<ITypeInfo> held(info);
            types[nameOf(*info)] = typeOf(*info);
        }
    }

    void expectInterface(const std::wstring& name, const std::wstring& id, const std::wstring& base,
                         const Names& methods) {
        ASSERT_TRUE(types.contains(name)) << name.c_str();
        const Type& type = types[name];
        EXPECT_EQ(type.kind, TKIND_INTERFACE);
        EXPECT_EQ(type.id, id);
        EXPECT_EQ(type.bases, Names{base});
        EXPECT_EQ(type.members, methods);
    }

    Held<ITypeLib> library;
    std::map<std::wstring, Type> types;
};

TEST_F(ServerTypeLibrary, IsKnownByItsIdentifierVersionAndName) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(textOf(attributes->guid), L"{48E3D58C-375D-4140-8990-8907E4F9418F}");
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    library->ReleaseTLibAttr(attributes);

    BSTR name = nullptr;
    ASSERT_EQ(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(taken(name), L"KORVALib");
}

TEST_F(ServerTypeLibrary, NamesTheClassesAndWhatTheyHave) {
    const std::map<std::wstring, std::wstring> classes = {
        {L"KORVASFX", L"{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}"},
        {L"KORVAMFX", L"{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}"},
        {L"KORVAEFX", L"{8F3540DF-18B0-4943-B916-D4A79801587D}"},
    };
    for (const auto& [name, clsid] : classes) {
        EXPECT_EQ(types[name].kind, TKIND_COCLASS);
        EXPECT_EQ(types[name].id, clsid);
        EXPECT_EQ(types[name].bases, (Names{L"I" + name, L"IAudioSystemEffects", L"IAudioSystemEffects2",
                                            L"IAudioSystemEffects3", L"IAudioProcessingObjectNotifications",
                                            L"IAudioProcessingObjectRT", L"IAudioProcessingObject",
                                            L"IAudioProcessingObjectConfiguration"}));
    }
    EXPECT_EQ(std::count_if(types.begin(), types.end(),
                            [](const auto& type) { return type.second.kind == TKIND_COCLASS; }),
              3);
}

TEST_F(ServerTypeLibrary, NamesTheOwnInterfaces) {
    expectInterface(L"IKORVASFX", L"{5AC1067F-C44E-47ED-9472-79D1751CA083}", L"IUnknown", {});
    expectInterface(L"IKORVAMFX", L"{CE99F2CF-3CEE-4D7F-B682-74906B40D4AC}", L"IUnknown", {});
    expectInterface(L"IKORVAEFX", L"{2E7354F1-E611-457C-95CD-BD4178D88363}", L"IUnknown", {});
}

TEST_F(ServerTypeLibrary, NamesTheEnginesInterfaces) {
    expectInterface(L"IAudioMediaType", L"{4E997F73-B71F-4798-873B-ED7DFCF15B4D}", L"IUnknown",
                    {L"IsCompressedFormat", L"IsEqual", L"GetAudioFormat", L"GetUncompressedAudioFormat"});
    expectInterface(L"IAudioProcessingObject", L"{FD7F2B29-24D0-4B5C-B177-592C39F9CA10}", L"IUnknown",
                    {L"Reset", L"GetLatency", L"GetRegistrationProperties", L"Initialize",
                     L"IsInputFormatSupported", L"IsOutputFormatSupported", L"GetInputChannelCount"});
    expectInterface(L"IAudioProcessingObjectConfiguration", L"{0E5ED805-ABA6-49C3-8F9A-2B8C889C4FA8}",
                    L"IUnknown", {L"LockForProcess", L"UnlockForProcess"});
    expectInterface(L"IAudioProcessingObjectRT", L"{9E1D6A6D-DDBC-4E95-A4C7-AD64BA37846C}", L"IUnknown",
                    {L"APOProcess", L"CalcInputFrames", L"CalcOutputFrames"});
    expectInterface(L"IAudioSystemEffects", L"{5FA00F27-ADD6-499A-8A9D-6B98521FA75B}", L"IUnknown", {});
    expectInterface(L"IAudioSystemEffects2", L"{BAFE99D2-7436-44CE-9E0E-4D89AFBFFF56}",
                    L"IAudioSystemEffects", {L"GetEffectsList"});
    expectInterface(L"IAudioSystemEffects3", L"{C58B31CD-FC6A-4255-BC1F-AD29BB0A4A17}",
                    L"IAudioSystemEffects2",
                    {L"GetControllableSystemEffectsList", L"SetAudioSystemEffectState"});
    expectInterface(L"IAudioProcessingObjectNotifications", L"{56B0C76F-02FD-4B21-A52E-9F8219FC86E4}",
                    L"IUnknown", {L"GetApoNotificationRegistrationInfo", L"HandleNotification"});
}

TEST_F(ServerTypeLibrary, HasTheRecordsAsTheyLieInMemory) {
    const std::map<std::wstring, std::size_t> sizes = {
        {L"APO_CONNECTION_DESCRIPTOR", 40},   {L"APO_CONNECTION_PROPERTY", 24},
        {L"APO_REG_PROPERTIES", 1092},        {L"APOInitBaseStruct", 20},
        {L"APOInitSystemEffects", 56},        {L"APOInitSystemEffects2", 88},
        {L"APOInitSystemEffects3", 80},       {L"UNCOMPRESSEDAUDIOFORMAT", 36},
        {L"AUDIO_SYSTEMEFFECT", 24},          {L"APO_NOTIFICATION", 72},
        {L"APO_NOTIFICATION_DESCRIPTOR", 32},
    };
    for (const auto& [name, size] : sizes) {
        EXPECT_EQ(types[name].kind, TKIND_RECORD) << std::string(name.begin(), name.end());
        EXPECT_EQ(types[name].size, size) << std::string(name.begin(), name.end());
    }
}

}  // namespace
}  // namespace korva
