// What an audio object asks of the registry, and how it goes on where that takes nothing.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/platform/linux/faulty_disk.h"
#include "tests/system/shown_object.h"

namespace {

std::atomic<std::uint64_t> steps{0};  ///< Of all other statements than the next one's.
std::atomic<std::uint64_t> looks{0};

/// Whether it is what the registry's own thread looks with at a key that somebody watches. Statements that
/// the database makes for itself have no text.
bool isLook(sqlite3_stmt* statement) {
    const char* const text = sqlite3_sql(statement);
    return text != nullptr && std::string_view(text).starts_with("SELECT sequence FROM keys");
}

}  // namespace

// Each call of the registry takes steps of its database. The library's are bound to this function, since the
// program comes before what it is linked with.
extern "C" __attribute__((visibility("default"))) int sqlite3_step(sqlite3_stmt* statement) {
    using Step = int(sqlite3_stmt*);
    static const auto next = reinterpret_cast<Step*>(dlsym(RTLD_NEXT, "sqlite3_step"));
    (isLook(statement) ? looks : steps).fetch_add(1);
    return next(statement);
}

namespace korva::test {
namespace {

using namespace std::chrono_literals;

class RegistryCalls : public ShownObjectTest {
protected:
    /// Buffers of 10 ms, one each 10 ms.
    static void playFor(HostedObject& object, std::chrono::milliseconds time) {
        const std::vector<float> samples(2 * 480, 1.0f);
        auto next = std::chrono::steady_clock::now();
        for (const auto end = next + time; next < end;) {
            static_cast<void>(object.play(samples, 2, 2));
            next += 10ms;
            std::this_thread::sleep_until(next);
        }
    }
};

// The registry's own thread looks at each watched key four times a second: at the three sets of properties,
// and at the instance's key. To watch one anew would take a look more.
TEST_F(RegistryCalls, AreNoneWhileAStreamThatNobodyWatchesPlays) {
    HostedObject object(effect.library, modeClass);
    const std::uint64_t atFirst = steps;
    begin(object);
    EXPECT_GT(steps, atFirst) << "the library's calls are not seen";
    // What the lock's own writes bring is over.
    ASSERT_TRUE(becomes("PresetDSPParamBytesSent", "4:39000000"));
    playFor(object, 500ms);

    const std::uint64_t stepsBefore = steps;
    const std::uint64_t looksBefore = looks;
    playFor(object, 3500ms);
    EXPECT_EQ(steps - stepsBefore, 0U);
    EXPECT_LE(looks - looksBefore, 4U * 4U * 4U) << "more than four times in each second";

    ASSERT_TRUE(setNumber(key(), "CaptureDSPCycleCount", 1));
    const std::uint64_t afterRequest = steps;
    EXPECT_TRUE(waitUntil([&] { return steps > afterRequest; })) << "the request's service is not seen";
    EXPECT_TRUE(becomes("DSPCycleCount", "4:11000000"));
    EXPECT_EQ(object.release(), 0U);
}

class RegistryThatTakesNothing : public ShownObjectTest {
protected:
    /// A life of an object of which the registry refuses all from its beginning, or from its stream on.
    void live(FaultyDisk::Fault fault, bool isFaultyFromTheBeginning) {
        std::optional<FaultyDisk> disk;
        if (isFaultyFromTheBeginning) {
            disk.emplace(fault, 0);
        }
        HostedObject object(effect.library, modeClass);
        EXPECT_EQ(effect.initialize(object), result::ok);
        if (!disk) {
            disk.emplace(fault, 0);
        }
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        expectSound(object);
        EXPECT_EQ(object.unlock(), result::ok);
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        expectSound(object);
        EXPECT_FALSE(FaultyDisk::isGood()) << "nothing was written";
        disk.reset();
        expectSound(object);
        EXPECT_EQ(object.release(), 0U);
        EXPECT_TRUE(base.instances().empty());
    }
};

TEST_F(RegistryThatTakesNothing, LetsSoundPassWhenTheDiskIsFull) {
    live(FaultyDisk::Fault::full, true);
    live(FaultyDisk::Fault::full, false);
}

TEST_F(RegistryThatTakesNothing, LetsSoundPassWhenTheDiskIsBroken) {
    live(FaultyDisk::Fault::broken, true);
    live(FaultyDisk::Fault::broken, false);
}

}  // namespace
}  // namespace korva::test
