#include "services/instance_record.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "framework/dispatcher.h"
#include "platform/guid_literal.h"
#include "services/telemetry_row.h"
#include "tests/services/noting_store.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"

namespace korva::services {
namespace {

using framework::ActiveObject;
using framework::ListenedTo;
using framework::Observable;
using framework::Reason;
using framework::Ref;
using test::NotingStore;
using test::ShownValues;
using test::shownValuesOf;

using Notes = std::vector<std::string>;
using Levels = std::array<float, 8>;

constexpr std::uint32_t lastingDefault = 5;

/// A value of each form.
class Readings final : public framework::ObjectClass<Readings, ActiveObject> {
public:
    Observable<std::uint32_t> count{*this};
    Observable<std::uint32_t> change{*this};
    Observable<std::uint64_t> version{*this};
    Observable<platform::WideString> place{*this};
    Observable<Levels> levels{*this};
    Observable<ByteCount> bytes{*this};
    Observable<ByteCount> total{*this};
    Observable<std::uint32_t> fifth{*this, lastingDefault};
};

constexpr std::array rows = {
    row<&Readings::count, Dword<VT_UI4>>("Count", platform::guidOf("{00000001-0000-0000-0000-000000000000}")),
    row<&Readings::change, Dword<VT_I4>>("Change",
                                         platform::guidOf("{00000002-0000-0000-0000-000000000000}")),
    row<&Readings::version, Qword>("Version", platform::guidOf("{00000003-0000-0000-0000-000000000000}")),
    row<&Readings::place, Text>("Place", platform::guidOf("{00000004-0000-0000-0000-000000000000}")),
    row<&Readings::levels, Blob<Levels>>("Levels",
                                         platform::guidOf("{00000005-0000-0000-0000-000000000000}")),
    row<&Readings::bytes, ByteCounts>("Bytes", platform::guidOf("{00000006-0000-0000-0000-000000000000}")),
    row<&Readings::total, BytesOnly>("Total", platform::guidOf("{00000007-0000-0000-0000-000000000000}")),
    row<&Readings::fifth, Dword<VT_UI4>>("Fifth", platform::guidOf("{00000008-0000-0000-0000-000000000000}")),
};

// The first number of the type's GUID, then the instance's.
constexpr const char* typeShown = "253490024,9 31:XFX";
constexpr const char* typeEmptied = "253490024,9 0:";

/// What is shown of a set of values, and by whom.
class StoreHolder final : public framework::ObjectClass<StoreHolder, ActiveObject> {
public:
    Observable<Ref<IPropertyStore>> store{*this};
};

/// Calls a function before and after each change of a value.
struct Listener {
    std::function<void()> before = [] {};
    std::function<void()> after = [] {};

    void listenTo(framework::ObservableBase& value) {
        value.subscribe(
            this,
            [](void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
                static_cast<Listener*>(context)->before();
            },
            [](void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
                static_cast<Listener*>(context)->after();
            });
    }
};

/// A record with a store, of values of this thread.
class InstanceRecordTest : public testing::Test {
protected:
    InstanceRecordTest() { holder->store.set(Ref<IPropertyStore>::share(&store)); }
    ~InstanceRecordTest() override { record->detach(*readings); }

    void setAll() {
        readings->fifth.set(0);
        readings->total.set({1, 2, 3, 4});
        readings->bytes.set({5, 6, 7, 8});
        readings->levels.set({1, 0, 0, 0, 0, 0, 0, 0.5F});
        readings->place.set(platform::toWide("K\xC3\xB6ln"));
        readings->version.set(0x0002000100020011);
        readings->change.set(0xFFFFFFFE);
        readings->count.set(3);
    }
    void attach() { record->attach(*readings, rows); }
    void detach() { record->detach(*readings); }

    [[nodiscard]] std::string nameOfKey() const {
        return record->key.path().substr(instance_place::instances.size() + 1);
    }
    /// Without the time of the last write.
    [[nodiscard]] ShownValues values() const {
        ShownValues shown = shownValuesOf(base.open(nameOfKey()));
        shown.erase("WriteTime");
        return shown;
    }

