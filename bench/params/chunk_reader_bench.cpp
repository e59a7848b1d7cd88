// Reading a chunk of 2,052 bytes into its parameters, beside copying the bytes and one allocation a slice.
// Two blobs take turns, so that every read changes every parameter.
#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "framework/shared_bytes.h"
#include "params/chunk_reader.h"
#include "params/preset_blob.h"
#include "platform/published/results.h"

namespace {

using namespace korva;

constexpr std::uint32_t chunkBytes = 2052;

/// A layout's chunk of exactly that size, which has the most parameters.
const params::PresetChunk& fullestChunk(const params::ParameterSet& set) {
    const params::PresetChunk* fullest = nullptr;
    for (const params::PresetChunk& chunk : set.chunks()) {
        std::uint32_t bytes = 0;
        for (const std::uint32_t size : chunk.sizes) {
            bytes += size;
        }
        if (bytes == chunkBytes && (fullest == nullptr || chunk.sizes.size() > fullest->sizes.size())) {
            fullest = &chunk;
        }
    }
    return *fullest;
}

std::vector<std::byte> blobOf(const params::PresetChunk& chunk, int fill) {
    std::vector<std::vector<std::byte>> slices;
    for (const std::uint32_t size : chunk.sizes) {
        slices.emplace_back(size, static_cast<std::byte>(fill));
    }
    return *params::makePresetBlob(slices, chunk.sizes);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Gives a copy of the same blob for every key: what a store can't do without.
class BlobStore final : public IPropertyStore {
public:
    explicit BlobStore(std::vector<std::byte> bytes) : blob(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return published::noInterface; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT* value) override {
        value->vt = VT_BLOB;
        value->blob.cbSize = static_cast<ULONG>(blob.size());
        value->blob.pBlobData = static_cast<BYTE*>(CoTaskMemAlloc(blob.size()));
        std::memcpy(value->blob.pBlobData, blob.data(), blob.size());
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

private:
    std::vector<std::byte> blob;
};

#pragma GCC diagnostic pop

void onDispatcher(const std::function<void()>& action) {
    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<params::ChunkReader>());
    worker->runSynchronously(action);
}

void readChunk(benchmark::State& state) {
    onDispatcher([&state] {
        const auto set = params::buildParameterSet(params::allLayouts()[0]);
        const params::PresetChunk& chunk = fullestChunk(*set);
        constexpr GUID effect = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
        std::array stores = {BlobStore(blobOf(chunk, 1)), BlobStore(blobOf(chunk, 2))};
        const auto reader =
            framework::create<params::ChunkReader>(params::shareChunk(set, chunk.index), effect);
        std::size_t turn = 0;
        for (auto _ : state) {
            if (!reader->Read(&stores[turn++ % 2])) {
                state.SkipWithError("the chunk was not read");
            }
        }
    });
}

void copyAndAllocate(benchmark::State& state) {
    const auto set = params::buildParameterSet(params::allLayouts()[0]);
    const params::PresetChunk& chunk = fullestChunk(*set);
    const std::vector<std::byte> blob = blobOf(chunk, 1);
    std::vector<std::byte> copy(blob.size());
    std::vector<std::unique_ptr<std::byte[]>> slices(chunk.sizes.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), blob.data(), blob.size());
        for (std::size_t i = 0; i < slices.size(); ++i) {
            slices[i].reset(new std::byte[chunk.sizes[i]]);
            benchmark::DoNotOptimize(slices[i].get());
        }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(readChunk)->Name("read/korva");
BENCHMARK(copyAndAllocate)->Name("read/copy");

}  // namespace
