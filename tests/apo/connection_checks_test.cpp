#include "apo/connection_checks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/published/results.h"
#include "tests/support/fake_media_type.h"

namespace korva::apo {
namespace {

using published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH;
using published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH;
using published::APO_FLAG_INPLACE;
using published::APO_FLAG_MIXER;
using published::APO_FLAG_NONE;
using published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH;
using test::FakeMediaType;
using test::floatStream;

constexpr std::uint32_t all = APO_FLAG_SAMPLESPERFRAME_MUST_MATCH | APO_FLAG_FRAMESPERSECOND_MUST_MATCH |
                              APO_FLAG_BITSPERSAMPLE_MUST_MATCH;

/// A connection with a format of its own.
struct Connection {
    Connection(std::uint32_t channels, float rate) : type(floatStream(channels, rate)) {
        descriptor.u32MaxFrameCount = 480;
        descriptor.pFormat = &type;
        descriptor.u32Signature = published::connectionDescriptorSignature;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    FakeMediaType type;
    APO_CONNECTION_DESCRIPTOR descriptor{};
};

/// One input and one output that nothing is wrong with, and what is handed over of them.
struct Stream {
    Connection input{2, 48000.0f};
    Connection output{2, 48000.0f};
    std::vector<APO_CONNECTION_DESCRIPTOR*> inputs{&input.descriptor};
    std::vector<APO_CONNECTION_DESCRIPTOR*> outputs{&output.descriptor};

