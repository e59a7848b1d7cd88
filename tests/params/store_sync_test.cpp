#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>

#include "params/fx_property_store.h"
#include "platform/published/results.h"
#include "tests/params/own_store.h"
#include "tests/params/peer_stream.h"
#include "tests/params/scripted_writer.h"
#include "tests/support/stream_pipe.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using framework::Ref;
using test::counted;
using test::framed;
using test::number32;
using test::OwnStore;
using test::someKey;
using test::someName;
namespace registry_type = platform::registry_type;

Ref<StoreChannel> channelOver(std::unique_ptr<platform::StreamWriter> stream) {
    return Ref<StoreChannel>::adopt(new StoreChannel(std::move(stream), {}, {}));
}

/// A store with a peer that notes all it gets.
class StoreSync : public testing::Test {
protected:
    Ref<StoreChannel> newChannel() { return channelOver(std::make_unique<test::ScriptedWriter>(script)); }

    std::string head(std::uint32_t opcode) const {
        return test::messageHead(opcode, own.endpoint.id(), "User");
    }
    std::string head(std::uint32_t opcode, unsigned pid) const {
        return head(opcode) + counted(someName(pid));
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

    test::WriterScript script;  // outlives the channel that the store holds
    OwnStore own;
};

TEST_F(StoreSync, AChannelThatComesIsToldOfEveryValue) {
    own.fill(someName(1), registry_type::string, "a\0\0\0"sv);
    own.fill(someName(2), registry_type::multiString, "a\0\0\0\0\0"sv);
    own.fill(someName(3), registry_type::dword, "\1\0\0\0"sv);
    own.fill(someName(4), registry_type::binary, "bytes"sv);
    own.store->attachedChannel.set(newChannel());
    const std::string told = stream();
    EXPECT_TRUE(told.starts_with(head(3))) << "sync comes first";
    for (const std::string& message :
         {head(4, 1) + number32(2) + framed("a\0"s), head(5, 2) + number32(6) + framed("a\0\0\0\0\0"s),
          head(6, 3) + number32(1), head(8, 4) + counted("bytes")}) {
        EXPECT_NE(told.find(message), std::string::npos) << message;
    }
    EXPECT_EQ(told.size(), (head(3) + head(4, 1) + head(5, 2) + head(6, 3) + head(8, 4)).size() +
                               (number32(2) + framed("a\0"s) + number32(6) + framed("a\0\0\0\0\0"s)).size() +
                               (number32(1) + counted("bytes")).size());
}

TEST_F(StoreSync, OfAnEmptyKeyThereIsOnlySync) {
    own.store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), head(3));
}

TEST_F(StoreSync, ValuesThatCannotBeReadArePassedOver) {
    own.fill(someName(1), registry_type::qword, "\1\0\0\0\0\0\0\0"sv);
    own.fill("no key", registry_type::dword, "\1\0\0\0"sv);
    own.fill(someName(2), registry_type::dword, "\2\0\0\0"sv);
    own.store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), head(3) + head(6, 2) + number32(2));
}

TEST_F(StoreSync, ANameThatIsTooLongEndsIt) {
    own.fill(std::string(600, 'x'), registry_type::dword, "\1\0\0\0"sv);
    own.store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), head(3));
}

TEST_F(StoreSync, NothingIsPersisted) {
    const Ref<FxPropertyStore> store = own.persistent(own.store->key);  // which would refuse it
    own.fill(someName(2), registry_type::dword, "\2\0\0\0"sv);
    test::SignalListener written(store->valueWritten);
    store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), head(3) + head(6, 2) + number32(2));
    EXPECT_TRUE(written.heard.empty());
}

TEST_F(StoreSync, ChangesAreToldOfAfterwards) {
    own.store->attachedChannel.set(newChannel());
    stream();
    EXPECT_EQ(own.store->SetValue(someKey(9), test::wideVariant(5)), published::ok);
    EXPECT_EQ(stream(), head(7, 9) + framed(test::littleEndian(5, 8)));
    EXPECT_EQ(own.store->SetValue(someKey(9), test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_EQ(stream(), head(9, 9));
    EXPECT_EQ(own.store->SetValue(someKey(9), test::variantOfKind(VT_R4)), published::notImplemented);
    EXPECT_EQ(stream(), "");
}

TEST_F(StoreSync, WithoutAChannelNothingIsWritten) {
    EXPECT_EQ(own.store->SetValue(someKey(9), test::unsignedVariant(5)), published::ok);
    own.store->attachedChannel.set(newChannel());
    own.store->attachedChannel.set(nullptr);
    stream();
    EXPECT_EQ(own.store->SetValue(someKey(9), test::unsignedVariant(5)), published::ok);
    EXPECT_EQ(own.store->SetValue(someKey(9), test::variantOfKind(VT_EMPTY)), published::ok);
    EXPECT_EQ(stream(), "");
}

TEST_F(StoreSync, TheSameChannelIsToldOnce) {
    const Ref<StoreChannel> channel = newChannel();
    own.store->attachedChannel.set(channel);
    own.store->attachedChannel.set(channel);
    EXPECT_EQ(stream(), head(3));
    own.store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), head(3));
}

TEST_F(StoreSync, AFailingPeerIsNobodysFailure) {
    script.isOpen = false;
    own.store->attachedChannel.set(newChannel());
    test::SignalListener written(own.store->valueWritten);
    EXPECT_EQ(own.store->SetValue(someKey(9), test::unsignedVariant(5)), published::ok);
    EXPECT_EQ(written.heard.size(), 2U);
}

TEST_F(StoreSync, AClosedStoreTellsNoChannel) {
    own.store->close();
    own.store->attachedChannel.set(newChannel());
    EXPECT_EQ(stream(), "");
}

TEST_F(StoreSync, APeerReadsItAllFromAPipe) {
    own.fill(someName(1), registry_type::dword, "\1\0\0\0"sv);
    test::StreamPipe pipe;
    own.store->attachedChannel.set(channelOver(platform::openStreamWriter(pipe.takeWriteEnd())));
    EXPECT_EQ(own.store->SetValue(someKey(2), test::unsignedVariant(7)), published::ok);
    own.store->attachedChannel.set(nullptr);
    EXPECT_EQ(pipe.readAll(), head(3) + head(6, 1) + number32(1) + head(6, 2) + number32(7));
}

}  // namespace
}  // namespace korva::params
