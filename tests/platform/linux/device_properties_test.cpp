#include <array>
#include <string>

#include "platform/property_key.h"
#include "platform/property_value.h"
#include "tests/platform/linux/audio_devices_test.h"
#include "tests/support/variants.h"

namespace korva::platform {
namespace {

using test::SeededEndpoint;

constexpr GUID someGuid = {0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};
constexpr PROPERTYKEY someKey = {someGuid, 7};
constexpr PROPERTYKEY otherKey = {someGuid, 8};

class DeviceProperties : public AudioDevicesTest {
protected:
    [[nodiscard]] HeldObject<IPropertyStore> open(DWORD access) const { return storeOf(*device, access); }
    [[nodiscard]] bool hasPropertiesKey() const {
        RegistryKey key;
        return endpoint.key().open("Properties", RegistryAccess::read, key) == 0;
    }
    static DWORD countOf(IPropertyStore& store) {
        DWORD count = 99;
        EXPECT_EQ(store.GetCount(&count), published::ok);
        return count;
    }

    SeededEndpoint endpoint;
    HeldObject<IMMDevice> device = deviceOf(endpoint);
};

TEST_F(DeviceProperties, WithoutTheirKeyTheStoreIsEmptyAndMakesNone) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(countOf(*store), 0U);
    PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey, value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_EMPTY);
    PROPERTYKEY key{};
    EXPECT_EQ(store->GetAt(0, &key), published::invalidArgument);
    EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_FALSE(hasPropertiesKey());
}

TEST_F(DeviceProperties, TheFirstValueMakesTheKey) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(store->SetValue(someKey, test::unsignedVariant(5)), published::ok);
    EXPECT_TRUE(hasPropertiesKey());
    EXPECT_EQ(countOf(*store), 1U);
    PROPERTYKEY key{};
    EXPECT_EQ(store->GetAt(0, &key), published::ok);
    EXPECT_EQ(key, someKey);
}

TEST_F(DeviceProperties, EveryKindThatIsKeptComesBackInAnotherStore) {
    const auto store = open(published::accessReadWrite);
    WideString text = toWide("Ümlaut \360\237\224\212");
    std::array<BYTE, 3> bytes{1, 0, 255};
    WideString first = toWide("a");
    WideString second = toWide("bc");
    std::array<LPWSTR, 2> strings{first.data(), second.data()};
    EXPECT_EQ(store->SetValue({someGuid, 1}, test::unsignedVariant(0xFFFFFFFF)), published::ok);
    EXPECT_EQ(store->SetValue({someGuid, 2}, test::signedVariant(-2)), published::ok);
    EXPECT_EQ(store->SetValue({someGuid, 3}, test::textVariant(text)), published::ok);
    EXPECT_EQ(store->SetValue({someGuid, 4}, test::blobVariant(bytes)), published::ok);
    EXPECT_EQ(store->SetValue({someGuid, 5}, test::listVariant(strings)), published::ok);
    EXPECT_EQ(store->SetValue({someGuid, 6}, test::blobVariant({})), published::ok);
    EXPECT_EQ(store->Commit(), published::ok);

    const auto reader = open(published::accessRead);
    EXPECT_EQ(countOf(*reader), 6U);
    PropertyValue value;
    EXPECT_EQ(reader->GetValue({someGuid, 1}, value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_UI4);
    EXPECT_EQ(value->ulVal, 0xFFFFFFFFU);
    EXPECT_EQ(reader->GetValue({someGuid, 2}, value.out()), published::ok);
    EXPECT_EQ(value->ulVal, 0xFFFFFFFEU);
    EXPECT_EQ(reader->GetValue({someGuid, 3}, value.out()), published::ok);
    ASSERT_EQ(value->vt, VT_LPWSTR);
    EXPECT_EQ(WideString(value->pwszVal), text);
    EXPECT_EQ(reader->GetValue({someGuid, 4}, value.out()), published::ok);
    ASSERT_EQ(value->vt, VT_BLOB);
    ASSERT_EQ(value->blob.cbSize, 3U);
    EXPECT_EQ(value->blob.pBlobData[2], 255);
    EXPECT_EQ(reader->GetValue({someGuid, 5}, value.out()), published::ok);
    ASSERT_EQ(value->calpwstr.cElems, 2U);
    EXPECT_EQ(WideString(value->calpwstr.pElems[1]), second);
    EXPECT_EQ(reader->GetValue({someGuid, 6}, value.out()), published::ok);
    EXPECT_EQ(value->blob.cbSize, 0U);
}

TEST_F(DeviceProperties, TheNullTextIsAnEmptyOne) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(VT_LPWSTR)), published::ok);
    PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey, value.out()), published::ok);
    ASSERT_EQ(value->vt, VT_LPWSTR);
    EXPECT_EQ(WideString(value->pwszVal), WideString());
}

