#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/published/device_interfaces.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "platform/reference_count.h"
#include "tests/platform/published_slots.h"

// Published interfaces have no destructor in their tables.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace korva::published {
namespace {

using test::expectSlots;
using test::Numbered;
using test::textOf;

constexpr auto invalidParameter = static_cast<HRESULT>(0x80030057U);  // STG_E_INVALIDPARAMETER

TEST(PublishedInterfaces, HaveTheirPublishedIdentifiers) {
    EXPECT_EQ(textOf(iidOf<IUnknown>), "00000000-0000-0000-C000-000000000046");
    EXPECT_EQ(textOf(iidOf<IPropertyStore>), "886D8EEB-8CF2-4446-8D02-CDBA1DBDCF99");
    EXPECT_EQ(textOf(iidOf<IMMDevice>), "D666063F-1587-4E43-81F1-B948E807363F");
    EXPECT_EQ(textOf(iidOf<IAudioSystemEffectsPropertyStore>), "302AE7F9-D7E0-43E4-971B-1F8293613D2A");
    EXPECT_EQ(textOf(iidOf<IAudioSystemEffectsPropertyChangeNotificationClient>),
              "20049D40-56D5-400E-A2EF-385599FEED49");
}

class NumberedStore final : public Numbered<IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return 3; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return 4; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT*) override { return 5; }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return 6; }
    HRESULT STDMETHODCALLTYPE Commit() override { return 7; }
};

class NumberedDevice final : public Numbered<IMMDevice> {
public:
    HRESULT STDMETHODCALLTYPE Activate(REFIID, DWORD, PROPVARIANT*, void**) override { return 3; }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD, IPropertyStore**) override { return 4; }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR*) override { return 5; }
    HRESULT STDMETHODCALLTYPE GetState(DWORD*) override { return 6; }
};

class NumberedEffectsStore final : public Numbered<IAudioSystemEffectsPropertyStore> {
    using Client = IAudioSystemEffectsPropertyChangeNotificationClient;

public:
    HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD, IPropertyStore**) override { return 3; }
    HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD, IPropertyStore**) override { return 4; }
    HRESULT STDMETHODCALLTYPE OpenVolatilePropertyStore(DWORD, IPropertyStore**) override { return 5; }
    HRESULT STDMETHODCALLTYPE ResetUserPropertyStore() override { return 6; }
    HRESULT STDMETHODCALLTYPE ResetVolatilePropertyStore() override { return 7; }
    HRESULT STDMETHODCALLTYPE RegisterPropertyChangeNotification(Client*) override { return 8; }
    HRESULT STDMETHODCALLTYPE UnregisterPropertyChangeNotification(Client*) override { return 9; }
};

class NumberedClient final : public Numbered<IAudioSystemEffectsPropertyChangeNotificationClient> {
public:
    HRESULT STDMETHODCALLTYPE OnPropertyChanged(AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE,
                                                PROPERTYKEY) override {
        return 3;
    }
};

TEST(PublishedInterfaces, HaveTheirMethodsInThePublishedOrder) {
    expectSlots<NumberedStore>(8);
    expectSlots<NumberedDevice>(7);
    expectSlots<NumberedEffectsStore>(10);
    expectSlots<NumberedClient>(4);
}

TEST(PublishedInterfaces, NumberTheKindsOfEffectStores) {
    EXPECT_EQ(std::uint32_t{AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_DEFAULT}, 0u);
    EXPECT_EQ(std::uint32_t{AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER}, 1u);
    EXPECT_EQ(std::uint32_t{AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_VOLATILE}, 2u);
}

/// Eight bytes of a variant, at an offset.
std::uint64_t wordAt(const PROPVARIANT& value, std::size_t offset) {
    std::uint64_t word = 0;
    std::memcpy(&word, reinterpret_cast<const std::byte*>(&value) + offset, sizeof(word));
    return word;
}

std::uint64_t addressOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

TEST(PropertyVariant, LiesInMemoryAsPublished) {
    PROPVARIANT value;
    PropVariantInit(&value);
    value.vt = VT_UI8;
    value.uhVal.QuadPart = 0x0807060504030201;
    EXPECT_EQ(wordAt(value, 0), VT_UI8);
    EXPECT_EQ(wordAt(value, 8), 0x0807060504030201u);
    EXPECT_EQ(value.bVal, 0x01);
    EXPECT_EQ(value.uiVal, 0x0201);
    EXPECT_EQ(value.ulVal, 0x04030201u);
    EXPECT_EQ(value.hVal.QuadPart, 0x0807060504030201);

    value.blob.cbSize = 5;
    value.blob.pBlobData = reinterpret_cast<BYTE*>(&value);
    EXPECT_EQ(wordAt(value, 8) & 0xFFFFFFFF, 5u);
    EXPECT_EQ(wordAt(value, 16), addressOf(&value));

    value.calpwstr.cElems = 7;
    EXPECT_EQ(wordAt(value, 8) & 0xFFFFFFFF, 7u);
    EXPECT_EQ(addressOf(value.calpwstr.pElems), addressOf(&value));

    value.pwszVal = reinterpret_cast<LPWSTR>(&value);
    EXPECT_EQ(wordAt(value, 8), addressOf(&value));
    EXPECT_EQ(addressOf(value.pszVal), addressOf(&value));
    EXPECT_EQ(addressOf(value.puuid), addressOf(&value));
    EXPECT_EQ(addressOf(value.punkVal), addressOf(&value));
}