    [[nodiscard]] Connections connections() const {
        return {{static_cast<UINT32>(inputs.size()), inputs.data()},
                {static_cast<UINT32>(outputs.size()), outputs.data()}};
    }
    [[nodiscard]] SharedTraits traits(std::uint32_t flags) const {
        SharedTraits found;
        EXPECT_EQ(readTraits(flags, connections(), found), published::ok);
        return found;
    }
    [[nodiscard]] HRESULT checked(std::uint32_t flags) const {
        return checkDescriptors(flags, traits(flags), connections());
    }
};

TEST(ConnectionArrays, MayBeMissingOnlyWhereNothingIsCounted) {
    Stream stream;
    APO_CONNECTION_DESCRIPTOR* const none[] = {nullptr};
    EXPECT_EQ(checkArrays({{0, nullptr}, {0, nullptr}}), published::ok);
    EXPECT_EQ(checkArrays(stream.connections()), published::ok);
    EXPECT_EQ(checkArrays({{1, nullptr}, stream.connections().outputs}), published::nullPointer);
    EXPECT_EQ(checkArrays({stream.connections().inputs, {1, nullptr}}), published::nullPointer);
    EXPECT_EQ(checkArrays({{1, none}, stream.connections().outputs}), published::nullPointer);
    EXPECT_EQ(checkArrays({stream.connections().inputs, {1, none}}), published::nullPointer);
    EXPECT_EQ(checkArrays({{0, none}, {0, none}}), published::ok);
}

TEST(ConnectionCounts, AreThoseOfTheRecordOnBothSides) {
    APO_REG_PROPERTIES record{};
    record.u32MinInputConnections = 1;
    record.u32MaxInputConnections = 3;
    record.u32MinOutputConnections = 0;
    record.u32MaxOutputConnections = 2;
    const auto checked = [&](UINT32 inputs, UINT32 outputs) {
        return checkCounts(record, {{inputs, nullptr}, {outputs, nullptr}});
    };
    EXPECT_EQ(checked(1, 0), published::ok);
    EXPECT_EQ(checked(3, 2), published::ok);
    for (const auto& [inputs, outputs] : {std::pair{0u, 1u}, {4u, 1u}, {1u, 3u}, {0xFFFFFFFFu, 1u}}) {
        EXPECT_EQ(checked(inputs, outputs), published::connectionCountInvalid) << inputs << ' ' << outputs;
    }
}

TEST(ConnectionTraits, AreOnlyThoseThatTheFlagsAskFor) {
    const Stream stream;
    EXPECT_EQ(stream.traits(APO_FLAG_NONE), SharedTraits());
    EXPECT_EQ(stream.traits(APO_FLAG_SAMPLESPERFRAME_MUST_MATCH), (SharedTraits{.samplesPerFrame = 2}));
    EXPECT_EQ(stream.traits(APO_FLAG_BITSPERSAMPLE_MUST_MATCH),
              (SharedTraits{.bytesPerSampleContainer = 4, .validBitsPerSample = 32}));
    EXPECT_EQ(stream.traits(APO_FLAG_FRAMESPERSECOND_MUST_MATCH),
              (SharedTraits{.framesPerSecond = 48000.0f}));
    EXPECT_EQ(stream.traits(all), (SharedTraits{2, 4, 32, 48000.0f}));
}

TEST(ConnectionTraits, AreTheInputsWhereThereIsOne) {
    Stream stream;
    stream.input.type.stream = floatStream(1, 44100.0f);
    EXPECT_EQ(stream.traits(all), (SharedTraits{1, 4, 32, 44100.0f}));
    stream.inputs.clear();
    EXPECT_EQ(stream.traits(all), (SharedTraits{2, 4, 32, 48000.0f}));
    stream.outputs.clear();
    EXPECT_EQ(stream.traits(all), SharedTraits());
}

TEST(ConnectionTraits, StayAsTheyAreWithoutAFormatThatTells) {
    Stream stream;
    SharedTraits traits{6, 4, 32, 96000.0f};
    stream.input.type.streamResult = published::unspecifiedFailure;
    EXPECT_EQ(readTraits(all, stream.connections(), traits), published::unspecifiedFailure);
    stream.input.descriptor.pFormat = nullptr;
    EXPECT_EQ(readTraits(all, stream.connections(), traits), published::nullPointer);
    EXPECT_EQ(traits, (SharedTraits{6, 4, 32, 96000.0f}));
}

TEST(ConnectionDescriptors, AreCheckedBySignatureThenFormatThenTraits) {
    Stream stream;
    const SharedTraits traits = stream.traits(all);
    const auto checked = [&] { return checkDescriptors(all, traits, stream.connections()); };
    EXPECT_EQ(checked(), published::ok);
    stream.output.type.stream.fFramesPerSecond = 48000.01f;
    EXPECT_EQ(checked(), published::connectionFormatInvalid);
    stream.output.type.streamResult = published::outOfMemory;
    EXPECT_EQ(checked(), published::outOfMemory);
    stream.output.descriptor.pFormat = nullptr;
    EXPECT_EQ(checked(), published::nullPointer);
    stream.output.descriptor.u32Signature = published::connectionPropertySignature;
    EXPECT_EQ(checked(), published::invalidArgument);
    stream.input.descriptor.pFormat = nullptr;  // inputs come first
    EXPECT_EQ(checked(), published::nullPointer);
}

TEST(ConnectionDescriptors, HaveToAgreeInWhatTheFlagsAskForAlone) {
    struct Difference {
        std::uint32_t flag;
        void (*make)(published::UNCOMPRESSEDAUDIOFORMAT&);
    };
    const Difference differences[] = {
        {APO_FLAG_SAMPLESPERFRAME_MUST_MATCH, [](auto& format) { format.dwSamplesPerFrame = 1; }},
        {APO_FLAG_BITSPERSAMPLE_MUST_MATCH, [](auto& format) { format.dwBytesPerSampleContainer = 8; }},
        {APO_FLAG_BITSPERSAMPLE_MUST_MATCH, [](auto& format) { format.dwValidBitsPerSample = 24; }},
        {APO_FLAG_FRAMESPERSECOND_MUST_MATCH, [](auto& format) { format.fFramesPerSecond = 44100.0f; }},
    };
    for (const Difference& difference : differences) {
        Stream stream;
        difference.make(stream.output.type.stream);
        EXPECT_EQ(stream.checked(difference.flag), published::connectionFormatInvalid) << difference.flag;
        EXPECT_EQ(stream.checked(all & ~difference.flag), published::ok) << difference.flag;
    }
}

TEST(ConnectionDescriptors, DontAgreeInARateThatIsNoNumber) {
    Stream stream;
    stream.input.type.stream.fFramesPerSecond = std::numeric_limits<float>::quiet_NaN();
    stream.output.type.stream.fFramesPerSecond = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(stream.checked(all), published::connectionFormatInvalid);
    EXPECT_EQ(stream.checked(all & ~std::uint32_t{APO_FLAG_FRAMESPERSECOND_MUST_MATCH}), published::ok);
}

TEST(ConnectionFrameCounts, LetNoOutputBeShorterThanItsInput) {
    Stream stream;
    const auto checked = [&](std::uint32_t flags) { return checkFrameCounts(flags, stream.connections()); };
    stream.output.descriptor.u32MaxFrameCount = 481;
    EXPECT_EQ(checked(all), published::ok);
    stream.output.descriptor.u32MaxFrameCount = 480;
    EXPECT_EQ(checked(all), published::ok);
    stream.output.descriptor.u32MaxFrameCount = 479;
    EXPECT_EQ(checked(all), published::outputMaxFrameCountInvalid);
}

TEST(ConnectionFrameCounts, AreFreeForMixersAndForThoseThatChangeTheRate) {
    Stream stream;
    stream.output.descriptor.u32MaxFrameCount = 1;
    EXPECT_EQ(checkFrameCounts(all | APO_FLAG_MIXER, stream.connections()), published::ok);
    EXPECT_EQ(checkFrameCounts(APO_FLAG_MIXER, stream.connections()), published::ok);
    EXPECT_EQ(checkFrameCounts(APO_FLAG_SAMPLESPERFRAME_MUST_MATCH, stream.connections()), published::ok);
    stream.outputs.clear();
    EXPECT_EQ(checkFrameCounts(all, stream.connections()), published::ok);
}

/// Two frames of stereo are 16 bytes.
struct TwoBuffers : Stream {
    HRESULT checkedAt(std::uint64_t in, std::uint64_t out, std::uint32_t flags = APO_FLAG_NONE) {
        input.descriptor.pBuffer = in;
        output.descriptor.pBuffer = out;
        input.descriptor.u32MaxFrameCount = 2;
        output.descriptor.u32MaxFrameCount = 2;
        return checkOverlaps(flags, connections());
    }
};

TEST(ConnectionOverlaps, AreTakenToTheByte) {
    TwoBuffers buffers;
    EXPECT_EQ(buffers.checkedAt(1000, 1016), published::ok);
    EXPECT_EQ(buffers.checkedAt(1016, 1000), published::ok);
    EXPECT_EQ(buffers.checkedAt(1000, 1015), published::buffersOverlap);
    EXPECT_EQ(buffers.checkedAt(1015, 1000), published::buffersOverlap);
    EXPECT_EQ(buffers.checkedAt(1000, 1000), published::buffersOverlap);
}

TEST(ConnectionOverlaps, AreNoFaultOfObjectsThatWorkInPlace) {
    TwoBuffers buffers;
    EXPECT_EQ(buffers.checkedAt(1000, 1000, APO_FLAG_INPLACE), published::ok);
}

TEST(ConnectionOverlaps, AreSeenOfAnyInputWithAnyOutput) {
    TwoBuffers buffers;
    Connection more(2, 48000.0f);
    more.descriptor.pBuffer = 5000;
    buffers.inputs.push_back(&more.descriptor);
    EXPECT_EQ(buffers.checkedAt(1000, 5010), published::buffersOverlap);
    EXPECT_EQ(buffers.checkedAt(1000, 3000), published::ok);
}

TEST(ConnectionOverlaps, OfABufferBeyondAllAddressesReachToTheLast) {
    TwoBuffers buffers;
    constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(buffers.checkedAt(last - 10, last - 3), published::buffersOverlap);
    buffers.input.type.stream.dwSamplesPerFrame = 0xFFFFFFFF;
    buffers.input.type.stream.dwBytesPerSampleContainer = 0xFFFFFFFF;
    EXPECT_EQ(buffers.checkedAt(0, last - 3), published::buffersOverlap);
}

TEST(ConnectionOverlaps, CantBeToldOfAFormatThatFails) {
    TwoBuffers buffers;
    buffers.output.type.streamResult = published::unspecifiedFailure;
    EXPECT_EQ(buffers.checkedAt(1000, 3000), published::unspecifiedFailure);
}

}  // namespace
}  // namespace korva::apo