    const test::OwnRegistry registry;
    const test::TelemetryBase base;
    NotingStore store;
    const Ref<StoreHolder> holder = framework::create<StoreHolder>();
    const Ref<Readings> readings = framework::create<Readings>();
    std::optional<InstanceRecord> record{std::in_place, 9U, "XFX", holder->store};
};

const Notes allShown = {typeShown,
                        "1,9 19:3",
                        "2,9 3:-2",
                        "3,9 21:562954248519697",
                        "4,9 31:K\xC3\xB6ln",
                        "5,9 65:0000803f0000000000000000000000000000000000000000000000000000003f",
                        "6,9 65:05000000060000000700000008000000",
                        "7,9 65:01000000020000000300000004000000",
                        "8,9 19:0"};
const Notes allEmptied = {
    typeEmptied, "1,9 0:", "2,9 0:", "3,9 0:", "4,9 0:", "5,9 0:", "6,9 0:", "7,9 0:", "8,9 0:"};

TEST_F(InstanceRecordTest, ShowsNothingBeforeItIsAttached) {
    setAll();
    EXPECT_EQ(store.newNotes(), Notes{});
    EXPECT_TRUE(shownValuesOf(base.open(nameOfKey())).empty());
}

TEST_F(InstanceRecordTest, ShowsAllThatIsSetAtOnceInTheRowsOrder) {
    setAll();
    attach();
    EXPECT_EQ(store.newNotes(), allShown);
}

TEST_F(InstanceRecordTest, WritesEachFormWithItsTypeAndBytes) {
    setAll();
    attach();
    const ShownValues expected = {
        {"APOTypeStr", "1:58465800"},
        {"Count", "4:03000000"},
        {"Change", "4:feffffff"},
        {"Version", "11:1100020001000200"},
        {"Place", "1:4bc3b66c6e00"},
        {"Levels", "3:0000803f0000000000000000000000000000000000000000000000000000003f"},
        {"BytesClockStart", "4:06000000"},
        {"BytesClockEnd", "4:07000000"},
        {"Bytes", "4:05000000"},
        {"Total", "4:01000000"},
        {"Fifth", "4:00000000"}};
    EXPECT_EQ(values(), expected);
}

TEST_F(InstanceRecordTest, AStringOfAnyLengthKeepsIt) {
    attach();
    for (std::size_t length = 1; length < 40; ++length) {
        const std::string text(length, 'p');
        readings->place.set(platform::toWide(text));
        EXPECT_EQ(values().at("Place"), "1:" + test::hexOf(text) + "00") << length;
    }
}

TEST_F(InstanceRecordTest, ShowsTheTypeAloneWhileAllIsAtItsDefault) {
    attach();
    EXPECT_EQ(store.newNotes(), Notes{typeShown});
    EXPECT_EQ(values(), (ShownValues{{"APOTypeStr", "1:58465800"}}));
}

TEST_F(InstanceRecordTest, TakesNegativeZerosForZeros) {
    readings->levels.set({-0.0F, 0, 0, 0, 0, 0, 0, 0});
    attach();
    EXPECT_EQ(store.newNotes(), Notes{typeShown});
}

// It is equal to nothing, so it isn't the default.
TEST_F(InstanceRecordTest, ShowsLevelsThatAreNoNumbers) {
    readings->levels.set({std::numeric_limits<float>::quiet_NaN(), 0, 0, 0, 0, 0, 0, 0});
    attach();
    EXPECT_EQ(values().at("Levels").substr(0, 10), "3:0000c07f");
}

TEST_F(InstanceRecordTest, EmptiesAPropertyBeforeItsValueChanges) {
    attach();
    static_cast<void>(store.newNotes());
    readings->count.set(1);
    EXPECT_EQ(store.newNotes(), Notes{"1,9 19:1"});
    readings->count.set(2);
    EXPECT_EQ(store.newNotes(), (Notes{"1,9 0:", "1,9 19:2"}));
    readings->count.set(2);
    EXPECT_EQ(store.newNotes(), Notes{});
    EXPECT_EQ(values().at("Count"), "4:02000000");
}

TEST_F(InstanceRecordTest, AValueThatGoesBackToItsDefaultIsEmptiedAndStaysInTheKey) {
    setAll();
    attach();
    const ShownValues before = values();
    static_cast<void>(store.newNotes());
    readings->count.reset();
    readings->change.reset();
    readings->version.reset();
    readings->place.reset();
    readings->levels.reset();
    readings->bytes.reset();
    readings->total.reset();
    readings->fifth.reset();
    EXPECT_EQ(store.newNotes(), Notes(allEmptied.begin() + 1, allEmptied.end()));
    EXPECT_EQ(values(), before);
}

TEST_F(InstanceRecordTest, CountsOfBytesAreEqualWhenAllFourNumbersAre) {
    readings->bytes.set({5, 6, 7, 8});
    attach();
    static_cast<void>(store.newNotes());
    readings->bytes.set({5, 6, 7, 8});
    EXPECT_EQ(store.newNotes(), Notes{});
    readings->bytes.set({5, 6, 7, 9});
    EXPECT_EQ(store.newNotes(), (Notes{"6,9 0:", "6,9 65:05000000060000000700000009000000"}));
}

TEST_F(InstanceRecordTest, ItsDetachmentEmptiesAllThatIsSetInOrderAndLeavesTheKey) {
    setAll();
    readings->change.reset();
    attach();
    const ShownValues before = values();
    static_cast<void>(store.newNotes());
    detach();
    Notes expected = allEmptied;
    std::erase(expected, "2,9 0:");
    EXPECT_EQ(store.newNotes(), expected);
    EXPECT_EQ(values(), before);
}

TEST_F(InstanceRecordTest, ShowsNothingAfterItsDetachment) {
    attach();
    detach();
    static_cast<void>(store.newNotes());
    const ShownValues before = values();
    setAll();
    detach();
    EXPECT_EQ(store.newNotes(), Notes{});
    EXPECT_EQ(values(), before);
}

TEST_F(InstanceRecordTest, ShowsAllAnewWhenItIsAttachedAgain) {
    attach();
    detach();
    setAll();
    static_cast<void>(store.newNotes());
    attach();
    EXPECT_EQ(store.newNotes(), allShown);
}

TEST_F(InstanceRecordTest, AttachedTwiceShowsEachChangeOnce) {
    attach();
    attach();
    static_cast<void>(store.newNotes());
    readings->count.set(1);
    EXPECT_EQ(store.newNotes(), Notes{"1,9 19:1"});
    detach();
    EXPECT_EQ(store.newNotes(), (Notes{typeEmptied, "1,9 0:"}));
    readings->count.set(2);
    EXPECT_EQ(store.newNotes(), Notes{});
}

TEST_F(InstanceRecordTest, WritesToTheKeyWithoutAStoreToo) {
    holder->store.set({});
    setAll();
    attach();
    readings->count.set(4);
    EXPECT_EQ(store.newNotes(), Notes{});
    EXPECT_EQ(values().at("Count"), "4:04000000");
    EXPECT_EQ(values().size(), 11U);
}

TEST_F(InstanceRecordTest, GoesOnWithAStoreThatCameMeanwhile) {
    holder->store.set({});
    attach();
    holder->store.set(Ref<IPropertyStore>::share(&store));
    readings->count.set(4);
    EXPECT_EQ(store.newNotes(), Notes{"1,9 19:4"});
}

TEST_F(InstanceRecordTest, AStoreThatRefusesIsAskedOnceForEachValue) {
    store.answer = published::noInterface;
    setAll();
    attach();
    EXPECT_EQ(store.newNotes(), allShown);
    EXPECT_EQ(values().size(), 11U);
    detach();
    EXPECT_EQ(store.newNotes(), allEmptied);
}

TEST_F(InstanceRecordTest, SetsPropertiesThoughItsKeyIsDeleted) {
    setAll();
    attach();
    ASSERT_EQ(
        platform::RegistryKey::root(platform::RegistryRoot::localMachine).deleteTree(record->key.path()), 0);
    static_cast<void>(store.newNotes());
    readings->count.set(4);
    EXPECT_EQ(store.newNotes(), (Notes{"1,9 0:", "1,9 19:4"}));
    detach();
    EXPECT_EQ(store.newNotes(), allEmptied);
    EXPECT_TRUE(base.instances().empty());
}

TEST_F(InstanceRecordTest, AttachedWithinAChangeShowsWhatItBringsOnce) {
    Listener other;
    other.listenTo(readings->count);
    other.after = [&] { attach(); };
    readings->count.set(3);
    EXPECT_EQ(store.newNotes(), (Notes{typeShown, "1,9 19:3"}));
}

TEST_F(InstanceRecordTest, AttachedBeforeAValueChangesShowsBothInTurn) {
    readings->count.set(2);
    Listener other;
    other.listenTo(readings->count);
    other.before = [&] { attach(); };
    readings->count.set(3);
    const Notes notes = store.newNotes();
    ASSERT_GE(notes.size(), 3U);
    EXPECT_EQ(notes[1], "1,9 19:2");
    EXPECT_EQ(notes.back(), "1,9 19:3");
    EXPECT_EQ(values().at("Count"), "4:03000000");
}

TEST_F(InstanceRecordTest, AttachedWhileAChangeIsBegunOrCommittedEndsWithItsValue) {
    readings->count.beginChange(1);
    attach();
    EXPECT_EQ(store.newNotes(), Notes{typeShown});
    readings->count.commitChange();
    readings->count.finishChange();
    EXPECT_EQ(store.newNotes(), Notes{"1,9 19:1"});
    detach();
    readings->count.beginChange(2);
    readings->count.commitChange();
    attach();
    readings->count.finishChange();
    EXPECT_EQ(values().at("Count"), "4:02000000");
}

TEST_F(InstanceRecordTest, DetachedWithinAChangeShowsNoMore) {
    readings->count.set(1);
    attach();
    Listener other;
    other.listenTo(readings->count);
    other.after = [&] { detach(); };
    readings->count.set(2);
    readings->count.set(3);
    const Notes notes = store.newNotes();
    EXPECT_EQ(notes.back(), "1,9 0:");
    EXPECT_EQ(values().at("Count"), "4:02000000");
}

TEST_F(InstanceRecordTest, WhomTheStoreTellsOfAValueMayDetach) {
    setAll();
    int calls = 0;
    store.onSet = [&] {
        if (++calls == 3) {
            detach();
        }
    };
    attach();
    EXPECT_GT(calls, 3);
    static_cast<void>(store.newNotes());
    readings->count.set(4);
    readings->fifth.set(6);
    EXPECT_EQ(store.newNotes(), Notes{});
}

TEST_F(InstanceRecordTest, WhomTheStoreTellsOfTheTypeMayDetach) {
    setAll();
    store.onSet = [&] {
        store.onSet = [] {};
        detach();
    };
    attach();
    EXPECT_EQ(store.newNotes(), (Notes{typeShown, typeEmptied}));
    readings->count.set(4);
    EXPECT_EQ(store.newNotes(), Notes{});
}

// The store runs out of memory in place of this code, which can't be told apart.
TEST_F(InstanceRecordTest, WantOfMemoryIsNoReasonForAValuesChangeToFail) {
    setAll();
    attach();
    int calls = 0;
    store.onSet = [&] {
        if (++calls == 2) {
            throw std::bad_alloc();
        }
    };
    EXPECT_NO_THROW(readings->count.set(4));
    EXPECT_EQ(calls, 2);
    store.onSet = [] {};
    static_cast<void>(store.newNotes());
    readings->count.set(5);
    EXPECT_EQ(store.newNotes(), (Notes{"1,9 0:", "1,9 19:5"}));
}

TEST_F(InstanceRecordTest, AttachedWithoutMemoryShowsNothingUntilItIsAttachedAgain) {
    setAll();
    store.onSet = [&] {
        store.onSet = [] {};
        throw std::bad_alloc();
    };
    EXPECT_NO_THROW(attach());
    static_cast<void>(store.newNotes());
    readings->count.set(4);
    EXPECT_EQ(store.newNotes(), Notes{});
    attach();
    EXPECT_EQ(store.newNotes().size(), allShown.size());
}

// At the first call it is told of the type, and of a value at the others.
TEST_F(InstanceRecordTest, WhomTheStoreTellsMayAttachAnew) {
    setAll();
    for (const int call : {1, 2, 3, 9}) {
        int calls = 0;
        store.onSet = [&] {
            if (++calls == call) {
                detach();
                attach();
            }
        };
        attach();
        EXPECT_GE(calls, call);
        store.onSet = [] {};
        static_cast<void>(store.newNotes());
        readings->fifth.set(6);
        EXPECT_EQ(store.newNotes(), (Notes{"8,9 0:", "8,9 19:6"})) << call;
        detach();
        static_cast<void>(store.newNotes());
        readings->fifth.set(0);
        EXPECT_EQ(store.newNotes(), Notes{}) << call;
    }
}

TEST(InstanceRecord, WithoutAPlaceInTheRegistryStillSetsProperties) {
    const test::OwnRegistry registry;
    NotingStore store;
    const auto holder = framework::create<StoreHolder>();
    const auto readings = framework::create<Readings>();
    holder->store.set(Ref<IPropertyStore>::share(&store));
    InstanceRecord record(9, "XFX", holder->store);
    record.attach(*readings, rows);
    readings->count.set(1);
    record.detach(*readings);
    EXPECT_EQ(store.newNotes(), (Notes{typeShown, "1,9 19:1", typeEmptied, "1,9 0:"}));
}

/// Values of another thread than the record's.
class InstanceRecordOfAnotherThread : public testing::Test {
protected:
    template <class Object>
    Ref<Object> made() {
        Ref<Object> object;
        worker->runSynchronously([&] { object = framework::create<Object>(); });
        return object;
    }

