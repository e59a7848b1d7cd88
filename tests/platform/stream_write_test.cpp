#include "platform/stream_write.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/one_time_gate.h"
#include "tests/support/stream_pipe.h"

namespace korva::platform {
namespace {

using test::StreamPipe;
using Stops = std::vector<WaitHandle>;

std::span<const std::byte> bytesOf(const std::string& text) {
    return std::as_bytes(std::span(text));
}

/// Bytes of which no run is like the next, so that one that is lost or comes twice shows.
std::string varied(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 2654435761U) >> 13);
    }
    return bytes;
}

/// One write on a thread of its own.
class OtherWrite {
public:
    OtherWrite(StreamWriter& writer, const std::string& data, const Stops& stops)
        : thread([this, &writer, &data, &stops] {
              result = writer.write(bytesOf(data), stops);
              ended.open();
          }) {}
    ~OtherWrite() {
        if (thread.joinable()) {
            thread.join();
        }
    }
    OtherWrite(const OtherWrite&) = delete;
    OtherWrite& operator=(const OtherWrite&) = delete;

    [[nodiscard]] bool isPending() { return !ended.passWithin(std::chrono::milliseconds(20)); }

    /// Its result, once it has ended. A write that never ends loses its reader, and ends so.
    [[nodiscard]] StreamWrite join(StreamPipe& pipe) {
        if (!ended.pass()) {
            ADD_FAILURE() << "the write doesn't end";
            pipe.closeReadEnd();
        }
        thread.join();
        return result;
    }

private:
    StreamWrite result;
    test::OneTimeGate ended;
    std::thread thread;  // the last member: it uses the others
};

class StreamWriting : public testing::Test {
protected:
    StreamPipe pipe;
    std::unique_ptr<StreamWriter> writer = openStreamWriter(pipe.takeWriteEnd());
    const std::string large = varied(StreamPipe::moreThanFits);
};

TEST_F(StreamWriting, AStreamIsOpen) {
    EXPECT_TRUE(writer->isOpen());
}

TEST_F(StreamWriting, NoStreamIsNotOpen) {
    EXPECT_FALSE(openStreamWriter(pipe.takeWriteEnd())->isOpen()) << "that end was taken before";
}

TEST_F(StreamWriting, TheStreamIsClosedWithItsWriter) {
    writer.reset();
    EXPECT_EQ(pipe.readAll(), "");
}

TEST_F(StreamWriting, WhatFitsIsTakenAtOnce) {
    for (const std::size_t size : {1U, 2U, 1000U}) {
        const std::string data = varied(size);
        const StreamWrite write = writer->write(bytesOf(data), {});
        EXPECT_TRUE(write.isDone);
        EXPECT_EQ(write.byteCount, size);
        EXPECT_EQ(pipe.read(size), data);
    }
}

TEST_F(StreamWriting, ManyWritesFollowOneAnother) {
    std::string sent;
    for (std::size_t i = 1; i <= 200; ++i) {
        const std::string data = varied(i);
        EXPECT_TRUE(writer->write(bytesOf(data), {}).isDone);
        sent += data;
    }
    writer.reset();
    EXPECT_EQ(pipe.readAll(), sent);
}

TEST_F(StreamWriting, AWriteLastsUntilItsReaderHasTakenEnough) {
    const Stops none;
    OtherWrite write(*writer, large, none);
    EXPECT_TRUE(write.isPending());
    EXPECT_EQ(pipe.read(large.size()), large);
    const StreamWrite result = write.join(pipe);
    EXPECT_TRUE(result.isDone);
    EXPECT_EQ(result.byteCount, large.size());
}

TEST_F(StreamWriting, AReaderOfOddPiecesFindsEveryByteInItsPlace) {
    const Stops none;
    OtherWrite write(*writer, large, none);
    std::string read;
    for (std::size_t piece = 1; read.size() < large.size(); piece = piece * 3 % 9973) {
        read += pipe.read(std::min(piece, large.size() - read.size()));
    }
    EXPECT_TRUE(write.join(pipe).isDone);
    EXPECT_EQ(read, large);
}

TEST_F(StreamWriting, AStopThatIsSignalledDoesNotEndAWriteThatIsTakenAtOnce) {
    Event stop;
    stop.signal();
    const StreamWrite write = writer->write(bytesOf("abc"), Stops{stop.handle()});
    EXPECT_TRUE(write.isDone);
    EXPECT_EQ(write.byteCount, 3U);
    EXPECT_EQ(pipe.read(3), "abc");
}

