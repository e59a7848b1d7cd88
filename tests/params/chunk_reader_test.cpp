#include "params/chunk_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <vector>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "framework/published_object.h"
#include "params/effect_keys.h"
#include "params/preset_blob.h"
#include "platform/published/results.h"
#include "tests/support/byte_list.h"
#include "tests/support/engines.h"
#include "tests/support/memory_property_store.h"

namespace korva::params {
namespace {

using framework::create;
using framework::Ref;
using test::bytes;
using test::MemoryPropertyStore;
using test::sharedBytes;

constexpr GUID effect = {0x8F3540DF, 0x18B0, 0x4943, {0xB9, 0x16, 0xD4, 0xA7, 0x98, 0x01, 0x58, 0x7D}};

void countCalls(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                const void*, framework::Reason) {
    ++*static_cast<int*>(context);
}

/// A reader of a chunk of the third engine's parameters, and a store that it reads from.
class ChunkReaderTest : public testing::Test {
protected:
    explicit ChunkReaderTest(std::size_t index = 0)
        : chunkIndex(index),
          chunk(shareChunk(set, index)),
          reader(create<ChunkReader>(chunk, effect)),
          store(MemoryPropertyStore::make()) {}

    [[nodiscard]] PROPERTYKEY key() const {
        return {effect, effect_property::firstChunk + static_cast<DWORD>(chunkIndex)};
    }
    bool readBlob(const std::vector<std::byte>& blob) {
        store->putBlob(key(), blob);
        return reader->Read(store.get());
    }
    [[nodiscard]] Parameter& parameter(std::size_t position) const { return *chunk->parameters[position]; }
    [[nodiscard]] framework::SharedBytes preset(std::size_t position) const {
        return parameter(position).PresetValue.value();
    }

    const std::size_t chunkIndex;
    const std::shared_ptr<const ParameterSet> set = BuildParameterSet(test::thirdEngine);
    const std::shared_ptr<const PresetChunk> chunk;
    const Ref<ChunkReader> reader;
    const Ref<MemoryPropertyStore> store;
};

// The first parameters of the third engine's first chunk are of one byte each.
TEST_F(ChunkReaderTest, SlicesGoToTheParametersInTheirOrder) {
    ASSERT_EQ(chunk->sizes[0], 1U);
    ASSERT_EQ(chunk->sizes[1], 1U);
    EXPECT_TRUE(readBlob(bytes(0, 0, 0, 0, 11, 12)));
    EXPECT_EQ(preset(0), sharedBytes(11));
    EXPECT_EQ(preset(1), sharedBytes(12));
    EXPECT_TRUE(preset(2).empty());
}

TEST_F(ChunkReaderTest, ABlobOf3BytesIsIgnored) {
    EXPECT_FALSE(readBlob(bytes(0, 0, 0)));
}

TEST_F(ChunkReaderTest, ABlobOf4BytesIsTakenAndChangesNothing) {
    EXPECT_TRUE(readBlob(bytes(0, 0, 0, 0)));
    for (std::size_t i = 0; i < chunk->parameters.size(); ++i) {
        EXPECT_TRUE(preset(i).empty());
    }
}

TEST_F(ChunkReaderTest, AShortBlobLeavesLaterParametersAsTheyAre) {
    readBlob(bytes(0, 0, 0, 0, 1, 2, 3));
    EXPECT_TRUE(readBlob(bytes(0, 0, 0, 0, 9)));
    EXPECT_EQ(preset(0), sharedBytes(9));
    EXPECT_EQ(preset(1), sharedBytes(2));
    EXPECT_EQ(preset(2), sharedBytes(3));
}

TEST_F(ChunkReaderTest, ASliceMayBeLongerThanTheDefault) {
    EXPECT_TRUE(readBlob(bytes(0, 0, 1, 0, 0, 0, 3, 0, 1, 2, 3, 4)));
    EXPECT_EQ(preset(0), sharedBytes(1, 2, 3));
    EXPECT_EQ(preset(1), sharedBytes(4));
}

TEST_F(ChunkReaderTest, ASizeOf0EmptiesTheLayerAndTheCatalogueCounts) {
    readBlob(bytes(0, 0, 0, 0, 7));
    EXPECT_TRUE(readBlob(bytes(0, 0, 1, 0, 0, 0, 0, 0)));
    EXPECT_TRUE(preset(0).empty());
    EXPECT_EQ(parameter(0).effective.value(), parameter(0).CatalogueValue.value());
}

TEST_F(ChunkReaderTest, SizesStartFromTheCatalogueAtEachRead) {
    readBlob(bytes(0, 0, 1, 0, 0, 0, 3, 0, 1, 2, 3));
    EXPECT_TRUE(readBlob(bytes(0, 0, 0, 0, 5, 6)));
    EXPECT_EQ(preset(0), sharedBytes(5));
    EXPECT_EQ(preset(1), sharedBytes(6));
}

TEST_F(ChunkReaderTest, EntriesPastTheBlobAreNoneAndSlicesStartThere) {
    EXPECT_TRUE(readBlob(bytes(0, 0, 9, 0, 1, 0, 2, 0, 21)));
    EXPECT_EQ(preset(0), sharedBytes(21));
}

TEST_F(ChunkReaderTest, ADeletedBlobKeepsWhatWasRead) {
    readBlob(bytes(0, 0, 0, 0, 8));
    store->remove(key());
    EXPECT_FALSE(reader->Read(store.get()));
    EXPECT_EQ(preset(0), sharedBytes(8));
}

TEST_F(ChunkReaderTest, AValueOfAnotherKindIsIgnored) {
    store->putWord(key(), 0x01020304);
    EXPECT_FALSE(reader->Read(store.get()));
}

/// Tells the length of a blob, and gives no contents.
class HollowStore final
    : public framework::PublishedObject<HollowStore, framework::ActiveObject, IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT* value) override {
        value->vt = VT_BLOB;
        value->blob.cbSize = 100;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::notImplemented; }
};

