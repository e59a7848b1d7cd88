#include "params/fx_property_store.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "tests/params/own_store.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

using namespace std::string_view_literals;
using namespace std::string_literals;
using framework::Ref;
using test::OwnStore;
using test::SignalListener;
using test::someKey;
using test::someName;
namespace registry_type = platform::registry_type;
using Strings = std::vector<std::string>;

constexpr auto missing = static_cast<HRESULT>(0x80070002U);
constexpr auto pastTheLast = static_cast<HRESULT>(0x80070103U);

TEST(FxPropertyStore, OpensOnlyAKeyThatIsThere) {
    const test::OwnEndpoint endpoint;
    EXPECT_EQ(FxPropertyStore::Open(endpoint.id(), "User"), nullptr);
    const platform::RegistryKey key = endpoint.makeSet("User");
    const Ref<FxPropertyStore> store = FxPropertyStore::Open(endpoint.id(), "User");
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(FxPropertyStore::Open(endpoint.id(), "Default"), nullptr);
    EXPECT_EQ(store->keyPath, endpoint.setPath("User"));
    EXPECT_EQ(store->endpointId, endpoint.id());
    EXPECT_EQ(store->setName, "User");
    EXPECT_EQ(store->mode, 4U);
    EXPECT_TRUE(store->isAlive.value());
    EXPECT_EQ(store->attachedChannel.value(), nullptr);
}

TEST(FxPropertyStore, ASlashInANameOpensNothing) {
    const OwnStore own;
    for (const char* const slash : {"\\", "/"}) {
        EXPECT_EQ(FxPropertyStore::Open(own.endpoint.id() + slash, "User"), nullptr);
        EXPECT_EQ(FxPropertyStore::Open(slash, "User"), nullptr);
        EXPECT_EQ(FxPropertyStore::Open(own.endpoint.id(), std::string("User") + slash), nullptr);
    }
}

TEST(FxPropertyStore, ALinkOpensNothing) {
    const OwnStore own;
    own.fill("SymbolicLinkValue", 6, "x");
    EXPECT_EQ(FxPropertyStore::Open(own.endpoint.id(), "User"), nullptr);
}

TEST(FxPropertyStore, TheCountIsAddedToWhatWasThere) {
    const OwnStore own;
    DWORD count = 5;
    EXPECT_EQ(own.store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 5U);
    for (unsigned pid = 0; pid < 3; ++pid) {
        own.fill(someName(pid), registry_type::dword, "\1\0\0\0"sv);
    }
    EXPECT_EQ(own.store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 8U);
}

