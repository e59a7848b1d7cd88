// Formats that come back to the object while it asks them about themselves.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/system/class_test.h"

namespace korva::test {
namespace {

using published::UNCOMPRESSEDAUDIOFORMAT;

/// The questions that a lock asks an input's format, in their order: for what all connections share, twice
/// for the core's test of both formats, for the input's own check, and as the core begins its stream.
constexpr int firstQuestion = 0;
constexpr int lastOfCaller = 3;
constexpr int asStreamBegins = 4;

class LockReentry : public ClassTest {
protected:
    /// Locks with an input that does something at one question; gives what the lock gives.
    template <class Action>
    HRESULT lockDoing(int at, const Action& action) {
        const auto caller = std::this_thread::get_id();
        OwnMediaType good(floats(2));
        OwnMediaType returning([&, caller](int question, UNCOMPRESSEDAUDIOFORMAT& format) {
            format = floats(2);
            if (question == at) {
                wasOnCaller = std::this_thread::get_id() == caller;
                action();
            }
            return result::ok;
        });
        Connection input(returning);
        Connection output(good);
        return object.lock(input, output);
    }

    void expectUsable() {
        EXPECT_EQ(object.lock(floats(1)), result::ok);
        const std::vector<float> samples(64, 0.5f);
        EXPECT_EQ(object.play(samples, 1, 1), samples);
        EXPECT_EQ(object.unlock(), result::ok);
    }

    HostedObject object{library, GetParam()};
    bool wasOnCaller = false;
};

TEST_P(LockReentry, AnUnlockDuringTheChecksFindsNothingToUnlock) {
    for (const int question : {firstQuestion, lastOfCaller}) {
        HRESULT unlocked = result::failure;
        EXPECT_EQ(lockDoing(question, [&] { unlocked = object.unlock(); }), result::ok);
        EXPECT_TRUE(wasOnCaller);
        EXPECT_EQ(unlocked, result::alreadyUnlocked);
        EXPECT_EQ(object.unlock(), result::ok);
    }
    expectUsable();
}

TEST_P(LockReentry, ALockDuringTheChecksGoesFirst) {
    for (const int question : {firstQuestion, lastOfCaller}) {
        HRESULT locked = result::failure;
        EXPECT_EQ(lockDoing(question, [&] { locked = object.lock(floats(2)); }), result::isLocked);
        EXPECT_TRUE(wasOnCaller);
        EXPECT_EQ(locked, result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
        EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    }
    expectUsable();
}

TEST_P(LockReentry, AnUnlockAsTheStreamBeginsEndsIt) {
    HRESULT unlocked = result::failure;
    EXPECT_EQ(lockDoing(asStreamBegins, [&] { unlocked = object.unlock(); }), result::ok);
    EXPECT_FALSE(wasOnCaller);
    EXPECT_EQ(unlocked, result::ok);
    EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    expectUsable();
}

TEST_P(LockReentry, ALockAsTheStreamBeginsIsRefused) {
    HRESULT locked = result::failure;
    EXPECT_EQ(lockDoing(asStreamBegins, [&] { locked = object.lock(floats(1)); }), result::ok);
    EXPECT_EQ(locked, result::isLocked);
    EXPECT_EQ(object.unlock(), result::ok);
    expectUsable();
}

TEST_P(LockReentry, OtherMethodsMayBeCalledAtAnyQuestion) {
    for (int question = firstQuestion; question <= asStreamBegins; ++question) {
        EXPECT_EQ(lockDoing(question,
                            [&] {
                                EXPECT_EQ(object.apo->Reset(), result::ok);
                                OwnMediaType type(floats(6));
                                published::IAudioMediaType* found = nullptr;
                                EXPECT_EQ(object.apo->IsInputFormatSupported(nullptr, &type, &found),
                                          result::ok);
                                EXPECT_EQ(found, &type);
                                found->Release();
                            }),
                  result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }
}

KORVA_OF_EACH_CLASS(LockReentry);

}  // namespace
}  // namespace korva::test
