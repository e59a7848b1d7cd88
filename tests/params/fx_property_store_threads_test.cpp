#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "framework/dispatcher.h"
#include "params/fx_property_store.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "tests/params/own_store.h"
#include "tests/params/scripted_writer.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

using namespace std::string_view_literals;
using framework::Dispatcher;
using framework::DispatcherUse;
using framework::Ref;
using test::OwnStore;
using test::SignalListener;
using test::someKey;
using test::someName;
namespace registry_type = platform::registry_type;

Ref<FxPropertyStore> openOn(Dispatcher& owner, const OwnStore& own) {
    Ref<FxPropertyStore> store;
    owner.runSynchronously([&] { store = FxPropertyStore::Open(own.endpoint.id(), "User"); });
    return store;
}

TEST(FxPropertyStoreThreads, TheThreadThatOpensOwnsIt) {
    const OwnStore own;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<FxPropertyStore> store = openOn(*worker, own);
    ASSERT_NE(store, nullptr);
    EXPECT_FALSE(store->isOwnerThread());
    EXPECT_EQ(store->dispatcher(), worker.get());
}

TEST(FxPropertyStoreThreads, ReadingDoesNotWaitForABusyOwner) {
    const OwnStore own;
    own.fill(someName(1), registry_type::dword, "\5\0\0\0"sv);
    const DispatcherUse worker = Dispatcher::start();
    const Ref<FxPropertyStore> store = openOn(*worker, own);
    test::OneTimeGate mayEnd;
    test::OneTimeGate begun;
    worker->postAndForget([&] {
        begun.open();
        EXPECT_TRUE(mayEnd.pass());
    });
    EXPECT_TRUE(begun.pass());

    platform::PropertyValue value;
    EXPECT_EQ(store->GetValue(someKey(1), value.out()), published::ok);
    EXPECT_EQ(value->ulVal, 5U);
    DWORD count = 0;
    EXPECT_EQ(store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 1U);
    PROPERTYKEY key{};
    EXPECT_EQ(store->GetAt(0, &key), published::ok);
    EXPECT_EQ(store->Commit(), published::ok);
    mayEnd.open();
    worker->runSynchronously([] {});
}

TEST(FxPropertyStoreThreads, SignalsComeOnTheOwnersThread) {
    const OwnStore own;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<FxPropertyStore> store = openOn(*worker, own);
    struct Heard {
        Dispatcher* on = nullptr;
        std::vector<std::string> names;
    } heard;
    store->valueWritten.subscribe(&heard, nullptr, [](void* self, auto&, auto&, const void* value, auto...) {
        static_cast<Heard*>(self)->on = Dispatcher::current();
        static_cast<Heard*>(self)->names.push_back(*static_cast<const std::string*>(value));
    });
    EXPECT_EQ(store->SetValue(someKey(7), test::unsignedVariant(1)), published::ok);
    EXPECT_EQ(heard.on, worker.get());
    EXPECT_EQ(heard.names, (std::vector<std::string>{someName(7), ""})) << "the call has waited for both";
}

TEST(FxPropertyStoreThreads, AStoreClosesUnderItsReaders) {
    const OwnStore own;
    own.fill(someName(1), registry_type::string, "a\0\0\0"sv);
    const DispatcherUse worker = Dispatcher::start();
    const Ref<FxPropertyStore> store = openOn(*worker, own);
    std::vector<std::thread> readers;
    std::atomic<int> reading{0};
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            HRESULT result = published::ok;
            while (result == published::ok) {
                platform::PropertyValue value;
                result = store->GetValue(someKey(1), value.out());
                ++reading;
            }
            EXPECT_EQ(result, published::invalidHandle);
        });
    }
    while (reading < 30) {
        std::this_thread::yield();
    }
    store->close();
    for (std::thread& reader : readers) {
        reader.join();
    }
}

TEST(FxPropertyStoreThreads, ChannelsChangeUnderWriters) {
    const OwnStore own;
    test::WriterScript script;  // closed: no write touches it
    script.isOpen = false;
    const DispatcherUse worker = Dispatcher::start();
    Ref<FxPropertyStore> store = openOn(*worker, own);
    std::atomic<bool> mayEnd{false};
    std::thread writer([&] {
        while (!mayEnd) {
            EXPECT_EQ(store->SetValue(someKey(1), test::unsignedVariant(1)), published::ok);
            EXPECT_EQ(store->SetValue(someKey(1), test::variantOfKind(VT_EMPTY)), published::ok);
        }
    });
    for (int i = 0; i < 200; ++i) {
        store->attachedChannel.set(Ref<StoreChannel>::adopt(
            new StoreChannel(std::make_unique<test::ScriptedWriter>(script), {}, {})));
    }
    mayEnd = true;
    writer.join();
    store->close();
    store = nullptr;
    worker->runSynchronously([] {});
}

}  // namespace
}  // namespace korva::params
