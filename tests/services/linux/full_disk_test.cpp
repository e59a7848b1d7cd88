// An instance's key on a disk that takes no more.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "services/instance_key.h"
#include "tests/platform/linux/faulty_disk.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/telemetry_base.h"

namespace korva::services {
namespace {

using namespace platform::registry_result;
using test::FaultyDisk;
using test::numberOf;

/// What a write gave, and what is in the key.
struct Outcome {
    platform::RegistryResult result;
    bool isWritten;
    bool hasTime;

    bool operator==(const Outcome&) const = default;
};

Outcome outcomeOfWriting(FaultyDisk::Fault fault, std::int64_t room) {
    const test::OwnRegistry registry;
    const test::TelemetryBase base;
    InstanceKey key;
    platform::RegistryResult result = success;
    {
        const FaultyDisk disk(fault, room);
        result = key.writeDword("value", 1);
    }
    const platform::RegistryKey seen = base.open(base.instances().at(0));
    return {result, numberOf(seen, "value").has_value(), numberOf(seen, "WriteTime").has_value()};
}

/// Finds the room in which the value has its place and its time has none.
void expectATimeThatIsRefused(FaultyDisk::Fault fault, platform::RegistryResult refusal) {
    constexpr std::int64_t step = 1024;
    bool isTimeRefused = false;
    Outcome outcome{};
    for (std::int64_t room = 0; !(outcome.isWritten && outcome.hasTime); room += step) {
        ASSERT_LT(room, 1000 * step) << "no room is enough";
        outcome = outcomeOfWriting(fault, room);
        EXPECT_EQ(outcome.result, outcome.hasTime ? success : refusal) << room;
        EXPECT_TRUE(outcome.isWritten || !outcome.hasTime) << room;
        isTimeRefused = isTimeRefused || (outcome.isWritten && !outcome.hasTime);
    }
    EXPECT_TRUE(isTimeRefused);
}

TEST(InstanceKeyOnAFullDisk, AWriteWhoseTimeHasNoRoomTellsSo) {
    expectATimeThatIsRefused(FaultyDisk::Fault::full, diskFull);
}

TEST(InstanceKeyOnAFullDisk, AWriteWhoseTimeCantBeWrittenTellsSo) {
    expectATimeThatIsRefused(FaultyDisk::Fault::broken, ioFailed);
}

}  // namespace
}  // namespace korva::services
