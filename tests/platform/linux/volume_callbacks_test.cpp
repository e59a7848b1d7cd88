#include <bit>
#include <memory>
#include <string>
#include <thread>

#include "tests/platform/linux/audio_devices_test.h"
#include "tests/platform/linux/volume_callback.h"
#include "tests/support/child_process.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::platform {
namespace {

using test::OneTimeGate;
using test::SeededEndpoint;
using test::waitUntil;

constexpr GUID someContext = {0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};

class VolumeCallbacks : public AudioDevicesTest {
protected:
    void add(VolumeCallback& callback) const {
        EXPECT_EQ(volume->RegisterControlChangeNotify(&callback), published::ok);
    }
    void remove(VolumeCallback& callback) const {
        EXPECT_EQ(volume->UnregisterControlChangeNotify(&callback), published::ok);
    }
    void set(float scalar, LPCGUID context = nullptr) const {
        EXPECT_EQ(volume->SetMasterVolumeLevelScalar(scalar, context), published::ok);
    }

    SeededEndpoint endpoint;
    HeldObject<IMMDevice> device = deviceOf(endpoint);
    HeldObject<IAudioEndpointVolume> volume = volumeOf(*device);
};

TEST_F(VolumeCallbacks, AChangeIsToldWithItsContext) {
    VolumeCallback callback;
    add(callback);
    set(0.5F, &someContext);
    ASSERT_TRUE(waitUntil([&] { return callback.wasTold(0.5F); }));
    const VolumeCallback::Data data = callback.told().back();
    EXPECT_EQ(data.guidEventContext, someContext);
    EXPECT_EQ(data.bMuted, 0);
    EXPECT_EQ(data.nChannels, 1U);
    EXPECT_EQ(data.afChannelVolumes[0], 0.5F);
    set(0.25F);
    ASSERT_TRUE(waitUntil([&] { return callback.wasTold(0.25F); }));
    EXPECT_EQ(callback.told().back().guidEventContext, GUID{});
    remove(callback);
}

TEST_F(VolumeCallbacks, MuteIsToldWithTheVolume) {
    set(0.5F);
    VolumeCallback callback;
    add(callback);
    EXPECT_EQ(volume->SetMute(1, &someContext), published::ok);
    ASSERT_TRUE(waitUntil([&] { return callback.calls == 1; }));
    remove(callback);
    const VolumeCallback::Data data = callback.told().front();
    EXPECT_NE(data.bMuted, 0);
    EXPECT_EQ(data.fMasterVolume, 0.5F);
    EXPECT_EQ(data.guidEventContext, someContext);
}

TEST_F(VolumeCallbacks, AnotherProcessIsHeardToo) {
    VolumeCallback callback;
    add(callback);
    const std::string bits = std::to_string(std::bit_cast<std::uint32_t>(0.125F));
    const test::Outcome outcome = test::run(
        {.program = KORVA_REGISTRY_CHILD, .arguments = {"number", endpoint.path(), "MasterVolume", bits}});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_TRUE(waitUntil([&] { return callback.wasTold(0.125F); }));
    EXPECT_EQ(callback.told().back().guidEventContext, GUID{});
    remove(callback);
}

TEST_F(VolumeCallbacks, WhatChangesNothingIsNotTold) {
    set(0.5F);
    VolumeCallback callback;
    add(callback);
    set(0.5F);
    endpoint.setVolume(0.5F);
    endpoint.setNumber("Unknown", 7);
    set(0.25F);
    ASSERT_TRUE(waitUntil([&] { return callback.wasTold(0.25F); }));
    remove(callback);
    EXPECT_EQ(callback.told().size(), 1U);
}

TEST_F(VolumeCallbacks, EveryCallbackIsToldAndSeesItsOwnRecord) {
    VolumeCallback first;
    VolumeCallback second;
    add(first);
    add(second);
    set(0.5F);
    EXPECT_TRUE(waitUntil([&] { return first.wasTold(0.5F) && second.wasTold(0.5F); }));
    remove(first);
    set(0.25F);
    EXPECT_TRUE(waitUntil([&] { return second.wasTold(0.25F); }));
    remove(second);
    EXPECT_EQ(first.told().size(), 1U);
}

TEST_F(VolumeCallbacks, NothingIsToldOfWhatCameBefore) {
    set(0.5F);
    VolumeCallback early;
    add(early);
    set(0.25F);
    ASSERT_TRUE(waitUntil([&] { return early.wasTold(0.25F); }));
    VolumeCallback late;
    add(late);
    set(0.75F);
    ASSERT_TRUE(waitUntil([&] { return late.calls == 1 && early.wasTold(0.75F); }));
    remove(early);
    remove(late);
    EXPECT_EQ(late.told().front().fMasterVolume, 0.75F);
}

TEST_F(VolumeCallbacks, OneIsHeldWhileItIsThereAndNoLonger) {
    VolumeCallback callback;
    add(callback);
    add(callback);
    EXPECT_EQ(callback.references, 3U);
    set(0.5F);
    ASSERT_TRUE(waitUntil([&] { return callback.calls == 2; }));
    remove(callback);
    EXPECT_EQ(callback.references, 2U);
    set(0.25F);
    ASSERT_TRUE(waitUntil([&] { return callback.calls == 3; }));
    remove(callback);
    EXPECT_EQ(callback.references, 1U);
    EXPECT_EQ(volume->UnregisterControlChangeNotify(&callback), published::notFound);
}

TEST_F(VolumeCallbacks, RemovalWaitsForACallThatRuns) {
    OneTimeGate entered;
    OneTimeGate mayReturn;
    VolumeCallback callback([&] {
        entered.open();
        EXPECT_TRUE(mayReturn.pass());
    });
    add(callback);
    set(0.5F);
    ASSERT_TRUE(entered.pass());
    OneTimeGate removed;
    std::thread remover([&] {
        remove(callback);
        EXPECT_EQ(callback.calls, 1);
        EXPECT_EQ(callback.references, 1U);
        removed.open();
    });
    EXPECT_FALSE(removed.passWithin(std::chrono::milliseconds(50)));
    mayReturn.open();
    EXPECT_TRUE(removed.pass());
    remover.join();
}

TEST_F(VolumeCallbacks, NoCallComesAfterRemoval) {
    for (int round = 0; round < 50; ++round) {
        VolumeCallback callback;
        add(callback);
        set(round % 2 == 0 ? 0.5F : 0.25F);
        remove(callback);
        const std::size_t told = callback.told().size();
        set(0.75F);
        EXPECT_EQ(callback.told().size(), told);
        EXPECT_EQ(callback.references, 1U);
    }
}

TEST_F(VolumeCallbacks, ACallbackMayRemoveItself) {
    VolumeCallback* self = nullptr;
    VolumeCallback callback([&] {
        remove(*self);
        EXPECT_EQ(self->references, 2U) << "held until its method returns";
    });
    self = &callback;
    add(callback);
    set(0.5F);
    ASSERT_TRUE(waitUntil([&] { return callback.references == 1U; }));
    set(0.25F);
    EXPECT_EQ(callback.told().size(), 1U);
}

TEST_F(VolumeCallbacks, ACallbackMayRemoveAnotherAndAddItAgain) {
    VolumeCallback other;
    VolumeCallback callback([&] {
        remove(other);
        add(other);
    });
    add(callback);
    add(other);
    set(0.5F);
    ASSERT_TRUE(waitUntil([&] { return callback.calls == 1; }));
    set(0.25F);
    ASSERT_TRUE(waitUntil([&] { return callback.calls == 2; }));
    remove(callback);
    remove(other);
    EXPECT_EQ(other.references, 1U);
}

TEST_F(VolumeCallbacks, TheLastOneMayGoAndComeBackFromInside) {
    VolumeCallback* self = nullptr;
    VolumeCallback callback([&] {
        remove(*self);
        add(*self);
    });
    self = &callback;
    add(callback);
    int calls = 0;
    for (const float scalar : {0.5F, 0.25F, 0.75F}) {
        set(scalar);
        ++calls;
        ASSERT_TRUE(waitUntil([&] { return callback.calls == calls; }));
        EXPECT_TRUE(callback.wasTold(scalar));
    }
    remove(callback);
    EXPECT_EQ(callback.references, 1U);
}

TEST_F(VolumeCallbacks, AVolumeMayEndInsideACall) {
    VolumeCallback callback([&] { volume.reset(); });
    add(callback);
    endpoint.setVolume(0.5F);
    EXPECT_TRUE(waitUntil([&] { return callback.references == 1U; }));
    EXPECT_EQ(volume, nullptr);
}

TEST_F(VolumeCallbacks, AVolumeThatEndsLetsItsCallbacksGo) {
    VolumeCallback first;
    VolumeCallback second;
    add(first);
    add(second);
    volume.reset();
    EXPECT_EQ(first.references, 1U);
    EXPECT_EQ(second.references, 1U);
    endpoint.setVolume(0.5F);
    EXPECT_TRUE(first.told().empty());
}

TEST_F(VolumeCallbacks, ThreadsRunOnlyWhileSomebodyListens) {
    const std::size_t atRest = test::threadCountAtRest();
    VolumeCallback callback;
    add(callback);
    EXPECT_GT(test::threadCount(), atRest);
    remove(callback);
    EXPECT_TRUE(waitUntil([&] { return test::threadCount() == atRest; }));
}

TEST_F(VolumeCallbacks, ARemovedEndpointIsSilent) {
    VolumeCallback callback;
    add(callback);
    endpoint.remove();
    remove(callback);
    EXPECT_TRUE(callback.told().empty());
    EXPECT_EQ(volume->RegisterControlChangeNotify(&callback), published::deviceInvalidated);
    EXPECT_EQ(callback.references, 1U);
}

TEST_F(VolumeCallbacks, ThreadsMayComeGoAndSetAtOnce) {
    const auto come = [&] {
        for (int i = 0; i < 100; ++i) {
            VolumeCallback callback;
            add(callback);
            remove(callback);
            EXPECT_EQ(callback.references, 1U);
        }
    };
    VolumeCallback steady;
    add(steady);
    std::thread first(come);
    std::thread second(come);
    // The last one differs from the first, in case that all are told as one change.
    for (int i = 0; i <= 100; ++i) {
        set(static_cast<float>(i) / 200.0F, &someContext);
    }
    first.join();
    second.join();
    EXPECT_TRUE(waitUntil([&] { return steady.wasTold(0.5F); }));
    remove(steady);
}

}  // namespace
}  // namespace korva::platform
