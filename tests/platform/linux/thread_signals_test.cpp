// Threads of ours, and the signals of the process that they run in.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <system_error>

#include "platform/thread.h"
#include "platform/wait_handles.h"

namespace korva::platform {
namespace {

constexpr std::array faults = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT};

sigset_t ownMask() {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return mask;
}

/// `mask` is where the thread's goes.
void keepOwnMask(void* mask) {
    *static_cast<sigset_t*>(mask) = ownMask();
}

sigset_t maskOfNewThread() {
    sigset_t mask;
    Thread(keepOwnMask, &mask).join();
    return mask;
}

/// `mayEnd` is an event.
void waitForEvent(void* mayEnd) {
    const std::array handles{static_cast<const Event*>(mayEnd)->handle()};
    waitForHandles(handles, waitForever);
}

volatile sig_atomic_t handledCount = 0;
pthread_t handledBy;

void handle(int) {
    handledBy = pthread_self();
    handledCount = handledCount + 1;
}

TEST(ThreadSignals, AreBlockedExceptForThoseOfFaults) {
    const sigset_t mask = maskOfNewThread();

    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGCHLD, SIGALRM, SIGPROF, SIGUSR1,
                             SIGUSR2, SIGWINCH, SIGXFSZ, SIGRTMIN, SIGRTMAX}) {
        EXPECT_EQ(sigismember(&mask, signal), 1) << signal;
    }
    for (const int fault : faults) {
        EXPECT_EQ(sigismember(&mask, fault), 0) << fault;
    }
}

TEST(ThreadSignals, LeaveTheMaskOfTheThreadThatStartsOne) {
    sigset_t some;
    sigemptyset(&some);
    sigaddset(&some, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &some, nullptr);

    static_cast<void>(maskOfNewThread());

    const sigset_t after = ownMask();
    EXPECT_EQ(sigismember(&after, SIGUSR1), 1);
    EXPECT_EQ(sigismember(&after, SIGUSR2), 0);
    EXPECT_EQ(sigismember(&after, SIGINT), 0);
    pthread_sigmask(SIG_UNBLOCK, &some, nullptr);
}

TEST(ThreadSignals, OfTheProcessWaitUntilAThreadOfTheHostTakesThem) {
    Event mayEnd;
    Thread thread(waitForEvent, &mayEnd);
    struct sigaction action {};
    struct sigaction actionBefore {};
    action.sa_handler = &handle;
    ASSERT_EQ(sigaction(SIGUSR1, &action, &actionBefore), 0);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &one, nullptr);

    // No other thread takes it: it is still there for this one.
    ASSERT_EQ(kill(getpid(), SIGUSR1), 0);
    sigset_t waiting;
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGUSR1), 1);
    EXPECT_EQ(handledCount, 0);

    pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
    EXPECT_EQ(handledCount, 1);
    EXPECT_NE(pthread_equal(handledBy, pthread_self()), 0);
    sigaction(SIGUSR1, &actionBefore, nullptr);
    mayEnd.signal();
    thread.join();
}

}  // namespace
}  // namespace korva::platform