TEST(PropertyVariant, IsEmptyAtFirst) {
    PROPVARIANT value;
    std::memset(&value, 0xAA, sizeof(value));
    PropVariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(wordAt(value, 8), 0u);
}

void expectCleared(PROPVARIANT& value) {
    EXPECT_EQ(PropVariantClear(&value), ok) << value.vt;
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(wordAt(value, 8), 0u);
    // What is empty can be cleared again: nothing of it is freed twice.
    EXPECT_EQ(PropVariantClear(&value), ok);
}

PROPVARIANT valueOf(VARTYPE type) {
    PROPVARIANT value;
    PropVariantInit(&value);
    value.vt = type;
    return value;
}

TEST(PropertyVariant, OfANumberIsClearedToNothing) {
    for (const int type : {int{VT_EMPTY}, int{VT_I1}, int{VT_UI1}, int{VT_I2}, int{VT_UI2}, int{VT_I4},
                           int{VT_UI4}, int{VT_I8}, int{VT_UI8}, int{VT_R4}, int{VT_R8}, int{VT_BOOL}}) {
        PROPVARIANT value = valueOf(static_cast<VARTYPE>(type));
        value.uhVal.QuadPart = 0x0807060504030201;
        expectCleared(value);
    }
}

/// Task memory, which a leak checker or an allocator with guards watches until it is freed.
template <class T>
T* taskMemory(std::size_t count) {
    void* memory = CoTaskMemAlloc(count * sizeof(T));
    std::memset(memory, 0, count * sizeof(T));
    return static_cast<T*>(memory);
}

TEST(PropertyVariant, FreesTheMemoryThatItOwns) {
    PROPVARIANT value = valueOf(VT_LPWSTR);
    value.pwszVal = taskMemory<WCHAR>(10);
    expectCleared(value);

    value = valueOf(VT_LPSTR);
    value.pszVal = taskMemory<char>(10);
    expectCleared(value);

    value = valueOf(VT_BLOB);
    value.blob.cbSize = 100;
    value.blob.pBlobData = taskMemory<BYTE>(100);
    expectCleared(value);

    value = valueOf(VT_CLSID);
    value.puuid = taskMemory<CLSID>(1);
    expectCleared(value);
}

TEST(PropertyVariant, FreesEveryTextOfAVectorAndTheVector) {
    for (const ULONG count : {0u, 1u, 3u}) {
        PROPVARIANT value = valueOf(VT_VECTOR | VT_LPWSTR);
        value.calpwstr.cElems = count;
        value.calpwstr.pElems = taskMemory<LPWSTR>(count + 1);
        for (ULONG i = 0; i < count; ++i) {
            value.calpwstr.pElems[i] = taskMemory<WCHAR>(5);
        }
        expectCleared(value);
    }
}

TEST(PropertyVariant, MayOwnNothing) {
    for (const int type : {int{VT_LPWSTR}, int{VT_LPSTR}, int{VT_BLOB}, int{VT_CLSID}, int{VT_UNKNOWN},
                           VT_VECTOR | VT_LPWSTR}) {
        PROPVARIANT value = valueOf(static_cast<VARTYPE>(type));
        expectCleared(value);
    }
    PROPVARIANT texts = valueOf(VT_VECTOR | VT_LPWSTR);
    texts.calpwstr.cElems = 2;
    texts.calpwstr.pElems = taskMemory<LPWSTR>(2);
    expectCleared(texts);
}

class Released final : public Numbered<IUnknown> {
public:
    platform::ReferenceCount STDMETHODCALLTYPE Release() override {
        return static_cast<platform::ReferenceCount>(++releases);
    }
    int releases = 0;
};

TEST(PropertyVariant, ReleasesTheObjectThatItRefersTo) {
    Released object;
    PROPVARIANT value = valueOf(VT_UNKNOWN);
    value.punkVal = &object;
    expectCleared(value);
    EXPECT_EQ(object.releases, 1);
}

TEST(PropertyVariant, OfAKindThatIsUnknownIsRefused) {
    for (const int type : {0xFFF, 0x7777}) {
        PROPVARIANT value = valueOf(static_cast<VARTYPE>(type));
        EXPECT_EQ(PropVariantClear(&value), invalidParameter);
    }
}

TEST(PropertyVariant, MayBeMissing) {
    EXPECT_EQ(PropVariantClear(nullptr), ok);
}

TEST(TaskMemory, GrowsAndKeepsItsContent) {
    auto* memory = taskMemory<char>(4);
    std::memcpy(memory, "abc", 4);
    void* larger = CoTaskMemRealloc(memory, 4096);
    ASSERT_NE(larger, nullptr);
    EXPECT_EQ(std::memcmp(larger, "abc", 4), 0);
    CoTaskMemFree(larger);
    CoTaskMemFree(nullptr);
}

}  // namespace
}  // namespace korva::published
