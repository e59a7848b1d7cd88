// What writing means for descriptors, and for the signal of a pipe that nobody reads.
#include "platform/stream_write.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <memory>
#include <string>
#include <thread>

#include "tests/support/one_time_gate.h"
#include "tests/support/stream_pipe.h"
#include "tests/support/wait_until.h"

namespace korva::platform {
namespace {

using test::StreamPipe;

std::span<const std::byte> bytesOf(const std::string& text) {
    return std::as_bytes(std::span(text));
}

/// Counts the signals of a kind that the process hears. One at a time.
class HeardSignals {
public:
    explicit HeardSignals(int signalToHear) : number(signalToHear) {
        count = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { ++count; };  // without SA_RESTART: calls that wait are interrupted
        EXPECT_EQ(sigaction(number, &action, &before), 0);
    }
    ~HeardSignals() { sigaction(number, &before, nullptr); }
    HeardSignals(const HeardSignals&) = delete;
    HeardSignals& operator=(const HeardSignals&) = delete;

    static int heard() { return count; }

private:
    static std::atomic<int> count;

    const int number;
    struct sigaction before {};
};
std::atomic<int> HeardSignals::count{0};

/// Keeps a signal from this thread.
class BlockedSignal {
public:
    explicit BlockedSignal(int number) {
        sigemptyset(&blocked);
        sigaddset(&blocked, number);
        EXPECT_EQ(pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
    }
    ~BlockedSignal() {
        takeWaiting();
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    BlockedSignal(const BlockedSignal&) = delete;
    BlockedSignal& operator=(const BlockedSignal&) = delete;

    /// Whether one waited, which is gone then.
    bool takeWaiting() {
        const timespec noTime{};
        return sigtimedwait(&blocked, nullptr, &noTime) > 0;
    }

private:
    sigset_t blocked{};
    sigset_t before{};
};

bool isBlockedHere(int number) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

class DescriptorWriting : public testing::Test {
protected:
    StreamPipe pipe;
    std::unique_ptr<StreamWriter> writer = openStreamWriter(pipe.takeWriteEnd());
};

TEST_F(DescriptorWriting, NobodyHearsOfAPipeThatNobodyReads) {
    const HeardSignals heard(SIGPIPE);
    pipe.closeReadEnd();
    EXPECT_EQ(writer->write(bytesOf("abc"), {}).error, static_cast<std::uint32_t>(EPIPE));
    EXPECT_EQ(HeardSignals::heard(), 0);
    EXPECT_FALSE(isBlockedHere(SIGPIPE));
}

TEST_F(DescriptorWriting, ASignalThatWasBlockedStaysSoAndNoneWaits) {
    BlockedSignal blocked(SIGPIPE);
    pipe.closeReadEnd();
    EXPECT_FALSE(writer->write(bytesOf("abc"), {}).isDone);
    EXPECT_TRUE(isBlockedHere(SIGPIPE));
    EXPECT_FALSE(blocked.takeWaiting());
}

TEST_F(DescriptorWriting, ASignalThatWaitedBeforeWaitsAfterwards) {
    BlockedSignal blocked(SIGPIPE);
    pthread_kill(pthread_self(), SIGPIPE);
    pipe.closeReadEnd();
    EXPECT_FALSE(writer->write(bytesOf("abc"), {}).isDone);
    EXPECT_TRUE(blocked.takeWaiting());
}

TEST_F(DescriptorWriting, ASignalThatComesDuringAWriteIsHeardAfterIt) {
    const HeardSignals heard(SIGPIPE);
    const std::string data(StreamPipe::moreThanFits, 'x');
    test::OneTimeGate mayEnd;
    StreamWrite write;
    std::thread writing([&] {
        write = writer->write(bytesOf(data), {});
        EXPECT_TRUE(mayEnd.pass());  // an ended thread can't be sent a signal
    });
    EXPECT_EQ(pipe.read(1), "x");
    pthread_kill(writing.native_handle(), SIGPIPE);
    EXPECT_EQ(pipe.read(data.size() - 1).size(), data.size() - 1);
    EXPECT_TRUE(test::waitUntil([] { return HeardSignals::heard() == 1; }));
    mayEnd.open();
    writing.join();
    EXPECT_TRUE(write.isDone);
}

TEST_F(DescriptorWriting, AnInterruptedWriteGoesOn) {
    const HeardSignals heard(SIGUSR1);
    const std::string data(StreamPipe::moreThanFits, 'x');
    const Event stop;
    test::OneTimeGate mayEnd;
    StreamWrite write;
    std::thread writing([&] {
        write = writer->write(bytesOf(data), std::array{stop.handle()});
        if (!write.isDone) {
            writer.reset();  // or the test would read without end
        }
        EXPECT_TRUE(mayEnd.pass());
    });
    EXPECT_EQ(pipe.read(1), "x");
    for (int i = 1; i <= 5; ++i) {
        pthread_kill(writing.native_handle(), SIGUSR1);
        EXPECT_TRUE(test::waitUntil([&] { return HeardSignals::heard() == i; }));
    }
    EXPECT_EQ(pipe.read(data.size() - 1).size(), data.size() - 1);
    mayEnd.open();
    writing.join();
    EXPECT_TRUE(write.isDone);
    EXPECT_EQ(write.byteCount, data.size());
}

TEST(DescriptorWriter, NeverBlocksThoseThatShareTheStream) {
    StreamPipe pipe;
    const int shared = pipe.takeWriteEnd();
    const int copy = dup(shared);
    ASSERT_GE(copy, 0);
    EXPECT_EQ(fcntl(copy, F_GETFL) & O_NONBLOCK, 0);
    const std::unique_ptr<StreamWriter> writer = openStreamWriter(shared);
    EXPECT_NE(fcntl(copy, F_GETFL) & O_NONBLOCK, 0);
    close(copy);
}

TEST(DescriptorWriter, AnyOtherFailureIsTheSystems) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    const StreamWrite write = openStreamWriter(full)->write(bytesOf("abc"), {});
    EXPECT_FALSE(write.isDone);
    EXPECT_EQ(write.error, static_cast<std::uint32_t>(ENOSPC));
}

TEST(DescriptorWriter, AStopHandleThatIsClosedEndsAWriteThatWouldWait) {
    StreamPipe pipe;
    const std::unique_ptr<StreamWriter> writer = openStreamWriter(pipe.takeWriteEnd());
    WaitHandle closed = -1;
    {
        const Event event;
        closed = event.handle();
    }
    const std::string data(StreamPipe::moreThanFits, 'x');
    EXPECT_FALSE(writer->write(bytesOf(data), std::array{closed}).isDone);
}

}  // namespace
}  // namespace korva::platform