TEST(FxPropertyStore, AllNamesCountUpToOneThatIsTooLong) {
    const OwnStore own;
    own.fill("no key", registry_type::string, ""sv);
    own.fill(std::string(511, 'x'), registry_type::string, ""sv);
    DWORD count = 0;
    EXPECT_EQ(own.store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(own.key.deleteValue("no key"), 0);
    EXPECT_EQ(own.key.deleteValue(std::string(511, 'x')), 0);
    own.fill(std::string(512, 'x'), registry_type::string, ""sv);
    count = 0;
    EXPECT_EQ(own.store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 0U);
}

TEST(FxPropertyStore, KeysComeFromTheNames) {
    const OwnStore own;
    own.fill("{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763},3000 old", registry_type::dword, "\1\0\0\0"sv);
    PROPERTYKEY key{};
    EXPECT_EQ(own.store->GetAt(0, &key), published::ok);
    EXPECT_EQ(key, someKey(3000));
}

TEST(FxPropertyStore, ANameThatIsNoKeyIsRefused) {
    for (const char* const name :
         {"{00000000-0000-0000-0000-000000000000},5", "a name", "{6dcc1ac8-4a3c-4a98-a3a7-f967127d576},5"}) {
        const OwnStore own;
        own.fill(name, registry_type::dword, "\1\0\0\0"sv);
        PROPERTYKEY key = someKey(99);
        EXPECT_EQ(own.store->GetAt(0, &key), published::invalidArgument) << name;
        EXPECT_EQ(key, someKey(99));
    }
}

TEST(FxPropertyStore, ThereIsNoKeyPastTheLast) {
    const OwnStore own;
    PROPERTYKEY key{};
    EXPECT_EQ(own.store->GetAt(0, &key), pastTheLast);
    own.fill(someName(1), registry_type::dword, "\1\0\0\0"sv);
    EXPECT_EQ(own.store->GetAt(1, &key), pastTheLast);
    EXPECT_EQ(own.store->GetAt(0xFFFFFFFF, &key), pastTheLast);
}

TEST(FxPropertyStore, ReadsWhatIsStored) {
    const OwnStore own;
    own.fill(someName(1), registry_type::string, "M\0F\0\0\0"sv);
    own.fill(someName(2), registry_type::dword, "\377\377\377\377"sv);
    own.fill(someName(3), registry_type::binary, std::string(100, 'b'));
    own.fill(someName(4), registry_type::multiString, "a\0\0\0b\0\0\0\0\0"sv);
    platform::PropertyValue value;
    EXPECT_EQ(own.store->GetValue(someKey(1), value.out()), published::ok);
    ASSERT_EQ(value->vt, VT_LPWSTR);
    EXPECT_EQ(platform::toUtf8(value->pwszVal), "MF");
    EXPECT_EQ(own.store->GetValue(someKey(2), value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_UI4);
    EXPECT_EQ(value->ulVal, 0xFFFFFFFFU);
    EXPECT_EQ(own.store->GetValue(someKey(3), value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_BLOB);
    EXPECT_EQ(value->blob.cbSize, 100U);
    EXPECT_EQ(own.store->GetValue(someKey(4), value.out()), published::ok);
    EXPECT_EQ(value->vt, platform::textList);
    EXPECT_EQ(value->calpwstr.cElems, 3U);
}

TEST(FxPropertyStore, AnOldValueIsFreedWhateverTheResult) {
    const OwnStore own;
    own.fill(someName(1), registry_type::string, "a\0\0\0"sv);
    PROPVARIANT value{};
    EXPECT_EQ(own.store->GetValue(someKey(1), &value), published::ok);
    EXPECT_EQ(own.store->GetValue(someKey(1), &value), published::ok);
    EXPECT_EQ(own.store->GetValue(someKey(2), &value), missing);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(FxPropertyStore, AMissingOrUnreadableValueIsAFailure) {
    const OwnStore own;
    own.fill(someName(1), registry_type::qword, "\1\0\0\0\0\0\0\0"sv);
    own.fill(someName(2), registry_type::multiString, "a\0\0"sv);
    platform::PropertyValue value;
    EXPECT_EQ(own.store->GetValue(someKey(0), value.out()), missing);
    EXPECT_EQ(own.store->GetValue(someKey(1), value.out()), published::notImplemented);
    EXPECT_EQ(own.store->GetValue(someKey(2), value.out()), static_cast<HRESULT>(0x8007000DU));
    EXPECT_EQ(value->vt, VT_EMPTY);
}

TEST(FxPropertyStore, AValueThatIsSetGoesToListenersOnly) {
    const OwnStore own;
    own.fill(someName(7), registry_type::dword, "\1\0\0\0"sv);
    SignalListener written(own.store->valueWritten);
    SignalListener deleted(own.store->valueDeleted);
    EXPECT_EQ(own.store->SetValue(someKey(7), test::unsignedVariant(2)), published::ok);
    EXPECT_EQ(own.store->SetValue(someKey(8), test::wideVariant(3)), published::ok);
    EXPECT_EQ(own.stored(someName(7)), "\1\0\0\0"s);
    EXPECT_EQ(own.look(someName(8)), 2);
    EXPECT_EQ(written.heard, (Strings{someName(7), "", someName(8), ""}));
    EXPECT_TRUE(deleted.heard.empty());
}

TEST(FxPropertyStore, TheSameValueSignalsEachTime) {
    const OwnStore own;
    SignalListener written(own.store->valueWritten);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(own.store->SetValue(someKey(7), test::unsignedVariant(2)), published::ok);
    }
    EXPECT_EQ(written.heard, (Strings{someName(7), "", someName(7), ""}));
}

TEST(FxPropertyStore, ADeletedValueGoesToListenersOnly) {
    const OwnStore own;
    own.fill(someName(7), registry_type::dword, "\1\0\0\0"sv);
    SignalListener written(own.store->valueWritten);
    SignalListener deleted(own.store->valueDeleted);
    EXPECT_EQ(own.store->SetValue(someKey(7), test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_EQ(own.stored(someName(7)), "\1\0\0\0"s);
    EXPECT_EQ(deleted.heard, (Strings{someName(7), ""}));
    EXPECT_TRUE(written.heard.empty());
}

TEST(FxPropertyStore, AKindThatIsNotKeptDoesNothing) {
    const OwnStore own;
    SignalListener written(own.store->valueWritten);
    EXPECT_EQ(own.store->SetValue(someKey(7), test::variantOfKind(VT_R4)), published::notImplemented);
    EXPECT_TRUE(written.heard.empty());
}

TEST(FxPropertyStore, OnlyBit3OfItsModePersists) {
    const OwnStore own;
    const Ref<FxPropertyStore> store = own.persistent(own.key);
    EXPECT_EQ(store->mode, 12U);
    SignalListener written(store->valueWritten);
    SignalListener deleted(store->valueDeleted);
    EXPECT_EQ(store->SetValue(someKey(7), test::signedVariant(-1)), published::ok);
    EXPECT_EQ(own.stored(someName(7)), std::string(4, '\377'));
    platform::PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey(7), value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_UI4) << "the sign isn't kept";
    EXPECT_EQ(value->ulVal, 0xFFFFFFFFU);
    EXPECT_EQ(store->SetValue(someKey(7), test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_EQ(own.look(someName(7)), 2);
    EXPECT_EQ(written.heard, (Strings{someName(7), ""}));
    EXPECT_EQ(deleted.heard, (Strings{someName(7), ""}));
}

TEST(FxPropertyStore, PersistedValuesHaveTheTypesOfTheirKinds) {
    const OwnStore own;
    const Ref<FxPropertyStore> store = own.persistent(own.key);
    platform::WideString text = platform::toWide("a");
    std::array<LPWSTR, 2> strings = {text.data(), text.data()};
    std::array<BYTE, 3> bytes = {1, 2, 3};
    struct Case {
        PROPVARIANT value;
        std::uint32_t type;
        std::string data;
    };
    for (const Case& c : {Case{test::textVariant(text), registry_type::string, "a\0\0\0"s},
                          Case{test::blobVariant(bytes), registry_type::binary, "\1\2\3"s},
                          Case{test::listVariant(strings), registry_type::multiString, "a\0\0\0a\0\0\0"s},
                          Case{test::wideVariant(5), registry_type::qword, "\5\0\0\0\0\0\0\0"s}}) {
        EXPECT_EQ(store->SetValue(someKey(c.type), c.value), published::ok);
        platform::RegistryValue value;
        EXPECT_EQ(own.key.readValue(someName(c.type), value), 0);
        EXPECT_EQ(value.type, c.type);
        EXPECT_EQ(own.stored(someName(c.type)), c.data);
    }
    platform::PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey(registry_type::qword), value.out()), published::notImplemented);
    EXPECT_EQ(store->GetValue(someKey(registry_type::multiString), value.out()), published::ok);
    EXPECT_EQ(value->calpwstr.cElems, 2U) << "no empty string was added";
}

TEST(FxPropertyStore, WhatTheRegistryRefusesIsReportedAndNotSignalled) {
    const OwnStore own;
    const Ref<FxPropertyStore> store = own.persistent(own.store->key);  // to read only
    SignalListener written(store->valueWritten);
    SignalListener deleted(store->valueDeleted);
    EXPECT_EQ(store->SetValue(someKey(7), test::unsignedVariant(1)), static_cast<HRESULT>(0x80070005U));
    EXPECT_EQ(own.persistent(own.key)->SetValue(someKey(7), test::variantOfKind(VT_EMPTY)), missing);
    EXPECT_TRUE(written.heard.empty());
    EXPECT_TRUE(deleted.heard.empty());
}

TEST(FxPropertyStore, WriteValueTellsWhyItDoesNot) {
    const OwnStore own;
    EXPECT_EQ(own.store->WriteValue("x", {VT_R4, {}}, true),
              static_cast<platform::RegistryResult>(published::unspecifiedFailure));
    EXPECT_EQ(own.store->WriteValue("x", {VT_EMPTY, {}}, false),
              static_cast<platform::RegistryResult>(published::unspecifiedFailure));
    const Ref<FxPropertyStore> none = own.persistent({});
    EXPECT_EQ(none->WriteValue("x", {VT_BLOB, {}}, true), 6);
    EXPECT_EQ(none->WriteValue("x", {VT_BLOB, {}}, false), 0);
}

/// All calls but SetValue with null pointers: what comes first is told by the result.
void expectInvalidHandle(FxPropertyStore& store) {
    EXPECT_EQ(store.GetCount(nullptr), published::invalidHandle);
    EXPECT_EQ(store.GetAt(0, nullptr), published::invalidHandle);
    EXPECT_EQ(store.GetValue(someKey(1), nullptr), published::invalidHandle);
    EXPECT_EQ(store.SetValue(someKey(1), test::unsignedVariant(1)), published::invalidHandle);
    EXPECT_EQ(store.SetValue(someKey(1), test::variantOfKind(VT_R4)), published::invalidHandle);
    EXPECT_EQ(store.Commit(), published::invalidHandle);
}

TEST(FxPropertyStore, WithoutAKeyNothingGoes) {
    const OwnStore own;
    expectInvalidHandle(*own.persistent({}));
}

TEST(FxPropertyStore, OnceClosedNothingGoes) {
    const OwnStore own;
    SignalListener written(own.store->valueWritten);
    own.store->close();
    expectInvalidHandle(*own.store);
    EXPECT_TRUE(written.heard.empty());
}

TEST(FxPropertyStore, ANullPointerIsRefused) {
    const OwnStore own;
    EXPECT_EQ(own.store->GetCount(nullptr), published::nullPointer);
    EXPECT_EQ(own.store->GetAt(0, nullptr), published::nullPointer);
    EXPECT_EQ(own.store->GetValue(someKey(1), nullptr), published::nullPointer);
}

TEST(FxPropertyStore, CommitBringsTheKeyToTheDisk) {
    const OwnStore own;
    EXPECT_EQ(own.store->Commit(), published::ok);
}

TEST(FxPropertyStore, ADeletedKeyIsReported) {
    const OwnStore own;
    own.fill(someName(1), registry_type::dword, "\1\0\0\0"sv);
    own.endpoint.deleteSet("User");
    platform::PropertyValue value;
    EXPECT_EQ(own.store->GetValue(someKey(1), value.out()), static_cast<HRESULT>(0x800703FAU));
    DWORD count = 3;
    EXPECT_EQ(own.store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 3U);
}

TEST(FxPropertyStore, ItsValuesAreKnownByName) {
    const auto info = FxPropertyStore::classInfo();
    for (const char* const name : {"isAlive", "channel", "valueWritten", "valueDeleted"}) {
        EXPECT_TRUE(info->observableOfName.contains(name)) << name;
    }
}

}  // namespace
}  // namespace korva::params
