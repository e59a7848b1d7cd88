#include "params/property_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "framework/active_object.h"
#include "framework/published_object.h"
#include "platform/last_error.h"
#include "platform/published/results.h"
#include "tests/support/memory_property_store.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

constexpr PROPERTYKEY anyKey = {{1, 2, 3, {}}, 4};

/// Gives one value, or one failure. Texts are copied, since readers free what they get.
class OneValueStore final
    : public framework::PublishedObject<OneValueStore, framework::ActiveObject, IPropertyStore> {
public:
    PROPVARIANT value{};
    std::string text;
    HRESULT result = published::ok;

    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT* out) override {
        *out = value;
        if (value.vt == VT_LPWSTR && !text.empty()) {
            const platform::WideString wide = platform::toWide(text);
            const std::size_t size = (wide.size() + 1) * sizeof(WCHAR);
            out->pwszVal = static_cast<LPWSTR>(CoTaskMemAlloc(size));
            wide.copy(out->pwszVal, wide.size());
            out->pwszVal[wide.size()] = 0;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::notImplemented; }
};

class PropertyReader : public testing::Test {
protected:
    ReadResult readNumber(PROPVARIANT value) {
        store->value = value;
        return ReadU32(store.get(), anyKey, number);
    }

    framework::Ref<OneValueStore> store = framework::create<OneValueStore>();
    std::uint32_t number = 99;
    std::string text = "before";
    std::vector<std::string> texts = {"before"};
};

TEST_F(PropertyReader, NumbersOfUpTo32BitsAreRead) {
    EXPECT_EQ(readNumber(test::unsignedVariant(0xFFFFFFFE)), 0);
    EXPECT_EQ(number, 0xFFFFFFFEU);
    PROPVARIANT value = test::variantOfKind(VT_UI1);
    value.bVal = 0xFE;
    EXPECT_EQ(readNumber(value), 0);
    EXPECT_EQ(number, 0xFEU);
    value = test::variantOfKind(VT_UI2);
    value.uiVal = 0xFFFE;
    EXPECT_EQ(readNumber(value), 0);
    EXPECT_EQ(number, 0xFFFEU);
}

TEST_F(PropertyReader, SignsAreExtended) {
    EXPECT_EQ(readNumber(test::signedVariant(-2)), 0);
    EXPECT_EQ(number, 0xFFFFFFFEU);
    PROPVARIANT value = test::variantOfKind(VT_I1);
    value.cVal = static_cast<char>(-2);
    EXPECT_EQ(readNumber(value), 0);
    EXPECT_EQ(number, 0xFFFFFFFEU);
    value = test::variantOfKind(VT_I2);
    value.iVal = -2;
    EXPECT_EQ(readNumber(value), 0);
    EXPECT_EQ(number, 0xFFFFFFFEU);
}

TEST_F(PropertyReader, AnotherKindIsNoNumberAndIsRemembered) {
    for (const VARTYPE kind : {VT_R4, VT_BOOL, VT_I8, VT_UI8, VT_BLOB, VT_LPWSTR}) {
        number = 99;
        platform::setLastError(0);
        EXPECT_EQ(readNumber(test::variantOfKind(kind)), 1630) << kind;
        EXPECT_EQ(platform::lastError(), 1630U);
        EXPECT_EQ(number, 0U);
    }
}

TEST_F(PropertyReader, NoValueGivesTheLastErrorOfTheThread) {
    platform::setLastError(1168);
    EXPECT_EQ(readNumber(test::variantOfKind(VT_EMPTY)), 1168);
    platform::setLastError(0);
    number = 99;
    EXPECT_EQ(readNumber(test::variantOfKind(VT_EMPTY)), 0);
    EXPECT_EQ(number, 0U) << "then only the default tells";
    platform::setLastError(1168);
    EXPECT_EQ(ReadText(store.get(), anyKey, text), 1168);
    EXPECT_EQ(text, "");
}

TEST_F(PropertyReader, AFailureOfTheStoreIsPassedOn) {
    store->result = static_cast<HRESULT>(0x80070002U);
    EXPECT_EQ(readNumber(test::unsignedVariant(5)), static_cast<HRESULT>(0x80070002U));
    EXPECT_EQ(number, 0U);
    EXPECT_EQ(ReadText(store.get(), anyKey, text), static_cast<HRESULT>(0x80070002U));
    EXPECT_EQ(text, "");
}

