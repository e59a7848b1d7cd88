// What values cost in memory: an object has hundreds of them.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "framework/active_object.h"
#include "framework/observable.h"
#include "tests/support/diary_listener.h"

namespace korva::framework {
namespace {

template <std::size_t Count>
struct ValuesOf {
    template <class Owner>
    explicit ValuesOf(Owner& owner) : one(owner), rest(owner) {}

    Observable<std::uint32_t> one;
    ValuesOf<Count - 1> rest;
};

template <>
struct ValuesOf<0> {
    template <class Owner>
    explicit ValuesOf(Owner&) {}
};

template <std::size_t Count>
class Board final : public ObjectClass<Board<Count>, ActiveObject> {
public:
    ValuesOf<Count> values{*this};
};

// A value that shows its owner's table.
class TableView final : public ListenedTo {
public:
    explicit TableView(ObservableOwner& owner) noexcept : ListenedTo(owner) {}
    using ListenedTo::propagatorSlots;
    using ListenedTo::subscriberSlots;
};

class Heard final : public ObjectClass<Heard, ActiveObject> {
public:
    Observable<std::uint32_t> value{*this};
    TableView tables{*this};
};

TEST(ObservableSize, AWordAndItsShareOfTheOwnerTake64BytesAtMost) {
    EXPECT_LE(sizeof(Observable<std::uint32_t>), 64U);
    EXPECT_LE((sizeof(Board<110>) - sizeof(Board<10>)) / 100, 64U);
}

TEST(ObservableSize, EveryValueFindsItsOwnerAndItsListeners) {
    const auto board = create<Board<3>>();
    test::Diary diary;
    test::DiaryListener listener(diary, "meter");
    Observable<std::uint32_t>& last = board->values.rest.rest.one;
    listener.subscribe(last);

    last.set(5);
    board->values.one.set(6);

    EXPECT_EQ(&last.owner(), static_cast<ObservableOwner*>(board.get()));
    EXPECT_EQ(diary, (test::Diary{"meter before 0 to 5", "meter after 5 to 5"}));
}

TEST(ObservableSize, AValueWithoutListenersHasNoNodes) {
    const Ref<Heard> object = create<Heard>();
    for (std::uint32_t number = 1; number < 1000; ++number) {
        object->value.set(number);
    }

    EXPECT_EQ(object->tables.subscriberSlots().usedCount(), 1U);
    EXPECT_EQ(object->tables.subscriberSlots().capacity(), 0U);
    EXPECT_EQ(object->tables.propagatorSlots().capacity(), 0U);
}

TEST(ObservableSize, OneOfAThousandSubscribersTakes48BytesAtMost) {
    constexpr std::size_t count = 1000;
    const Ref<Heard> object = create<Heard>();
    test::Diary diary;
    test::DiaryListener listener(diary, "meter");

    for (std::size_t index = 0; index < count; ++index) {
        ASSERT_NE(listener.subscribe(object->value), 0U);
    }

    const SlotTable<SubscriberNode>& table = object->tables.subscriberSlots();
    EXPECT_EQ(table.usedCount(), count + 1);
    EXPECT_LE(table.capacity() * (sizeof(SubscriberNode) + sizeof(std::uint32_t)), 48 * count);
}

}  // namespace
}  // namespace korva::framework
