#include "params/channel_messages.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "framework/ref.h"
#include "platform/published/results.h"
#include "tests/params/peer_stream.h"
#include "tests/params/scripted_writer.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

using namespace std::string_literals;
using test::counted;
using test::framed;
using test::littleEndian;
using test::messageHead;
using test::number32;

class ChannelMessages : public testing::Test {
protected:
    std::string sentFor(REFPROPVARIANT value) {
        ValueBytes taken;
        EXPECT_EQ(takeBytes(value, taken), published::ok);
        sendValue(*peer, store, "{a},7", taken);
        return stream();
    }

    /// All that was sent since it was last asked for.
    std::string stream() {
        std::string all;
        for (const std::string& write : script.written) {
            all += write;
        }
        script.written.clear();
        return all;
    }

    static std::string head(std::uint32_t opcode) {
        return messageHead(opcode, "{0.0}.{1}", "User") + counted("{a},7");
    }

    test::WriterScript script;
    framework::Ref<StoreChannel> peer = framework::Ref<StoreChannel>::adopt(
        new StoreChannel(std::make_unique<test::ScriptedWriter>(script), {}, {}));
    StoreName store{"{0.0}.{1}", "User"};
};

TEST_F(ChannelMessages, SyncIsItsHead) {
    sendSync(*peer, store);
    EXPECT_EQ(stream(),
              "\0\3\0\0\0"
              "\0\11\0\0\0"
              "\0{0.0}.{1}"
              "\0\4\0\0\0"
              "\0User"s);
}

TEST_F(ChannelMessages, AnEmptyTextHasOnlyItsLength) {
    store = {"", "User"};
    sendSync(*peer, store);
    EXPECT_EQ(stream(), number32(3) + number32(0) + counted("User"));
}

TEST_F(ChannelMessages, ATextGoesWithoutItsTerminator) {
    platform::WideString text = platform::toWide("MF");
    EXPECT_EQ(sentFor(test::textVariant(text)), head(4) + number32(4) + framed("M\0F\0"s));
    platform::WideString empty;
    EXPECT_EQ(sentFor(test::textVariant(empty)), head(4) + number32(0));
}

TEST_F(ChannelMessages, AListGoesWithAllTerminators) {
    platform::WideString a = platform::toWide("a");
    platform::WideString b = platform::toWide("b");
    std::array<LPWSTR, 2> strings = {a.data(), b.data()};
    EXPECT_EQ(sentFor(test::listVariant(strings)), head(5) + number32(8) + framed("a\0\0\0b\0\0\0"s));
}

TEST_F(ChannelMessages, NumbersGoInOneWrite) {
    EXPECT_EQ(sentFor(test::unsignedVariant(0x12345678)), head(6) + number32(0x12345678));
    EXPECT_EQ(sentFor(test::signedVariant(-1)), head(6) + number32(0xFFFFFFFF));
    EXPECT_EQ(sentFor(test::wideVariant(0x1122334455667788)),
              head(7) + framed(littleEndian(0x1122334455667788, 8)));
}

TEST_F(ChannelMessages, ABlobGoesWithItsLength) {
    std::array<BYTE, 3> bytes = {1, 0, 3};
    EXPECT_EQ(sentFor(test::blobVariant(bytes)), head(8) + number32(3) + framed("\1\0\3"s));
    EXPECT_EQ(sentFor(test::blobVariant({})), head(8) + number32(0));
}

TEST_F(ChannelMessages, NoValueAndUnknownKindsSendNothing) {
    EXPECT_EQ(sentFor(test::variantOfKind(VT_EMPTY)), "");
    sendValue(*peer, store, "{a},7", {VT_R4, {}});
    EXPECT_EQ(stream(), "");
}

TEST_F(ChannelMessages, TheEndOfAValueIsItsName) {
    sendDeleteValue(*peer, store, "{a},7");
    EXPECT_EQ(stream(), head(9));
}

TEST_F(ChannelMessages, AFieldThatFailsKeepsNoOtherBack) {
    script.outcomes = {{.isDone = true, .byteCount = 5}, {.error = 5}};
    EXPECT_EQ(sentFor(test::unsignedVariant(1)), head(6) + number32(1));
    EXPECT_EQ(peer->lastError(), 5U);
}

}  // namespace
}  // namespace korva::params