TEST_F(PropertyReader, WithoutAStoreThereIsNothing) {
    EXPECT_EQ(ReadU32(nullptr, anyKey, number), published::nullPointer);
    EXPECT_EQ(number, 0U);
    EXPECT_EQ(ReadText(nullptr, anyKey, text), published::nullPointer);
    EXPECT_EQ(text, "");
}

TEST_F(PropertyReader, ATextComesAsUtf8) {
    store->value = test::variantOfKind(VT_LPWSTR);
    store->text = "K\303\266rva \360\237\216\265";
    EXPECT_EQ(ReadText(store.get(), anyKey, text), 0);
    EXPECT_EQ(text, store->text);
}

TEST_F(PropertyReader, ANullTextIsEmpty) {
    store->value = test::variantOfKind(VT_LPWSTR);
    EXPECT_EQ(ReadText(store.get(), anyKey, text), 0);
    EXPECT_EQ(text, "");
}

TEST_F(PropertyReader, AnotherKindIsNoText) {
    store->value = test::unsignedVariant(5);
    platform::setLastError(0);
    EXPECT_EQ(ReadText(store.get(), anyKey, text), 1630);
    EXPECT_EQ(platform::lastError(), 1630U);
    EXPECT_EQ(text, "");
}

TEST_F(PropertyReader, ListsOfTextsComeAsUtf8) {
    const auto memory = test::MemoryPropertyStore::make();
    memory->putTexts(anyKey, {"K\303\266rva", "", "\360\237\216\265"});
    EXPECT_EQ(ReadTexts(memory.get(), anyKey, texts), 0);
    EXPECT_EQ(texts, (std::vector<std::string>{"K\303\266rva", "", "\360\237\216\265"}));
}

TEST_F(PropertyReader, AListOfNothingIsEmpty) {
    store->value = test::listVariant({});
    EXPECT_EQ(ReadTexts(store.get(), anyKey, texts), 0);
    EXPECT_EQ(texts, (std::vector<std::string>{}));
}

TEST_F(PropertyReader, ANullInAListIsAnEmptyText) {
    store->value = test::listVariant({});
    auto* const pointers = static_cast<LPWSTR*>(CoTaskMemAlloc(2 * sizeof(LPWSTR)));
    pointers[0] = nullptr;
    pointers[1] = nullptr;
    store->value.calpwstr.cElems = 2;
    store->value.calpwstr.pElems = pointers;
    EXPECT_EQ(ReadTexts(store.get(), anyKey, texts), 0) << "the reader frees the list";
    EXPECT_EQ(texts, (std::vector<std::string>{"", ""}));
}

TEST_F(PropertyReader, AnotherKindIsNoList) {
    for (const VARTYPE kind : {VT_UI4, VT_LPWSTR, VT_BLOB}) {
        texts = {"before"};
        platform::setLastError(0);
        store->value = test::variantOfKind(kind);
        EXPECT_EQ(ReadTexts(store.get(), anyKey, texts), 1630) << kind;
        EXPECT_EQ(platform::lastError(), 1630U);
        EXPECT_EQ(texts, (std::vector<std::string>{}));
    }
}

TEST_F(PropertyReader, NoListLeavesAnEmptyOne) {
    platform::setLastError(1168);
    store->value = test::variantOfKind(VT_EMPTY);
    EXPECT_EQ(ReadTexts(store.get(), anyKey, texts), 1168);
    EXPECT_EQ(texts, (std::vector<std::string>{}));
    texts = {"before"};
    store->result = static_cast<HRESULT>(0x80070002U);
    EXPECT_EQ(ReadTexts(store.get(), anyKey, texts), static_cast<HRESULT>(0x80070002U));
    EXPECT_EQ(texts, (std::vector<std::string>{}));
    texts = {"before"};
    EXPECT_EQ(ReadTexts(nullptr, anyKey, texts), published::nullPointer);
    EXPECT_EQ(texts, (std::vector<std::string>{}));
}

}  // namespace
}  // namespace korva::params
