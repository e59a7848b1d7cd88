// The rules for the connections of a stream: which of them gives the result where several are broken.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "tests/system/class_test.h"

namespace korva::test {
namespace {

using published::APO_CONNECTION_DESCRIPTOR;
using published::UNCOMPRESSEDAUDIOFORMAT;

UNCOMPRESSEDAUDIOFORMAT doubles() {
    UNCOMPRESSEDAUDIOFORMAT format = floats(2);
    format.dwBytesPerSampleContainer = 8;
    format.dwValidBitsPerSample = 64;
    return format;
}

/// A lock as a host writes it down, right at first.
struct Lock {
    OwnMediaType good{floats(2)};
    OwnMediaType whole{wholes(2)};
    OwnMediaType tenChannels{floats(10)};
    OwnMediaType otherWidth{doubles()};
    OwnMediaType otherRate{floats(2, 44100)};
    OwnMediaType nearRate{floats(2, 48000.25f)};
    OwnMediaType failing{floats(2), result::deviceGone};
    Connection input{good};
    Connection output{good};
    std::array<APO_CONNECTION_DESCRIPTOR*, 2> inputs{&input, &input};
    std::array<APO_CONNECTION_DESCRIPTOR*, 2> outputs{&output, &output};
    APO_CONNECTION_DESCRIPTOR** inputArray = inputs.data();
    APO_CONNECTION_DESCRIPTOR** outputArray = outputs.data();
    UINT32 inputCount = 1;
    UINT32 outputCount = 1;

