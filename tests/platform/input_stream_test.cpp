#include "platform/input_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/own_folder.h"

namespace korva::platform {
namespace {

class InputStreamTest : public testing::Test {
protected:
    /// A path below the test's folder, as UTF-8.
    [[nodiscard]] std::string path(const char8_t* name) const {
        const std::u8string text = (folder.path() / name).u8string();
        return {text.begin(), text.end()};
    }

    void write(const char8_t* name, const std::string& bytes) const {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
    }

    /// All reads up to the end.
    static std::string readAll(InputStream& stream) {
        std::string all;
        std::array<char, 1000> block;
        while (true) {
            const InputRead read = stream.read(block);
            EXPECT_FALSE(read.isInterrupted);
            EXPECT_FALSE(read.error) << read.error.message();
            if (read.byteCount == 0) {
                return all;
            }
            all.append(block.data(), read.byteCount);
        }
    }

    test::OwnFolder folder;
};

TEST_F(InputStreamTest, GivesEveryByteAsItIs) {
    std::string bytes;
    for (int i = 0; i < 70'000; ++i) {
        bytes += static_cast<char>(i * 7 % 256);
    }
    bytes += "\r\n\x1A\n";
    write(u8"bytes", bytes);
    std::error_code error;
    InputStream stream(path(u8"bytes"), error);
    ASSERT_FALSE(error) << error.message();
    EXPECT_FALSE(stream.isFolder());
    EXPECT_EQ(readAll(stream), bytes);
}

TEST_F(InputStreamTest, OfAnEmptyFileIsAtItsEnd) {
    write(u8"empty", "");
    std::error_code error;
    InputStream stream(path(u8"empty"), error);
    ASSERT_FALSE(error);
    EXPECT_EQ(readAll(stream), "");
    EXPECT_EQ(readAll(stream), "");
}

TEST_F(InputStreamTest, OpensANameOfAnyScript) {
    write(u8"λ 音 🔊", "sound");
    std::error_code error;
    InputStream stream(path(u8"λ 音 🔊"), error);
    ASSERT_FALSE(error) << error.message();
    EXPECT_EQ(readAll(stream), "sound");
}

TEST_F(InputStreamTest, OfAFolderTellsSo) {
    std::error_code error;
    const InputStream stream(path(u8""), error);
    ASSERT_FALSE(error) << error.message();
    EXPECT_TRUE(stream.isFolder());
}

TEST_F(InputStreamTest, OfNoFileHasTheErrorOfAnySystem) {
    std::error_code error;
    const InputStream stream(path(u8"none"), error);
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(error.message(), "No such file or directory");
}

}  // namespace
}  // namespace korva::platform