    const test::OwnRegistry registry;
    const test::TelemetryBase base;
    NotingStore store;
    const Ref<StoreHolder> holder = framework::create<StoreHolder>();
    const framework::DispatcherUse worker = framework::Dispatcher::start();
};

TEST_F(InstanceRecordOfAnotherThread, ShowsThemAllTheSame) {
    holder->store.set(Ref<IPropertyStore>::share(&store));
    InstanceRecord record(9, "XFX", holder->store);
    const Ref<Readings> readings = made<Readings>();
    readings->count.set(1);
    record.attach(*readings, rows);
    readings->count.set(2);
    record.detach(*readings);
    readings->count.set(3);
    EXPECT_EQ(store.newNotes(), (Notes{typeShown, "1,9 19:1", "1,9 0:", "1,9 19:2", typeEmptied, "1,9 0:"}));
}

/// All that an instance has, on a thread of its own.
void liveAndShow(std::uint32_t number, std::vector<std::string>& notes) {
    const framework::DispatcherUse worker = framework::Dispatcher::start();
    NotingStore store;
    worker->runSynchronously([&] {
        const auto holder = framework::create<StoreHolder>();
        const auto readings = framework::create<Readings>();
        holder->store.set(Ref<IPropertyStore>::share(&store));
        for (int round = 0; round < 5; ++round) {
            InstanceRecord record(number, "XFX", holder->store);
            record.attach(*readings, rows);
            readings->count.set(number + 1);
            record.detach(*readings);
            readings->count.reset();
        }
    });
    notes = store.newNotes();
}

TEST(InstanceRecord, InstancesOfDifferentThreadsKeepApart) {
    const test::OwnRegistry registry;
    const test::TelemetryBase base;
    std::array<Notes, 4> notes;
    std::vector<std::thread> threads;
    for (std::uint32_t number = 0; number < notes.size(); ++number) {
        threads.emplace_back(liveAndShow, number, std::ref(notes[number]));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t number = 0; number < notes.size(); ++number) {
        const std::string own = "," + std::to_string(number) + " ";
        EXPECT_EQ(notes[number].size(), 20U);
        for (const std::string& note : notes[number]) {
            EXPECT_NE(note.find(own), std::string::npos) << note;
        }
    }
    EXPECT_TRUE(base.instances().empty());
}

}  // namespace
}  // namespace korva::services
