// A property store in memory.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/ref.h"
#include "platform/mutex.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "platform/unicode.h"

namespace korva::test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Holds values of any kind by their keys; a missing one is `VT_EMPTY`, as published stores have it. Counted
/// by reference.  [any]
class MemoryPropertyStore final : public IPropertyStore {
public:
    [[nodiscard]] static framework::Ref<MemoryPropertyStore> make() {
        return framework::Ref<MemoryPropertyStore>::adopt(new MemoryPropertyStore);
    }

    void putBlob(REFPROPERTYKEY key, std::span<const std::byte> bytes) {
        put(key, {.blob = {bytes.begin(), bytes.end()}}, VT_BLOB);
    }
    void putWord(REFPROPERTYKEY key, std::uint32_t word) {
        PROPVARIANT value{};
        value.vt = VT_UI4;
        value.ulVal = word;
        putPlain(key, value);
    }
    void putText(REFPROPERTYKEY key, std::string_view text) {
        put(key, {.texts = {platform::toWide(text)}}, VT_LPWSTR);
    }
    void putTexts(REFPROPERTYKEY key, const std::vector<std::string>& texts) {
        Entry entry;
        for (const std::string& text : texts) {
            entry.texts.push_back(platform::toWide(text));
        }
        put(key, std::move(entry), VT_VECTOR | VT_LPWSTR);
    }
    /// One that points at nothing.
    void putPlain(REFPROPERTYKEY key, REFPROPVARIANT value) { put(key, {.value = value}, value.vt); }
    void remove(REFPROPERTYKEY key) {
        const std::lock_guard guard(mutex);
        entries.erase(ordered(key));
    }

    /// How often a value was asked for, whether it is there or not.
    [[nodiscard]] std::uint32_t readsOf(REFPROPERTYKEY key) {
        const std::lock_guard guard(mutex);
        return reads[ordered(key)];
    }
    void forgetReads() {
        const std::lock_guard guard(mutex);
        reads.clear();
    }

    [[nodiscard]] bool isEmpty() {
        const std::lock_guard guard(mutex);
        return entries.empty();
    }

    /// What `SetValue` was called for since the last time, in order.
    [[nodiscard]] std::vector<PROPERTYKEY> newlySet() {
        const std::lock_guard guard(mutex);
        return std::exchange(setKeys, {});
    }

    std::atomic<std::uint32_t> readCount{0};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return published::noInterface;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        const std::lock_guard guard(mutex);
        ++readCount;
        ++reads[ordered(key)];
        *value = PROPVARIANT{};
        if (const auto found = entries.find(ordered(key)); found != entries.end()) {
            copy(found->second, *value);
        }
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT value) override {
        {
            const std::lock_guard guard(mutex);
            setKeys.push_back(key);
        }
        if (value.vt == VT_EMPTY) {
            remove(key);
        } else if (value.vt == VT_BLOB) {
            putBlob(key, std::as_bytes(std::span(value.blob.pBlobData, value.blob.cbSize)));
        } else if (value.vt == VT_LPWSTR) {
            put(key, {.texts = {value.pwszVal}}, VT_LPWSTR);
        } else {
            putPlain(key, value);
        }
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

private:
    using Ordered = std::pair<std::vector<unsigned char>, DWORD>;

    struct Entry {
        PROPVARIANT value{};  ///< The kind, and a plain value itself.
        std::vector<std::byte> blob{};
        std::vector<platform::WideString> texts{};
    };

    MemoryPropertyStore() = default;
    ~MemoryPropertyStore() = default;

    static Ordered ordered(REFPROPERTYKEY key) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&key.fmtid);
        return {std::vector(bytes, bytes + sizeof(GUID)), key.pid};
    }

    void put(REFPROPERTYKEY key, Entry entry, int kind) {
        const std::lock_guard guard(mutex);
        entry.value.vt = static_cast<VARTYPE>(kind);
        entries[ordered(key)] = std::move(entry);
    }

    static LPWSTR copyOf(const platform::WideString& text) {
        const std::size_t size = (text.size() + 1) * sizeof(WCHAR);
        const auto copy = static_cast<LPWSTR>(CoTaskMemAlloc(size));
        std::memcpy(copy, text.c_str(), size);
        return copy;
    }

    static void copy(const Entry& entry, PROPVARIANT& value) {
        value = entry.value;
        if (value.vt == VT_BLOB) {
            value.blob.cbSize = static_cast<ULONG>(entry.blob.size());
            value.blob.pBlobData = static_cast<BYTE*>(CoTaskMemAlloc(entry.blob.size() + 1));
            std::memcpy(value.blob.pBlobData, entry.blob.data(), entry.blob.size());
        } else if (value.vt == VT_LPWSTR) {
            value.pwszVal = copyOf(entry.texts.front());
        } else if (value.vt == (VT_VECTOR | VT_LPWSTR)) {
            value.calpwstr.cElems = static_cast<ULONG>(entry.texts.size());
            value.calpwstr.pElems =
                static_cast<LPWSTR*>(CoTaskMemAlloc((entry.texts.size() + 1) * sizeof(LPWSTR)));
            for (std::size_t i = 0; i < entry.texts.size(); ++i) {
                value.calpwstr.pElems[i] = copyOf(entry.texts[i]);
            }
        }
    }

    platform::Mutex mutex;
    std::atomic<ULONG> references{1};
    std::map<Ordered, Entry> entries;
    std::map<Ordered, std::uint32_t> reads;
    std::vector<PROPERTYKEY> setKeys;
};

#pragma GCC diagnostic pop

}  // namespace korva::test