TEST_F(StreamWriting, AStopThatIsSignalledBeforeEndsAWriteThatWouldWait) {
    Event stop;
    stop.signal();
    const StreamWrite write = writer->write(bytesOf(large), Stops{stop.handle()});
    EXPECT_FALSE(write.isDone);
    EXPECT_NE(write.error, 0U);
}

TEST_F(StreamWriting, AStopInTheMiddleLeavesTheBeginningOfTheData) {
    Event stop;
    const Stops stops{stop.handle()};
    OtherWrite write(*writer, large, stops);
    std::string read = pipe.read(100);
    EXPECT_TRUE(write.isPending());
    stop.signal();
    const StreamWrite result = write.join(pipe);
    EXPECT_FALSE(result.isDone);
    EXPECT_NE(result.error, 0U);

    writer.reset();
    read += pipe.readAll();
    EXPECT_LT(read.size(), large.size());
    EXPECT_TRUE(large.starts_with(read));
}

TEST_F(StreamWriting, EachOfAsManyStopsAsThereMayBeEndsAWrite) {
    std::array<Event, maxStopHandles> events;
    Stops stops;
    for (const Event& event : events) {
        stops.push_back(event.handle());
    }
    for (const std::size_t index : {std::size_t{0}, maxStopHandles / 2, maxStopHandles - 1}) {
        OtherWrite write(*writer, large, stops);
        EXPECT_TRUE(write.isPending());
        events[index].signal();
        EXPECT_FALSE(write.join(pipe).isDone) << index;
        events[index].reset();
    }
}

TEST_F(StreamWriting, AStopStaysSignalled) {
    Event stop;
    stop.signal();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(writer->write(bytesOf(large), Stops{stop.handle()}).isDone);
    }
}

TEST_F(StreamWriting, AWriteAfterAStoppedOneGoesOutWhole) {
    Event stop;
    stop.signal();
    EXPECT_FALSE(writer->write(bytesOf(large), Stops{stop.handle()}).isDone);
    stop.reset();

    std::string read;
    std::thread reader([&] { read = pipe.readAll(); });
    const StreamWrite write = writer->write(bytesOf("after"), Stops{stop.handle()});
    writer.reset();
    reader.join();
    EXPECT_TRUE(write.isDone);
    EXPECT_EQ(write.byteCount, 5U);
    ASSERT_TRUE(read.ends_with("after"));
    EXPECT_TRUE(large.starts_with(read.substr(0, read.size() - 5)));
}

TEST_F(StreamWriting, WithoutAReaderEveryWriteFailsAndNoMore) {
    pipe.closeReadEnd();
    for (int i = 0; i < 3; ++i) {
        const StreamWrite write = writer->write(bytesOf("abc"), {});
        EXPECT_FALSE(write.isDone);
        EXPECT_NE(write.error, 0U);
    }
    EXPECT_FALSE(writer->write(bytesOf(large), {}).isDone);
    EXPECT_TRUE(writer->isOpen());
}

TEST_F(StreamWriting, AReaderThatGoesEndsAWrite) {
    const Stops none;
    OtherWrite write(*writer, large, none);
    EXPECT_EQ(pipe.read(1), large.substr(0, 1));
    EXPECT_TRUE(write.isPending());
    pipe.closeReadEnd();
    const StreamWrite result = write.join(pipe);
    EXPECT_FALSE(result.isDone);
    EXPECT_NE(result.error, 0U);
}

// Whichever comes first: a write that is done has gone out whole, any other left a beginning, and the system
// doesn't touch the data of either any more.
TEST(StreamWriteRace, AStopThatMeetsTheReaderLeavesNothingHalfTold) {
    for (std::size_t round = 0; round < 40; ++round) {
        StreamPipe pipe;
        std::unique_ptr<StreamWriter> writer = openStreamWriter(pipe.takeWriteEnd());
        const std::string data = varied(200'000);
        Event stop;
        StreamWrite write;
        std::thread writing([&] {
            {
                const std::string gone = data;
                write = writer->write(bytesOf(gone), Stops{stop.handle()});
            }
            writer.reset();
        });
        std::string read = pipe.read(round * 5'000);
        std::thread stopping([&] { stop.signal(); });
        read += pipe.readAll();
        stopping.join();
        writing.join();
        ASSERT_TRUE(data.starts_with(read)) << round;
        ASSERT_TRUE(!write.isDone || read.size() == data.size()) << round;
        ASSERT_TRUE(!write.isDone || write.byteCount == data.size()) << round;
    }
}

}  // namespace
}  // namespace korva::platform