TEST_F(ChunkReaderTest, ALengthWithoutContentsIsNoBlob) {
    const Ref<HollowStore> hollow = create<HollowStore>();
    EXPECT_FALSE(reader->Read(hollow.get()));
    EXPECT_TRUE(preset(0).empty());
}

TEST_F(ChunkReaderTest, WithoutAStoreNothingIsRead) {
    EXPECT_FALSE(reader->Read(nullptr));
}

TEST_F(ChunkReaderTest, AClosedReaderReadsNothing) {
    store->putBlob(key(), bytes(0, 0, 0, 0, 1));
    reader->close();
    EXPECT_FALSE(reader->Read(store.get()));
    EXPECT_EQ(store->readCount, 0U);
}

TEST_F(ChunkReaderTest, AChunkOfNoParametersReadsNothing) {
    const Ref<ChunkReader> empty = create<ChunkReader>(std::make_shared<const PresetChunk>(), effect);
    store->putBlob({effect, effect_property::firstChunk}, bytes(0, 0, 0, 0, 1));
    EXPECT_FALSE(empty->Read(store.get()));
    EXPECT_EQ(store->readCount, 0U);
}

TEST_F(ChunkReaderTest, AParameterOfPolicy1TakesItsSliceAndIgnoresIt) {
    std::size_t position = 0;
    while (parameter(position).sourcePolicy != 1) {
        ++position;
    }
    std::vector<std::vector<std::byte>> slices;
    for (const std::uint32_t size : chunk->sizes) {
        slices.emplace_back(size, std::byte{0x5A});
    }
    EXPECT_TRUE(readBlob(makePresetBlob(slices, chunk->sizes).value()));
    EXPECT_FALSE(preset(position).empty());
    EXPECT_EQ(parameter(position).effective.value(), parameter(position).CatalogueValue.value());
    EXPECT_FALSE(preset(position + 1).empty());
}

TEST_F(ChunkReaderTest, TheFirstTwoBytesMeanNothing) {
    EXPECT_TRUE(readBlob(bytes(0xFF, 0xFF, 0, 0, 7)));
    EXPECT_EQ(preset(0), sharedBytes(7));
}

TEST_F(ChunkReaderTest, TheLastOfSeveralEntriesForOnePositionCounts) {
    EXPECT_TRUE(readBlob(bytes(0, 0, 2, 0, 0, 0, 5, 0, 0, 0, 2, 0, 1, 2, 3)));
    EXPECT_EQ(preset(0), sharedBytes(1, 2));
    EXPECT_EQ(preset(1), sharedBytes(3));
}

TEST_F(ChunkReaderTest, AnEntryPastTheLastParameterIsConsumedAndMeansNothing) {
    const auto count = static_cast<int>(chunk->parameters.size());
    EXPECT_TRUE(readBlob(bytes(0, 0, 2, 0, count, 0, 9, 0, 0xFF, 0xFF, 9, 0, 7, 8)));
    EXPECT_EQ(preset(0), sharedBytes(7));
    EXPECT_EQ(preset(1), sharedBytes(8));
}

TEST_F(ChunkReaderTest, AParameterWithoutBytesHasThoseThatAnEntryGivesIt) {
    std::size_t position = 0;
    while (chunk->sizes[position] != 0) {
        ++position;
    }
    EXPECT_TRUE(parameter(position).effective.value().empty());
    std::vector<std::vector<std::byte>> slices;
    for (const std::uint32_t size : chunk->sizes) {
        slices.emplace_back(size);
    }
    slices[position] = bytes(1, 2, 3);
    EXPECT_TRUE(readBlob(makePresetBlob(slices, chunk->sizes).value()));
    EXPECT_EQ(parameter(position).effective.value(), sharedBytes(1, 2, 3));
}

TEST_F(ChunkReaderTest, AReadOfTheSameBytesTellsNobody) {
    readBlob(bytes(0, 0, 0, 0, 7, 8));
    int heard = 0;
    for (Parameter* const each : chunk->parameters) {
        each->effective.subscribe(&heard, nullptr, &countCalls);
    }
    readBlob(bytes(0, 0, 0, 0, 7, 8));
    EXPECT_EQ(heard, 0);
    readBlob(bytes(0, 0, 0, 0, 9, 8));
    EXPECT_EQ(heard, 1);
}

