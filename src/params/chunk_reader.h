// From a preset's property to the parameters of its chunk.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "framework/active_object.h"
#include "params/parameter_set.h"
#include "platform/published/property_interfaces.h"

namespace korva::params {

/// Reads the blob of one chunk from a property store and sets the `PresetValue`s of its parameters. Bad data
/// never reports: whatever can be read counts, the rest stays as it is. A property that is gone changes
/// nothing, so the parameters keep what they had.
class ChunkReader final : public framework::ObjectClass<ChunkReader, framework::ActiveObject> {
public:
    /// `fxId` is the GUID of the effect whose properties are read. The parameters are the same thread's.
    ChunkReader(std::shared_ptr<const PresetChunk> chunk, const GUID& fxId);

    /// Those that the blob is for, in their order. They live as long as the reader.
    [[nodiscard]] const std::vector<Parameter*>& parameters() const noexcept { return chunk->parameters; }

    /// Whether there was a blob of 4 bytes or more. False without a store, for a chunk of no parameters, and
    /// once the reader is closed.  [owner]
    bool Read(IPropertyStore* store);

    /// Posts a `Read` in place of one that waits already; does nothing while one runs, so that a change which
    /// the read itself brings about doesn't begin it anew.  [owner]
    void RequestRead(framework::Ref<IPropertyStore> store);

private:
    void onClose() override;

    void applyBlob(const BLOB& blob);

    std::shared_ptr<const PresetChunk> chunk;
    GUID fxId;
    std::vector<std::uint32_t> sizes;  ///< Of the slices of the blob that is read.
    framework::TaskHandle pendingRead;
    std::uint32_t busy = 0;
};

}  // namespace korva::params
