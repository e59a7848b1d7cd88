// A property store in memory.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "framework/ref.h"
#include "platform/mutex.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"

namespace korva::test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Holds blobs and words by their keys; a missing one is `VT_EMPTY`, as published stores have it. Counted by
/// reference.  [any]
class MemoryPropertyStore final : public IPropertyStore {
public:
    [[nodiscard]] static framework::Ref<MemoryPropertyStore> make() {
        return framework::Ref<MemoryPropertyStore>::adopt(new MemoryPropertyStore);
    }

    void putBlob(REFPROPERTYKEY key, std::span<const std::byte> bytes) {
        const std::lock_guard guard(mutex);
        words.erase(ordered(key));
        blobs[ordered(key)].assign(bytes.begin(), bytes.end());
    }
    void putWord(REFPROPERTYKEY key, std::uint32_t word) {
        const std::lock_guard guard(mutex);
        blobs.erase(ordered(key));
        words[ordered(key)] = word;
    }
    void remove(REFPROPERTYKEY key) {
        const std::lock_guard guard(mutex);
        blobs.erase(ordered(key));
        words.erase(ordered(key));
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
        *value = PROPVARIANT{};
        if (const auto blob = blobs.find(ordered(key)); blob != blobs.end()) {
            value->vt = VT_BLOB;
            value->blob.cbSize = static_cast<ULONG>(blob->second.size());
            value->blob.pBlobData = static_cast<BYTE*>(CoTaskMemAlloc(blob->second.size() + 1));
            std::memcpy(value->blob.pBlobData, blob->second.data(), blob->second.size());
        } else if (const auto word = words.find(ordered(key)); word != words.end()) {
            value->vt = VT_UI4;
            value->ulVal = word->second;
        }
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

private:
    using Ordered = std::pair<std::vector<unsigned char>, DWORD>;

    MemoryPropertyStore() = default;
    ~MemoryPropertyStore() = default;

    static Ordered ordered(REFPROPERTYKEY key) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&key.fmtid);
        return {std::vector(bytes, bytes + sizeof(GUID)), key.pid};
    }

    platform::Mutex mutex;
    std::atomic<ULONG> references{1};
    std::map<Ordered, std::vector<std::byte>> blobs;
    std::map<Ordered, std::uint32_t> words;
};

#pragma GCC diagnostic pop

}  // namespace korva::test
