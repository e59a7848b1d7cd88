#include "platform/published/audio_records.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace korva::published {
namespace {

std::array<std::uint8_t, 16> bytesOf(const GUID& guid) {
    std::array<std::uint8_t, 16> bytes{};
    std::memcpy(bytes.data(), &guid, sizeof(guid));
    return bytes;
}

TEST(AudioRecords, CarrySignaturesThatSpellFourLetters) {
    const auto spelled = [](const char(&letters)[5]) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            word = word << 8 | static_cast<std::uint8_t>(letters[i]);
        }
        return word;
    };

    EXPECT_EQ(connectionDescriptorSignature, spelled("ACDS"));
    EXPECT_EQ(connectionPropertySignature, spelled("ACPS"));
}

TEST(AudioRecords, NameTheEncodingsByTheirPublishedIdentifiers) {
    // {0000000n-0000-0010-8000-00AA00389B71}: the first three groups lie in memory lowest byte first.
    std::array<std::uint8_t, 16> expected = {0x03, 0, 0, 0,    0, 0,    0x10, 0,
                                             0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    EXPECT_EQ(bytesOf(ieeeFloatFormat), expected);

    expected[0] = 0x01;
    EXPECT_EQ(bytesOf(pcmFormat), expected);
}

TEST(AudioRecords, HaveTheFlagsOfTheAudioEngine) {
    EXPECT_EQ(std::uint32_t{BUFFER_INVALID}, 0u);
    EXPECT_EQ(std::uint32_t{BUFFER_VALID}, 1u);
    EXPECT_EQ(std::uint32_t{BUFFER_SILENT}, 2u);
}

TEST(AudioRecords, LayAConnectionOutAsTheAudioEngineDoes) {
    const APO_CONNECTION_PROPERTY connection{.pBuffer = 0x0807060504030201,
                                             .u32ValidFrameCount = 0x0C0B0A09,
                                             .u32BufferFlags = static_cast<APO_BUFFER_FLAGS>(0x100F0E0D),
                                             .u32Signature = 0x14131211};
    std::array<std::uint8_t, 20> wire{};
    std::memcpy(wire.data(), &connection, wire.size());

    for (std::size_t offset = 0; offset < wire.size(); ++offset) {
        EXPECT_EQ(wire[offset], offset + 1) << "at offset " << offset;
    }
}

}  // namespace
}  // namespace korva::published
