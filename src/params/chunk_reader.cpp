#include "params/chunk_reader.h"

#include <optional>
#include <span>
#include <utility>

#include "params/effect_keys.h"
#include "params/preset_blob.h"
#include "platform/property_value.h"
#include "platform/published/results.h"

namespace korva::params {
namespace {

/// Counts in `count` while it lives, also when memory runs out meanwhile.
class Counted {
public:
    explicit Counted(std::uint32_t& held) noexcept : count(held) { ++count; }
    ~Counted() { --count; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    std::uint32_t& count;
};

/// Whether it is a blob that has a head. Stores are others', and one may tell a length without contents.
bool isPresetBlob(const PROPVARIANT& value) noexcept {
    return value.vt == VT_BLOB && value.blob.cbSize >= 4 && value.blob.pBlobData != nullptr;
}

}  // namespace

ChunkReader::ChunkReader(std::shared_ptr<const PresetChunk> chunkToRead, const GUID& effect)
    : chunk(std::move(chunkToRead)), fxId(effect) {}

bool ChunkReader::Read(IPropertyStore* store) {
    if (store == nullptr || chunk->parameters.empty() || !isAlive.value()) {
        return false;
    }
    platform::PropertyValue value;
    const PROPERTYKEY key{fxId, effect_property::firstChunk + chunk->index};
    if (published::failed(store->GetValue(key, value.out())) || !isPresetBlob(value.get())) {
        return false;
    }
    const Counted reading(busy);
    applyBlob(value->blob);
    return true;
}

void ChunkReader::applyBlob(const BLOB& blob) {
    sizes = chunk->sizes;
    const std::span bytes(reinterpret_cast<const std::byte*>(blob.pBlobData), blob.cbSize);
    std::optional<std::span<const std::byte>> slices = takeOverrides(bytes, sizes);
    for (std::size_t i = 0; slices && i < chunk->parameters.size(); ++i) {
        const std::optional<std::span<const std::byte>> slice = takeSlice(*slices, sizes[i]);
        if (!slice) {
            return;
        }
        chunk->parameters[i]->PresetValue.set(framework::SharedBytes(*slice));
    }
}

void ChunkReader::RequestRead(framework::Ref<IPropertyStore> store) {
    if (busy != 0) {
        return;
    }
    pendingRead = postTask([self = framework::WeakRef<ChunkReader>(*this), store = std::move(store)] {
        if (const framework::Ref<ChunkReader> reader = self.lock()) {
            reader->Read(store.get());
        }
    });
}

void ChunkReader::onClose() {
    pendingRead = {};
    ActiveObject::onClose();
}

}  // namespace korva::params