TEST_F(DeviceProperties, EmptyDeletesAValueAndNoOther) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(store->SetValue(someKey, test::unsignedVariant(5)), published::ok);
    EXPECT_EQ(store->SetValue(otherKey, test::unsignedVariant(6)), published::ok);
    EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(VT_EMPTY)), published::ok);
    PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey, value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_EMPTY);
    EXPECT_EQ(countOf(*store), 1U);
}

TEST_F(DeviceProperties, WhatIsNotKeptIsRefused) {
    const auto store = open(published::accessReadWrite);
    for (const VARTYPE kind : {VARTYPE{VT_BOOL}, VARTYPE{VT_R4}, VARTYPE{VT_CLSID}, VARTYPE{0xFFF}}) {
        EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(kind)), published::invalidArgument) << kind;
    }
    PROPVARIANT hollow = test::variantOfKind(VT_BLOB);
    hollow.blob.cbSize = 4;
    EXPECT_EQ(store->SetValue(someKey, hollow), published::invalidArgument);
    EXPECT_EQ(store->SetValue({GUID{}, 7}, test::unsignedVariant(5)), published::invalidArgument);
    EXPECT_FALSE(hasPropertiesKey());
}

TEST_F(DeviceProperties, AStoreDoesWhatItWasOpenedFor) {
    const auto reader = open(published::accessRead);
    const auto writer = open(1);
    EXPECT_EQ(reader->SetValue(someKey, test::unsignedVariant(5)), published::storageAccessDenied);
    EXPECT_EQ(reader->SetValue(someKey, test::variantOfKind(VT_EMPTY)), published::storageAccessDenied);
    EXPECT_EQ(reader->Commit(), published::storageAccessDenied);
    EXPECT_EQ(writer->SetValue(someKey, test::unsignedVariant(5)), published::ok);
    EXPECT_EQ(writer->Commit(), published::ok);
    PropertyValue value;
    EXPECT_EQ(writer->GetValue(someKey, value.out()), published::storageAccessDenied);
    EXPECT_EQ(reader->GetValue(someKey, value.out()), published::ok);
    EXPECT_EQ(value->ulVal, 5U);
    auto* store = reinterpret_cast<IPropertyStore*>(1);
    EXPECT_EQ(device->OpenPropertyStore(3, &store), published::invalidArgument);
    EXPECT_EQ(store, nullptr);
    EXPECT_EQ(device->OpenPropertyStore(0, nullptr), published::nullPointer);
}

TEST_F(DeviceProperties, ValuesOfOtherNamesAndTypesDoNoHarm) {
    RegistryKey key;
    ASSERT_EQ(endpoint.key().create("Properties", RegistryAccess::readWrite, key), 0);
    const std::array<std::byte, 3> bytes{};
    ASSERT_EQ(key.setValue("", registry_type::binary, bytes), 0);
    ASSERT_EQ(key.setValue("no property", registry_type::dword, bytes), 0);
    ASSERT_EQ(key.setValue(KeyToText(someKey), registry_type::dword, bytes), 0);
    ASSERT_EQ(key.setValue(KeyToText(otherKey), 77, bytes), 0);
    const auto store = open(published::accessRead);
    EXPECT_EQ(countOf(*store), 2U);
    PropertyValue value;
    EXPECT_TRUE(published::failed(store->GetValue(someKey, value.out())));
    EXPECT_EQ(value->vt, VT_EMPTY);
    EXPECT_EQ(store->GetValue(otherKey, value.out()), published::notImplemented);
}

TEST_F(DeviceProperties, ARemovedDeviceHasNone) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(store->SetValue(someKey, test::unsignedVariant(5)), published::ok);
    endpoint.remove();
    PropertyValue value;
    DWORD count = 0;
    PROPERTYKEY key{};
    EXPECT_EQ(store->GetValue(someKey, value.out()), published::notFound);
    EXPECT_EQ(store->GetCount(&count), published::notFound);
    EXPECT_EQ(store->GetAt(0, &key), published::notFound);
    EXPECT_EQ(store->SetValue(someKey, test::unsignedVariant(5)), published::notFound);
    EXPECT_EQ(store->SetValue(someKey, test::variantOfKind(VT_EMPTY)), published::notFound);
    EXPECT_EQ(store->Commit(), published::notFound);
}

TEST_F(DeviceProperties, NullPointersAreRefused) {
    const auto store = open(published::accessReadWrite);
    EXPECT_EQ(store->GetValue(someKey, nullptr), published::nullPointer);
    EXPECT_EQ(store->GetCount(nullptr), published::nullPointer);
    EXPECT_EQ(store->GetAt(0, nullptr), published::nullPointer);
}

TEST_F(DeviceProperties, AStoreOutlivesItsDeviceAndTheEnumerator) {
    const auto store = open(published::accessReadWrite);
    device.reset();
    enumerator.reset();
    EXPECT_EQ(store->SetValue(someKey, test::unsignedVariant(5)), published::ok);
    EXPECT_EQ(countOf(*store), 1U);
}

}  // namespace
}  // namespace korva::platform
