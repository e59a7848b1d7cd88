#include "bench/framework/futex_ping_pong.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korva::bench {

namespace {

void sleepWhile(std::atomic<std::uint32_t>& word, std::uint32_t value) {
    while (word.load(std::memory_order_acquire) == value) {
        syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
    }
}

// Goes on to the sleep without a look, since the answer can't be there yet.
void sleepAtOnceWhile(std::atomic<std::uint32_t>& word, std::uint32_t value) {
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
    sleepWhile(word, value);
}

void wake(std::atomic<std::uint32_t>& word, std::uint32_t value) {
    word.store(value, std::memory_order_release);
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace

// The first answer comes before any call, and says that the thread is there.
FutexPingPong::FutexPingPong() : thread(&FutexPingPong::answerCalls, this) {
    sleepWhile(pong, 0);
}

FutexPingPong::~FutexPingPong() {
    ends = true;
    wake(ping, ping.load(std::memory_order_relaxed) + 1);
    thread.join();
}

void FutexPingPong::call() {
    const std::uint32_t last = ping.load(std::memory_order_relaxed);
    wake(ping, last + 1);
    sleepAtOnceWhile(pong, last);
}

void FutexPingPong::answerCalls() {
    target = static_cast<pid_t>(syscall(SYS_gettid));
    std::uint32_t answered = 1;
    wake(pong, answered);
    while (true) {
        sleepAtOnceWhile(ping, answered);
        if (ends) {
            return;
        }
        ++counted;
        wake(pong, ++answered);
    }
}

}  // namespace korva::bench
