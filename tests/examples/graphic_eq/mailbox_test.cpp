#include "examples/modules/graphic_eq/mailbox.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <thread>

#include "tests/support/one_time_gate.h"

namespace korva::test {
namespace {

using equaliser::Mailbox;

TEST(Mailbox, IsEmptyAtFirst) {
    Mailbox<int> mailbox;
    EXPECT_EQ(mailbox.take(), nullptr);
}

TEST(Mailbox, GivesAValueOnce) {
    Mailbox<int> mailbox;
    mailbox.put(7);
    const int* taken = mailbox.take();
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(*taken, 7);
    EXPECT_EQ(mailbox.take(), nullptr);
}

TEST(Mailbox, GivesTheNewestOfSeveral) {
    Mailbox<int> mailbox;
    for (int round = 0; round < 10; ++round) {
        for (int value = 0; value <= round; ++value) {
            mailbox.put(value);
        }
        const int* taken = mailbox.take();
        ASSERT_NE(taken, nullptr);
        EXPECT_EQ(*taken, round);
    }
}

TEST(Mailbox, LeavesATakenValueAloneUntilTheNextIsTaken) {
    Mailbox<int> mailbox;
    mailbox.put(1);
    const int* taken = mailbox.take();
    ASSERT_NE(taken, nullptr);
    for (int value = 2; value < 10; ++value) {
        mailbox.put(value);
        EXPECT_EQ(*taken, 1);
    }
}

/// All its words are the same, unless two values were mixed.
using Payload = std::array<std::uint32_t, 32>;

TEST(Mailbox, HandsOverWholeValuesInTheirOrder) {
    constexpr std::uint32_t last = 20000;
    Mailbox<Payload> mailbox;
    OneTimeGate bothAreThere;
    std::thread owner([&] {
        Payload payload;
        (void)bothAreThere.pass();
        for (std::uint32_t value = 1; value <= last; ++value) {
            payload.fill(value);
            mailbox.put(payload);
        }
    });
    bothAreThere.open();
    std::uint32_t seen = 0;
    int faults = 0;
    while (seen != last) {
        if (const Payload* taken = mailbox.take()) {
            for (const std::uint32_t word : *taken) {
                faults += word != taken->front() ? 1 : 0;
            }
            faults += taken->front() <= seen ? 1 : 0;
            seen = taken->front();
        } else {
            std::this_thread::yield();
        }
    }
    owner.join();
    EXPECT_EQ(faults, 0);
}

}  // namespace
}  // namespace korva::test
