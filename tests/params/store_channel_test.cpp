#include "params/store_channel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <thread>

#include "framework/ref.h"
#include "tests/params/peer_stream.h"
#include "tests/params/scripted_writer.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/stream_pipe.h"

namespace korva::params {
namespace {

using framework::Ref;
using test::framed;
using test::ScriptedWriter;
using test::StreamPipe;
using test::WriterScript;
using Strings = std::vector<std::string>;

std::span<const std::byte> bytesOf(const std::string& text) {
    return std::as_bytes(std::span(text));
}

Ref<StoreChannel> channelOver(std::unique_ptr<platform::StreamWriter> stream,
                              const StoreChannel::StopHandles& stops = {},
                              const StoreChannel::StopHandles& moreStops = {}) {
    return Ref<StoreChannel>::adopt(new StoreChannel(std::move(stream), stops, moreStops));
}

Ref<StoreChannel> channelTo(WriterScript& script) {
    return channelOver(std::make_unique<ScriptedWriter>(script));
}

Ref<StoreChannel> channelTo(StreamPipe& pipe, const StoreChannel::StopHandles& stops = {},
                            const StoreChannel::StopHandles& moreStops = {}) {
    return channelOver(platform::openStreamWriter(pipe.takeWriteEnd()), stops, moreStops);
}

TEST(StoreChannel, AWriteIsAZeroAndTheData) {
    WriterScript script;
    const Ref<StoreChannel> channel = channelTo(script);
    std::size_t written = 0;
    EXPECT_TRUE(channel->WriteSome(bytesOf("abc"), written));
    EXPECT_EQ(written, 3U) << "the zero isn't counted";
    EXPECT_EQ(script.written, (Strings{framed("abc")}));
}

TEST(StoreChannel, TheRestGoesOutWithAZeroOfItsOwn) {
    WriterScript script;
    script.outcomes = {{.isDone = true, .byteCount = 3}, {.isDone = true, .byteCount = 2}};
    EXPECT_TRUE(channelTo(script)->WriteAll(bytesOf("abcdef")));
    EXPECT_EQ(script.written, (Strings{framed("abcdef"), framed("cdef"), framed("def")}));
}

TEST(StoreChannel, NoProgressIsAFailure) {
    for (const std::size_t byteCount : {0U, 1U}) {
        WriterScript script;
        script.outcomes = {{.isDone = true, .byteCount = byteCount}};
        std::size_t written = 77;
        EXPECT_FALSE(channelTo(script)->WriteSome(bytesOf("abc"), written));
        EXPECT_EQ(written, 77U);

        script.outcomes = {{.isDone = true, .byteCount = byteCount}};
        script.written.clear();
        EXPECT_FALSE(channelTo(script)->WriteAll(bytesOf("abc")));
        EXPECT_EQ(script.written.size(), 1U);
    }
}

TEST(StoreChannel, AFailureEndsAWriteAndIsRemembered) {
    WriterScript script;
    script.outcomes = {{.isDone = true, .byteCount = 2}, {.error = 109}};
    const Ref<StoreChannel> channel = channelTo(script);
    EXPECT_EQ(channel->lastError(), 0U);
    EXPECT_FALSE(channel->WriteAll(bytesOf("abc")));
    EXPECT_EQ(script.written.size(), 2U);
    EXPECT_EQ(channel->lastError(), 109U);
    EXPECT_TRUE(channel->WriteAll(bytesOf("abc")));
    EXPECT_EQ(channel->lastError(), 109U) << "a success takes nothing back";
}

TEST(StoreChannel, AFailureWithoutANumberLeavesTheLastOne) {
    WriterScript script;
    script.outcomes = {{.error = 109}, {.error = 0}};
    const Ref<StoreChannel> channel = channelTo(script);
    EXPECT_FALSE(channel->WriteAll(bytesOf("abc")));
    EXPECT_FALSE(channel->WriteAll(bytesOf("abc")));
    EXPECT_EQ(channel->lastError(), 109U);
}

TEST(StoreChannel, NothingToWriteIsWritten) {
    WriterScript script;
    EXPECT_TRUE(channelTo(script)->WriteAll({}));
    script.isOpen = false;
    EXPECT_TRUE(channelTo(script)->WriteAll({}));
    EXPECT_TRUE(script.written.empty());
}

TEST(StoreChannel, WithoutAStreamEveryWriteFails) {
    WriterScript script;
    script.isOpen = false;
    std::size_t written = 0;
    for (const Ref<StoreChannel>& channel : {channelTo(script), channelOver(nullptr)}) {
        EXPECT_FALSE(channel->WriteSome(bytesOf("abc"), written));
        EXPECT_FALSE(channel->WriteAll(bytesOf("abc")));
        EXPECT_EQ(channel->lastError(), 0U);
    }
    EXPECT_TRUE(script.written.empty());
}

TEST(StoreChannel, ItsBufferGrowsToAPowerOfTwoAndIsUsedAgain) {
    WriterScript script;
    const Ref<StoreChannel> channel = channelTo(script);
    // A zero and 16 bytes need the next power, 32: up to 31 bytes have room in the same buffer.
    for (const std::size_t length : {16U, 1U, 31U, 20U}) {
        EXPECT_TRUE(channel->WriteAll(bytesOf(std::string(length, 'x'))));
    }
    EXPECT_TRUE(std::all_of(script.places.begin(), script.places.end(),
                            [&](const void* place) { return place == script.places[0]; }));
}

TEST(StoreChannel, DataThatNoMemoryHoldsAreAFailureAndNoMore) {
    WriterScript script;
    const Ref<StoreChannel> channel = channelTo(script);
    const std::byte first{1};
    const volatile std::size_t tooMany = std::size_t{1} << 62;  // the next power of two is past any vector's
    std::size_t written = 77;
    EXPECT_FALSE(channel->WriteSome(std::span(&first, tooMany), written));
    EXPECT_EQ(written, 77U);
    EXPECT_TRUE(script.written.empty());
    EXPECT_TRUE(channel->WriteAll(bytesOf("abc")));
}

TEST(StoreChannel, BothListsOfStopsAreWaitedFor) {
    const platform::Event a;
    const platform::Event b;
    const platform::Event c;
    WriterScript script;
    const Ref<StoreChannel> channel =
        channelOver(std::make_unique<ScriptedWriter>(script), {a.handle()}, {b.handle(), c.handle()});
    EXPECT_TRUE(channel->WriteAll(bytesOf("x")));
    EXPECT_EQ(script.stops, (StoreChannel::StopHandles{a.handle(), b.handle(), c.handle()}));
}

TEST(StoreChannel, MoreStopsThanTheSystemWaitsForAreRefused) {
    const platform::Event stop;
    const StoreChannel::StopHandles many(40, stop.handle());
    const StoreChannel::StopHandles rest(platform::maxStopHandles - 40, stop.handle());
    WriterScript script;
    EXPECT_NO_THROW(StoreChannel(std::make_unique<ScriptedWriter>(script), many, rest));
    EXPECT_THROW(StoreChannel(std::make_unique<ScriptedWriter>(script), many, many), std::invalid_argument);
}

TEST(StoreChannel, APeerFindsWhatWasWritten) {
    StreamPipe pipe;
    Ref<StoreChannel> channel = channelTo(pipe);
    EXPECT_TRUE(channel->WriteAll(bytesOf("abc")));
    EXPECT_TRUE(channel->WriteAll(bytesOf("d")));
    EXPECT_EQ(pipe.read(6), framed("abc") + framed("d"));
    channel = nullptr;
    EXPECT_EQ(pipe.readAll(), "") << "the last share closes the stream";
}

TEST(StoreChannel, ASignalledStopDoesNotEndAWriteThatIsTakenAtOnce) {
    StreamPipe pipe;
    platform::Event stop;
    stop.signal();
    const Ref<StoreChannel> channel = channelTo(pipe, {stop.handle()});
    EXPECT_TRUE(channel->WriteAll(bytesOf("abc")));
    EXPECT_EQ(pipe.read(4), framed("abc"));
}

TEST(StoreChannel, AWriteWaitsForItsReader) {
    StreamPipe pipe;
    Ref<StoreChannel> channel = channelTo(pipe);
    const std::string data(StreamPipe::moreThanFits, 'x');
    bool isWritten = false;
    std::thread writer([&] {
        isWritten = channel->WriteAll(bytesOf(data));
        channel = nullptr;
    });
    const std::string read = pipe.readAll();
    writer.join();
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(read.size(), data.size() + 1);
    EXPECT_EQ(read, framed(data));
}

/// A write that nobody reads, which a signal of `stop` has to end.
void expectStopEndsWrite(StreamPipe& pipe, const Ref<StoreChannel>& channel, platform::Event& stop) {
    const std::string data(StreamPipe::moreThanFits, 'x');
    test::OneTimeGate ended;
    std::size_t written = 77;
    bool isWritten = true;
    std::thread writer([&] {
        isWritten = channel->WriteSome(bytesOf(data), written);
        ended.open();
    });
    EXPECT_FALSE(ended.passWithin(std::chrono::milliseconds(50)));
    stop.signal();
    EXPECT_TRUE(ended.pass());
    if (testing::Test::HasFailure()) {
        pipe.closeReadEnd();
    }
    writer.join();
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(written, 77U);
    EXPECT_NE(channel->lastError(), 0U);
}

TEST(StoreChannel, AStopOfTheFirstListEndsAPendingWrite) {
    StreamPipe pipe;
    platform::Event stop;
    const platform::Event other;
    expectStopEndsWrite(pipe, channelTo(pipe, {other.handle(), stop.handle()}, {other.handle()}), stop);
}

TEST(StoreChannel, AStopOfTheSecondListEndsAPendingWrite) {
    StreamPipe pipe;
    platform::Event stop;
    const platform::Event other;
    expectStopEndsWrite(pipe, channelTo(pipe, {other.handle()}, {stop.handle()}), stop);
}

TEST(StoreChannel, AChannelWritesAgainAfterAStop) {
    StreamPipe pipe;
    platform::Event stop;
    Ref<StoreChannel> channel = channelTo(pipe, {stop.handle()});
    expectStopEndsWrite(pipe, channel, stop);
    stop.reset();
    std::string read;
    std::thread reader([&] { read = pipe.readAll(); });
    EXPECT_TRUE(channel->WriteAll(bytesOf("after")));
    channel = nullptr;
    reader.join();
    EXPECT_TRUE(read.ends_with(framed("after")));
}

TEST(StoreChannel, APeerThatIsGoneIsAFailureAndNoMore) {
    StreamPipe pipe;
    const Ref<StoreChannel> channel = channelTo(pipe);
    pipe.closeReadEnd();
    EXPECT_FALSE(channel->WriteAll(bytesOf("abc")));
    EXPECT_NE(channel->lastError(), 0U);
}

TEST(StoreChannel, APeerThatGoesEndsAPendingWrite) {
    StreamPipe pipe;
    const Ref<StoreChannel> channel = channelTo(pipe);
    const std::string data(StreamPipe::moreThanFits, 'x');
    bool isWritten = true;
    std::thread writer([&] { isWritten = channel->WriteAll(bytesOf(data)); });
    EXPECT_EQ(pipe.read(1), std::string(1, '\0'));
    pipe.closeReadEnd();
    writer.join();
    EXPECT_FALSE(isWritten);
    EXPECT_NE(channel->lastError(), 0U);
}

TEST(StoreChannel, WritesOfSeveralThreadsStayWhole) {
    constexpr std::size_t length = 3000;  // of each write, its zero included
    constexpr int writesOfEach = 100;
    StreamPipe pipe;
    Ref<StoreChannel> channel = channelTo(pipe);
    std::string read;
    std::thread reader([&] { read = pipe.readAll(); });
    std::vector<std::thread> writers;
    for (const char letter : {'a', 'b', 'c'}) {
        writers.emplace_back([&channel, letter] {
            const std::string data(length - 1, letter);
            for (int i = 0; i < writesOfEach; ++i) {
                EXPECT_TRUE(channel->WriteAll(bytesOf(data)));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    channel = nullptr;
    reader.join();
    ASSERT_EQ(read.size(), length * 3 * writesOfEach);
    for (std::size_t at = 0; at < read.size(); at += length) {
        ASSERT_EQ(read.substr(at, length), framed(std::string(length - 1, read[at + 1])));
    }
}

}  // namespace
}  // namespace korva::params