    HRESULT on(HostedObject& object) {
        return object.configuration->LockForProcess(inputCount, inputArray, outputCount, outputArray);
    }
};

/// A way to break a lock. Those that change the same part can't be combined.
struct Breach {
    const char* what;
    const char* part;
    HRESULT expected;
    std::function<void(Lock&)> apply;
};

/// In the order in which they count.
const std::vector<Breach>& breaches() {
    static const std::vector<Breach> all = {
        {"no array of inputs", "inputs", result::nullPointer, [](Lock& lock) { lock.inputArray = nullptr; }},
        {"a first input of null", "inputs", result::nullPointer,
         [](Lock& lock) { lock.inputs[0] = nullptr; }},
        {"no array of outputs", "outputs", result::nullPointer,
         [](Lock& lock) { lock.outputArray = nullptr; }},
        {"a first output of null", "outputs", result::nullPointer,
         [](Lock& lock) { lock.outputs[0] = nullptr; }},
        {"no inputs", "inputs", result::connectionCountInvalid, [](Lock& lock) { lock.inputCount = 0; }},
        {"two inputs", "input count", result::connectionCountInvalid,
         [](Lock& lock) { lock.inputCount = 2; }},
        {"no outputs", "outputs", result::connectionCountInvalid, [](Lock& lock) { lock.outputCount = 0; }},
        {"two outputs", "output count", result::connectionCountInvalid,
         [](Lock& lock) { lock.outputCount = 2; }},
        {"an input without a format", "input format", result::nullPointer,
         [](Lock& lock) { lock.input.pFormat = nullptr; }},
        {"an input whose format fails", "input format", result::deviceGone,
         [](Lock& lock) { lock.input.pFormat = &lock.failing; }},
        {"an output without a format", "output format", result::formatNotSupported,
         [](Lock& lock) { lock.output.pFormat = nullptr; }},
        {"an output whose format fails", "output format", result::formatNotSupported,
         [](Lock& lock) { lock.output.pFormat = &lock.failing; }},
        {"whole numbers in", "input format", result::formatNotSupported,
         [](Lock& lock) { lock.input.pFormat = &lock.whole; }},
        {"whole numbers out", "output format", result::formatNotSupported,
         [](Lock& lock) { lock.output.pFormat = &lock.whole; }},
        {"ten channels in", "input format", result::formatNotSupported,
         [](Lock& lock) { lock.input.pFormat = &lock.tenChannels; }},
        {"ten channels out", "output format", result::formatNotSupported,
         [](Lock& lock) { lock.output.pFormat = &lock.tenChannels; }},
        {"another rate out", "output format", result::formatNotSupported,
         [](Lock& lock) { lock.output.pFormat = &lock.otherRate; }},
        {"another signature of the input", "input signature", result::badArgument,
         [](Lock& lock) { lock.input.u32Signature = 0x41435053; }},
        {"another signature of the output", "output signature", result::badArgument,
         [](Lock& lock) { lock.output.u32Signature = 0; }},
        {"wider samples out", "output format", result::connectionFormatInvalid,
         [](Lock& lock) { lock.output.pFormat = &lock.otherWidth; }},
        {"a rate out that only rounds to the same", "output format", result::connectionFormatInvalid,
         [](Lock& lock) { lock.output.pFormat = &lock.nearRate; }},
        {"fewer frames out", "frames", result::maxFrameCountInvalid,
         [](Lock& lock) { lock.output.u32MaxFrameCount = lock.input.u32MaxFrameCount - 1; }}};
    return all;
}

class LockRules : public ClassTest {
protected:
    void expectUsable() {
        Lock lock;
        EXPECT_EQ(lock.on(object), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }

    HostedObject object{library, GetParam()};
};

TEST_P(LockRules, EachBrokenAloneGivesItsResult) {
    for (const Breach& breach : breaches()) {
        SCOPED_TRACE(breach.what);
        Lock lock;
        breach.apply(lock);
        EXPECT_EQ(lock.on(object), breach.expected);
        EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
        expectUsable();
    }
}

TEST_P(LockRules, TwoBrokenTogetherGiveTheResultOfTheFirst) {
    int pairs = 0;
    for (const Breach& first : breaches()) {
        for (const Breach* second = &first + 1; second != breaches().data() + breaches().size(); ++second) {
            if (std::string(first.part) == second->part) {
                continue;
            }
            SCOPED_TRACE(std::string(first.what) + ", " + second->what);
            Lock lock;
            first.apply(lock);
            second->apply(lock);
            EXPECT_EQ(lock.on(object), first.expected);
            expectUsable();
            ++pairs;
        }
    }
    EXPECT_GT(pairs, 150);
}

TEST_P(LockRules, AreNotLookedAtWhileAStreamIsLocked) {
    Lock good;
    ASSERT_EQ(good.on(object), result::ok);
    for (const Breach& breach : breaches()) {
        SCOPED_TRACE(breach.what);
        Lock lock;
        breach.apply(lock);
        EXPECT_EQ(lock.on(object), result::isLocked);
    }
    EXPECT_EQ(good.on(object), result::isLocked);
    EXPECT_EQ(object.unlock(), result::ok) << "the first lock stays";
    EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    expectUsable();
}

TEST_P(LockRules, WithoutAnyConnectionIsTooFew) {
    EXPECT_EQ(object.configuration->LockForProcess(0, nullptr, 0, nullptr), result::connectionCountInvalid);
    EXPECT_EQ(object.configuration->LockForProcess(0xFFFFFFFF, nullptr, 0xFFFFFFFF, nullptr),
              result::nullPointer);
    expectUsable();
}

TEST_P(LockRules, OfCountsReadNoConnectionBehindTheFirst) {
    Lock lock;
    lock.inputCount = 0xFFFFFFFF;
    lock.outputCount = 0xFFFFFFFF;
    EXPECT_EQ(lock.on(object), result::connectionCountInvalid);
    expectUsable();
}

TEST_P(LockRules, DoNotAskForInitialisation) {
    Lock lock;
    EXPECT_EQ(lock.on(object), result::ok);
}

TEST_P(LockRules, AllowFramesOfAnyNumberThatTheOutputTakes) {
    for (const auto& [in, out] : std::vector<std::pair<UINT32, UINT32>>{
             {0, 0}, {0, 0xFFFFFFFF}, {1, 1}, {480, 960}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
        Lock lock;
        lock.input.u32MaxFrameCount = in;
        lock.output.u32MaxFrameCount = out;
        EXPECT_EQ(lock.on(object), result::ok) << in << " to " << out;
        EXPECT_EQ(object.unlock(), result::ok);
    }
    Lock lock;
    lock.input.u32MaxFrameCount = 0xFFFFFFFF;
    lock.output.u32MaxFrameCount = 0xFFFFFFFE;
    EXPECT_EQ(lock.on(object), result::maxFrameCountInvalid);
}

TEST_P(LockRules, AllowBuffersAnywhereSinceObjectsWorkInPlace) {
    for (const UINT_PTR address : {UINT_PTR{0}, UINT_PTR{4}, ~UINT_PTR{0}}) {
        Lock lock;
        lock.input.pBuffer = address;
        lock.output.pBuffer = address;
        lock.input.u32MaxFrameCount = 0xFFFFFFFF;
        lock.output.u32MaxFrameCount = 0xFFFFFFFF;
        EXPECT_EQ(lock.on(object), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }
}

TEST_P(LockRules, AllowBuffersOfAnyType) {
    for (const std::uint32_t type : {1U, 2U, 3U, 0xFFFFFFFFU}) {
        Lock lock;
        lock.input.Type = static_cast<published::APO_CONNECTION_BUFFER_TYPE>(type);
        lock.output.Type = static_cast<published::APO_CONNECTION_BUFFER_TYPE>(type);
        EXPECT_EQ(lock.on(object), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
    }
}

TEST_P(LockRules, AllowOnlyTheSignature) {
    for (const UINT32 signature : {0x41434452U, 0x53444341U, 0x41435032U, 0xFFFFFFFFU}) {
        Lock lock;
        lock.input.u32Signature = signature;
        EXPECT_EQ(lock.on(object), result::badArgument) << std::hex << signature;
    }
    expectUsable();
}

KORVA_OF_EACH_CLASS(LockRules);

}  // namespace
}  // namespace korva::test
