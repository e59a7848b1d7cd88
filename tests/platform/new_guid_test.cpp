#include "platform/new_guid.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <thread>

#include "platform/property_key.h"
#include "tests/support/conversation.h"

namespace korva::platform {
namespace {

constexpr int many = 1000;

TEST(NewGuid, IsRandomByItsVersionAndVariant) {
    for (int i = 0; i < many; ++i) {
        const GUID guid = newGuid();
        ASSERT_EQ(guid.Data3 >> 12, 4) << guidText(guid);
        ASSERT_EQ(guid.Data4[0] >> 6, 2) << guidText(guid);
    }
}

TEST(NewGuid, HasEveryOtherBitSetAtTimes) {
    std::array<std::uint8_t, sizeof(GUID)> ever{};
    std::array<std::uint8_t, sizeof(GUID)> always{};
    always.fill(0xFF);
    for (int i = 0; i < many; ++i) {
        const GUID guid = newGuid();
        std::array<std::uint8_t, sizeof(GUID)> bytes{};
        std::memcpy(bytes.data(), &guid, sizeof(guid));
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            ever[at] |= bytes[at];
            always[at] &= bytes[at];
        }
    }
    // The version lies in the high byte of a little-endian number.
    for (std::size_t at = 0; at < ever.size(); ++at) {
        EXPECT_EQ(ever[at], at == 7 ? 0x4F : at == 8 ? 0xBF : 0xFF) << at;
        EXPECT_EQ(always[at], at == 7 ? 0x40 : at == 8 ? 0x80 : 0x00) << at;
    }
}

TEST(NewGuid, IsGivenOnceWhateverThreadAsks) {
    std::array<std::set<std::string>, 4> given;
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&own = given[i]] {
            for (int n = 0; n < many; ++n) {
                own.insert(guidText(newGuid()));
            }
        });
    }
    std::set<std::string> all;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        all.merge(given[i]);
    }
    EXPECT_EQ(all.size(), threads.size() * many);
}

TEST(NewGuid, IsAnotherInAnotherProcess) {
    test::Conversation first(KORVA_SERVICE_COMPANION);
    test::Conversation second(KORVA_SERVICE_COMPANION);
    const std::set<std::string> all = {first.ask("guid"), first.ask("guid"), second.ask("guid"),
                                       second.ask("guid"), guidText(newGuid())};
    EXPECT_EQ(all.size(), 5U);
}

}  // namespace
}  // namespace korva::platform
