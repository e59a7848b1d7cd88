// One object, called by many threads at once while it plays.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/com_apartment.h"
#include "platform/mutex.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

using published::APO_NOTIFICATION;
using Samples = std::vector<float>;

/// Notes results that are none of those allowed.  [any]
class Results {
public:
    void expect(HRESULT told, std::initializer_list<HRESULT> allowed) {
        others += std::ranges::find(allowed, told) == allowed.end() ? 1 : 0;
    }
    void expect(bool holds) { others += holds ? 0 : 1; }
    [[nodiscard]] int wrong() const noexcept { return others.load(); }

private:
    std::atomic<int> others{0};
};

class ManyThreads : public testing::TestWithParam<ClassFacts> {
protected:
    static constexpr int rounds = KORVA_SYSTEM_ROUNDS;

    ManyThreads() {
        effect.install(GetParam());
        EXPECT_EQ(effect.initialize(object), result::ok);
    }

    /// A stream as a host has it: no buffer is played while it is locked or unlocked.
    void lockAndUnlock() {
        const std::lock_guard guard(stream);
        results.expect(object.lock(floats(2)), {result::ok});
        isPlayed = true;
        results.expect(object.lock(floats(2)), {result::isLocked});
    }
    void unlock() {
        const std::lock_guard guard(stream);
        isPlayed = false;
        results.expect(object.unlock(), {result::ok});
        results.expect(object.unlock(), {result::alreadyUnlocked});
    }
    void playOne() {
        const std::lock_guard guard(stream);
        if (isPlayed) {
            const Samples played = object.play(Samples(960, 1.0f), 2, 2);
            const float first = played.front();
            // Halved by the module, or folded while it is being replaced.
            results.expect((first == 0.5f || first == 1.0f) &&
                           std::ranges::all_of(played, [&](float sample) { return sample == first; }));
            ++buffers;
        }
    }
    void askForFormats() {
        OwnMediaType fine(floats(2));
        OwnMediaType whole(wholes(2));
        ComPointer<published::IAudioMediaType> supported;
        results.expect(object.apo->IsInputFormatSupported(nullptr, &fine, supported.receive()), {result::ok});
        results.expect(object.apo->IsOutputFormatSupported(&fine, &whole, supported.receive()), {result::no});
        results.expect(object.apo->Reset(), {result::ok});
    }
    void listEffects() {
        LPGUID ids = nullptr;
        UINT count = 0;
        results.expect(object.effects->GetEffectsList(&ids, &count, nullptr), {result::ok});
        results.expect(count == (GetParam().clsid == modeClass.clsid ? 7U : 2U));
        CoTaskMemFree(ids);
    }
    void notify(float scalar) {
        AUDIO_VOLUME_NOTIFICATION_DATA data{};
        data.fMasterVolume = scalar;
        APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
        notification.audioEndpointVolumeChange = {&effect.device, &data};
        object.notifications->HandleNotification(&notification);
    }

    HostedEffect effect;
    HostedObject object{effect.library, GetParam()};
    Results results;
    platform::Mutex stream;
    bool isPlayed = false;
    std::atomic<int> buffers{0};
};

TEST_P(ManyThreads, GetResultsOfTheirOwnWhileItPlays) {
    std::atomic<bool> mayEnd{false};
    std::thread playing([&] {
        while (!mayEnd) {
            playOne();
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> callers;
    callers.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
            lockAndUnlock();
            const int before = buffers;
            while (buffers == before) {
                std::this_thread::yield();
            }
            unlock();
        }
    });
    callers.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
            askForFormats();
        }
    });
    callers.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
            listEffects();
            results.expect(effect.initialize(object), {result::ok});
        }
    });
    callers.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
            notify(static_cast<float>(round % 10) / 10.0f);
        }
    });
    for (std::thread& caller : callers) {
        caller.join();
    }
    mayEnd = true;
    playing.join();
    EXPECT_EQ(results.wrong(), 0);
    EXPECT_GE(buffers, rounds);
    EXPECT_EQ(object.lock(floats(2)), result::ok) << "usable afterwards";
    EXPECT_EQ(object.play(Samples{1, 1}, 2, 2), (Samples{0.5f, 0.5f}));
}

TEST_P(ManyThreads, LockAndUnlockOneStreamAtATime) {
    std::atomic<int> locks{0};
    std::atomic<int> unlocks{0};
    const auto work = [&] {
        for (int round = 0; round < rounds; ++round) {
            const HRESULT locked = object.lock(floats(2));
            results.expect(locked, {result::ok, result::isLocked});
            locks += locked == result::ok ? 1 : 0;
            const HRESULT unlocked = object.unlock();
            results.expect(unlocked, {result::ok, result::alreadyUnlocked});
            unlocks += unlocked == result::ok ? 1 : 0;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results.wrong(), 0);
    EXPECT_EQ(locks, unlocks) << "each stream that began has ended";
    EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    EXPECT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.play(Samples{1, 1}, 2, 2), (Samples{0.5f, 0.5f}));
}

KORVA_OF_EACH_CLASS(ManyThreads);

}  // namespace
}  // namespace korva::test
