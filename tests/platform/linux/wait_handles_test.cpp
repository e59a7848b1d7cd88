// What waiting means for descriptors.
#include "platform/wait_handles.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <system_error>
#include <thread>

namespace korva::platform {
namespace {

struct Pipe {
    Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
    ~Pipe() {
        close(ends[0]);
        closeWriteEnd();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeWriteEnd() {
        if (ends[1] >= 0) {
            close(ends[1]);
            ends[1] = -1;
        }
    }

    std::array<int, 2> ends{-1, -1};
};

TEST(WaitForDescriptors, LetsGoWhenOneIsReadable) {
    const Event never;
    const Pipe pipe;
    const std::array<WaitHandle, 2> handles{never.handle(), pipe.ends[0]};
    EXPECT_EQ(waitForHandles(handles, 0), -1);

    ASSERT_EQ(write(pipe.ends[1], "x", 1), 1);

    EXPECT_EQ(waitForHandles(handles, waitForever), 1);
}

TEST(WaitForDescriptors, LetsGoWhenTheOtherEndIsClosed) {
    Pipe pipe;
    const std::array<WaitHandle, 1> handles{pipe.ends[0]};
    pipe.closeWriteEnd();
    EXPECT_EQ(waitForHandles(handles, waitForever), 0);
}

TEST(WaitForDescriptors, RefusesANegativeOne) {
    Event event;
    event.signal();
    const std::array<WaitHandle, 2> handles{event.handle(), -1};
    EXPECT_THROW(waitForHandles(handles, 0), std::system_error);
}

TEST(WaitForDescriptors, SaysThatAClosedOneIsABadDescriptor) {
    const auto gone = std::make_unique<Event>()->handle();
    try {
        waitForHandles(std::array{gone}, 0);
        FAIL() << "waited for a closed descriptor";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::bad_file_descriptor);
    }
}

std::atomic<int> signalsSeen{0};

void countSignal(int) {
    ++signalsSeen;
}

TEST(WaitForDescriptors, WaitsOnWhenASignalComes) {
    struct sigaction counting {};
    counting.sa_handler = countSignal;
    struct sigaction before {};
    ASSERT_EQ(sigaction(SIGUSR1, &counting, &before), 0);
    signalsSeen = 0;
    Event event;
    std::atomic<bool> isRunning{false};
    std::atomic<int> result{-2};
    std::thread waiter([&] {
        isRunning = true;
        result = waitForHandles(std::array{event.handle()}, waitForever);
    });
    while (!isRunning) {
        std::this_thread::yield();
    }

    // Each is sent when the one before was handled, so all but perhaps the first fall into the wait.
    const Event never;
    for (int sent = 1; sent <= 5; ++sent) {
        ASSERT_EQ(pthread_kill(waiter.native_handle(), SIGUSR1), 0);
        while (signalsSeen < sent) {
            std::this_thread::yield();
        }
        waitForHandles(std::array{never.handle()}, 5);
    }
    EXPECT_EQ(result, -2);

    event.signal();
    waiter.join();
    EXPECT_EQ(result, 0);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(WaitForDescriptors, WaitsForTheWholeLimitWhenSignalsCome) {
    struct sigaction counting {};
    counting.sa_handler = countSignal;
    struct sigaction before {};
    ASSERT_EQ(sigaction(SIGUSR1, &counting, &before), 0);
    const Event never;
    std::atomic<bool> hasEnded{false};
    std::chrono::steady_clock::duration took{};
    std::thread waiter([&] {
        const auto begin = std::chrono::steady_clock::now();
        waitForHandles(std::array{never.handle()}, 60);
        took = std::chrono::steady_clock::now() - begin;
        hasEnded = true;
    });
    while (!hasEnded) {
        pthread_kill(waiter.native_handle(), SIGUSR1);
        waitForHandles(std::array{never.handle()}, 2);
    }
    waiter.join();
    sigaction(SIGUSR1, &before, nullptr);

    EXPECT_GE(took, std::chrono::milliseconds(60));
    // Begun anew at each signal, the limit would never pass: the time of such a wait is far beyond.
    EXPECT_LE(took, std::chrono::seconds(20));
}

TEST(Event, IsRefusedWhenTheProcessMayOpenNoMore) {
    // The address sanitizer's companion looks at a type when it first meets it, and opens a pipe for that.
    EXPECT_THROW(waitForHandles(std::array<WaitHandle, 1>{-1}, 0), std::system_error);

    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);

    std::error_code error;
    try {
        const Event event;
    } catch (const std::system_error& refusal) {
        error = refusal.code();
    }

    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(error, std::errc::too_many_files_open);
}

TEST(Event, IsNotHandedToOtherPrograms) {
    const Event event;
    EXPECT_EQ(fcntl(event.handle(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

}  // namespace
}  // namespace korva::platform
