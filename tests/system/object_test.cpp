// What an object tells of itself, whatever it was told before.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/unicode.h"
#include "tests/system/class_test.h"

namespace korva::test {
namespace {

class Object : public ClassTest {
protected:
    HostedObject object{library, GetParam()};
};

TEST_P(Object, IsResetAtAnyTime) {
    EXPECT_EQ(object.apo->Reset(), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.apo->Reset(), result::ok);
    EXPECT_EQ(object.unlock(), result::ok) << "a reset leaves the stream locked";
    EXPECT_EQ(object.apo->Reset(), result::ok);
}

TEST_P(Object, HasNoLatency) {
    published::HNSTIME latency = 50;
    EXPECT_EQ(object.apo->GetLatency(&latency), result::ok);
    EXPECT_EQ(latency, 0);
    EXPECT_EQ(object.apo->GetLatency(nullptr), result::nullPointer);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    latency = -1;
    EXPECT_EQ(object.apo->GetLatency(&latency), result::ok);
    EXPECT_EQ(latency, 0);
}

TEST_P(Object, NeverTellsHowManyChannelsComeIn) {
    UINT32 count = 99;
    EXPECT_EQ(object.apo->GetInputChannelCount(&count), result::notInitialized);
    EXPECT_EQ(object.apo->GetInputChannelCount(nullptr), result::notInitialized);
    EXPECT_EQ(object.apo->Initialize(0, nullptr), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.apo->GetInputChannelCount(&count), result::notInitialized);
    EXPECT_EQ(count, 99U);
}

TEST_P(Object, TakesAsManyFramesAsItGives) {
    for (const UINT32 frames : {0U, 1U, 480U, 0xFFFFFFFFU}) {
        EXPECT_EQ(object.realtime->CalcInputFrames(frames), frames);
        EXPECT_EQ(object.realtime->CalcOutputFrames(frames), frames);
    }
}

TEST_P(Object, HasNoStreamToUnlockAtFirst) {
    EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
}

TEST_P(Object, IsUnlockedOnceForEachLock) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        EXPECT_EQ(object.unlock(), result::ok);
        EXPECT_EQ(object.unlock(), result::alreadyUnlocked);
    }
}

TEST_P(Object, MayBeReleasedWithAStreamLocked) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(object.release(), 0U);
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

/// Bytes of the record as hosts read it.
class Record {
public:
    explicit Record(const HostedObject& object) {
        published::APO_REG_PROPERTIES* copy = nullptr;
        EXPECT_EQ(object.apo->GetRegistrationProperties(&copy), result::ok);
        std::memcpy(bytes, copy, sizeof(bytes));
        CoTaskMemFree(copy);
    }

    [[nodiscard]] GUID guidAt(std::size_t offset) const { return at<GUID>(offset); }
    [[nodiscard]] std::uint32_t numberAt(std::size_t offset) const { return at<std::uint32_t>(offset); }
    /// Of 256 units at most, with the terminator.
    [[nodiscard]] std::string textAt(std::size_t offset) const {
        platform::WideString text;
        for (std::size_t i = 0; i < 256; ++i) {
            const auto unit = at<WCHAR>(offset + i * sizeof(WCHAR));
            if (unit == 0) {
                return platform::toUtf8(text);
            }
            text += unit;
        }
        ADD_FAILURE() << "a text without an end";
        return {};
    }
    friend bool operator==(const Record& a, const Record& b) {
        return std::memcmp(a.bytes, b.bytes, sizeof(a.bytes)) == 0;
    }

private:
    template <class Value>
    [[nodiscard]] Value at(std::size_t offset) const {
        Value value;
        std::memcpy(&value, bytes + offset, sizeof(value));
        return value;
    }

    unsigned char bytes[1092];
};

TEST_P(Object, TellsWhatItIsRegisteredAs) {
    const Record record(object);
    EXPECT_EQ(record.guidAt(0), GetParam().clsid);
    EXPECT_EQ(record.numberAt(16), GetParam().flags);
    EXPECT_EQ(record.textAt(20), GetParam().name);
    EXPECT_NE(record.textAt(532), "");
    EXPECT_EQ(record.numberAt(1044), 1U) << "major version";
    EXPECT_EQ(record.numberAt(1048), 0U) << "minor version";
    EXPECT_EQ(record.numberAt(1052), 1U) << "fewest inputs";
    EXPECT_EQ(record.numberAt(1056), 1U) << "most inputs";
    EXPECT_EQ(record.numberAt(1060), 1U) << "fewest outputs";
    EXPECT_EQ(record.numberAt(1064), 1U) << "most outputs";
    EXPECT_EQ(record.numberAt(1068), 0xFFFFFFFFU) << "most objects";
    EXPECT_EQ(record.numberAt(1072), 1U) << "interfaces";
    EXPECT_EQ(record.guidAt(1076), GetParam().ownInterface);
}

TEST_P(Object, GivesItsRecordAwayEachTime) {
    published::APO_REG_PROPERTIES* first = nullptr;
    ASSERT_EQ(object.apo->GetRegistrationProperties(&first), result::ok);
    const Record before(object);
    std::memset(static_cast<void*>(first), 0xFF, 1092);
    EXPECT_TRUE(Record(object) == before) << "a copy is the caller's";
    CoTaskMemFree(first);
}

TEST_P(Object, GivesNoRecordToNull) {
    EXPECT_EQ(object.apo->GetRegistrationProperties(nullptr), result::nullPointer);
}

KORVA_OF_EACH_CLASS(Object);

}  // namespace
}  // namespace korva::test