TEST_F(ChunkReaderTest, AShortReadStillTellsOfThoseBeforeTheShortage) {
    int heard = 0;
    parameter(0).effective.subscribe(&heard, nullptr, &countCalls);
    parameter(1).effective.subscribe(&heard, nullptr, &countCalls);
    EXPECT_TRUE(readBlob(bytes(0, 0, 1, 0, 1, 0, 4, 0, 9, 1, 2, 3)));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(preset(0), sharedBytes(9));
    EXPECT_TRUE(preset(1).empty()) << "3 bytes are left of the 4";
}

class LastChunkReaderTest : public ChunkReaderTest {
protected:
    LastChunkReaderTest() : ChunkReaderTest(3) {}
};

TEST_F(LastChunkReaderTest, EachChunkHasAPropertyOfItsOwn) {
    store->putBlob({effect, effect_property::firstChunk}, bytes(0, 0, 0, 0, 1));
    EXPECT_FALSE(reader->Read(store.get()));
    EXPECT_TRUE(readBlob(bytes(0, 0, 0, 0)));
}

/// Asks for another read while one runs.
struct Asker {
    ChunkReader* reader;
    IPropertyStore* store;
    int count = 0;
};

void askAgain(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
              const void*, framework::Reason) {
    Asker& asker = *static_cast<Asker*>(context);
    ++asker.count;
    asker.reader->RequestRead(Ref<IPropertyStore>::share(asker.store));
}

/// The same on a dispatcher's thread, which runs posted reads.
class PostedReadTest : public testing::Test {
protected:
    void onWorker(const std::function<void()>& action) { worker->runSynchronously(action); }

    void SetUp() override {
        onWorker([this] {
            set = BuildParameterSet(test::thirdEngine);
            reader = create<ChunkReader>(shareChunk(set, 0), effect);
        });
    }
    void TearDown() override {
        onWorker([this] {
            reader = nullptr;
            set.reset();
        });
    }
    [[nodiscard]] Parameter& first() const { return *set->chunks()[0].parameters.front(); }
    /// What was posted before has run.
    void drain() {
        reader->postTask([] {}).waitUntilDone();
    }

    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<ChunkReader>());
    std::shared_ptr<const ParameterSet> set;
    Ref<ChunkReader> reader;
    const Ref<MemoryPropertyStore> store = MemoryPropertyStore::make();
    const PROPERTYKEY key{effect, effect_property::firstChunk};
};

TEST_F(PostedReadTest, ARequestReadsLater) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        reader->RequestRead(store);
        EXPECT_EQ(store->readCount, 0U);
    });
    drain();
    EXPECT_EQ(first().PresetValue.read(), sharedBytes(4));
}

TEST_F(PostedReadTest, ARequestTakesThePlaceOfOneThatWaits) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        for (int i = 0; i < 10; ++i) {
            reader->RequestRead(store);
        }
    });
    drain();
    EXPECT_EQ(store->readCount, 1U);
}

TEST_F(PostedReadTest, ARequestDuringAReadIsDropped) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    Asker asker{reader.get(), store.get()};
    onWorker([&] {
        first().PresetValue.subscribe(&asker, nullptr, &askAgain);
        EXPECT_TRUE(reader->Read(store.get()));
    });
    drain();
    EXPECT_EQ(asker.count, 1);
    EXPECT_EQ(store->readCount, 1U);
}

void runOutOfMemory(void*, framework::ListenedTo&, framework::ActiveObject&, const void*, void*, const void*,
                    framework::Reason) {
    throw std::bad_alloc();
}

TEST_F(PostedReadTest, AReadThatRunsOutOfMemoryHindersNoOther) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        first().PresetValue.subscribe(nullptr, nullptr, &runOutOfMemory);
        EXPECT_THROW(reader->Read(store.get()), std::bad_alloc);
        reader->RequestRead(store);
    });
    drain();
    EXPECT_EQ(store->readCount, 2U);
}

TEST_F(PostedReadTest, ARequestWithoutAStoreReadsNothing) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        reader->RequestRead(store);
        reader->RequestRead(nullptr);
    });
    drain();
    EXPECT_EQ(store->readCount, 0U) << "it took the other's place";
}

TEST_F(PostedReadTest, AReaderThatIsGoneReadsNothing) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        reader->RequestRead(store);
        reader = nullptr;
    });
    onWorker([] {});
    EXPECT_EQ(store->readCount, 0U);
}

TEST_F(PostedReadTest, ClosingCancelsTheRequest) {
    store->putBlob(key, bytes(0, 0, 0, 0, 4));
    onWorker([&] {
        reader->RequestRead(store);
        reader->close();
    });
    drain();
    EXPECT_EQ(store->readCount, 0U);
}

}  // namespace
}  // namespace korva::params
