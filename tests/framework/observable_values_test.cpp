// Values of every type in use: all behave alike but for equality and for what a copy means.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "framework/observable.h"
#include "framework/shared_bytes.h"
#include "platform/published/base_types.h"
#include "tests/support/active_counter.h"
#include "tests/support/counting_listener.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::CountingListener;
using test::LifeCounts;
using test::referencesTo;
using test::ValueOwner;

struct Words {
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
    std::uint32_t d = 0;
};
static_assert(sizeof(Words) == 16);

struct Meters {
    std::array<float, 8> levels{};

    friend bool operator==(const Meters&, const Meters&) = default;
};
static_assert(sizeof(Meters) == 32);

struct Volume {
    bool mute = false;
    float level = 0;

    friend bool operator==(const Volume&, const Volume&) = default;
};

using Wide = std::basic_string<WCHAR>;
using Part = ValueOwner<bool>;

// Two values of a type that differ from each other and from the default.
template <class T>
std::array<T, 2> samples() {
    if constexpr (std::is_same_v<T, Ref<ActiveObject>>) {
        return {create<Part>(), create<Part>()};
    } else if constexpr (std::is_same_v<T, Held<ActiveObject>>) {
        return {T::first(create<Part>()), T::first(create<Part>())};
    } else if constexpr (std::is_same_v<T, std::shared_ptr<const Words>>) {
        return {std::make_shared<const Words>(), std::make_shared<const Words>()};
    } else if constexpr (std::is_same_v<T, std::string>) {
        return {"a string that is too long to be kept inside the object", std::string("a\0b", 3)};
    } else if constexpr (std::is_same_v<T, Wide>) {
        return {Wide(40, WCHAR{0xE4}), Wide(40, WCHAR{0xE5})};
    } else if constexpr (std::is_same_v<T, std::vector<float>>) {
        return {T{1.0F, 2.0F}, T{1.0F, 2.0F, 3.0F}};
    } else if constexpr (std::is_same_v<T, SharedBytes>) {
        return {SharedBytes(std::vector(5, std::byte{1})), SharedBytes(std::vector(5, std::byte{2}))};
    } else if constexpr (std::is_same_v<T, GUID>) {
        return {GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 12}}};
    } else if constexpr (std::is_same_v<T, Words>) {
        return {Words{0, 0, 0, 1}, Words{1, 0, 0, 0}};
    } else if constexpr (std::is_same_v<T, Meters>) {
        return {Meters{{0, 0, 0, 0, 0, 0, 0, 1}}, Meters{{0, 0, 0, 0, 0, 0, 0, 2}}};
    } else if constexpr (std::is_same_v<T, Volume>) {
        return {Volume{true, 0}, Volume{true, 0.5F}};
    } else {
        return {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest() + T{1}};
    }
}

template <class T>
class ObservableOfType : public testing::Test {
protected:
    const Ref<ValueOwner<T>> owner = create<ValueOwner<T>>();
    Observable<T>& value = owner->value;
    const std::array<T, 2> sample = samples<T>();
    CountingListener listener;
};

using ValueTypes = testing::Types<std::int32_t, std::uint32_t, float, std::uint64_t, GUID, Words, Meters,
                                  Volume, std::string, Wide, std::vector<float>, Ref<ActiveObject>,
                                  Held<ActiveObject>, std::shared_ptr<const Words>, SharedBytes>;
TYPED_TEST_SUITE(ObservableOfType, ValueTypes);

TYPED_TEST(ObservableOfType, StartsAtItsDefault) {
    EXPECT_TRUE(this->value.isDefault());
    EXPECT_TRUE(equalValues(this->value.value(), TypeParam{}));
    EXPECT_TRUE(equalValues(this->value.pending(), TypeParam{}));
}

TYPED_TEST(ObservableOfType, ADifferentValueIsPublishedAndTold) {
    this->listener.listenTo(this->value);

    EXPECT_EQ(this->value.set(this->sample[0]), 0U);
    EXPECT_EQ(this->value.set(this->sample[1]), 0U);

    EXPECT_TRUE(equalValues(this->value.value(), this->sample[1]));
    EXPECT_FALSE(this->value.isDefault());
    EXPECT_EQ(this->listener.propagations, 2);
    EXPECT_EQ(this->listener.befores, 2);
    EXPECT_EQ(this->listener.afters, 2);
}

TYPED_TEST(ObservableOfType, AnEqualValueGives2AndCallsNobody) {
    this->value.set(this->sample[0]);
    this->listener.listenTo(this->value);
    const TypeParam equal = this->sample[0];

    EXPECT_EQ(this->value.set(equal), 2U);

    EXPECT_EQ(this->listener.propagations, 0);
    EXPECT_EQ(this->listener.afters, 0);
}

TYPED_TEST(ObservableOfType, APulseAndAResetComeBackToTheDefault) {
    this->listener.listenTo(this->value);

    this->value.set(this->sample[0], Observable<TypeParam>::pulse);
    EXPECT_TRUE(this->value.isDefault());
    this->value.set(this->sample[1]);
    this->value.reset();

    EXPECT_TRUE(this->value.isDefault());
    EXPECT_EQ(this->listener.afters, 4);
}

TYPED_TEST(ObservableOfType, APhaseIsPublishedByTheCommit) {
    this->value.beginChange(this->sample[0]);
    EXPECT_TRUE(this->value.isDefault());

    this->value.commitChange();

    EXPECT_TRUE(equalValues(this->value.value(), this->sample[0]));
    this->value.finishChange();
}

TYPED_TEST(ObservableOfType, StrangersSetAndRead) {
    const DispatcherUse worker = Dispatcher::start();
    Ref<ValueOwner<TypeParam>> remote;
    worker->runSynchronously([&] { remote = create<ValueOwner<TypeParam>>(); });

    EXPECT_EQ(remote->value.set(this->sample[0]), 0U);
    EXPECT_TRUE(equalValues(remote->value.read(), this->sample[0]));
    EXPECT_EQ(remote->value.set(this->sample[0]), 2U);

    EXPECT_EQ(remote->value.reset(), 0U);
}

TEST(ObservableValue, AFlagIsSetAndUnset) {
    const auto owner = create<ValueOwner<bool>>();
    CountingListener listener;
    listener.listenTo(owner->value);

    EXPECT_EQ(owner->value.set(false), 2U);
    EXPECT_EQ(owner->value.set(true), 0U);
    EXPECT_EQ(owner->value.set(true), 2U);
    EXPECT_EQ(owner->value.set(false), 0U);

    EXPECT_EQ(listener.afters, 2);
}

TEST(ObservableValue, ANaNIsAChangeEachTime) {
    const auto owner = create<ValueOwner<float>>();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(owner->value.set(nan), 0U);
    EXPECT_EQ(owner->value.set(nan), 0U);
    CountingListener listener;
    listener.listenTo(owner->value);

    EXPECT_EQ(owner->value.set(nan), 0U);
    EXPECT_EQ(owner->value.set(nan), 0U);
    EXPECT_EQ(owner->value.set(1), 0U);

    EXPECT_EQ(listener.befores, 3);
    EXPECT_EQ(listener.afters, 3);
}

TEST(ObservableValue, ARecordWithANaNIsAChangeEachTime) {
    const auto owner = create<ValueOwner<Meters>>();
    Meters meters;
    meters.levels[7] = std::numeric_limits<float>::quiet_NaN();
    CountingListener listener;
    listener.listenTo(owner->value);

    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(owner->value.set(meters), 0U);
    }

    EXPECT_EQ(listener.propagations, 3);
    EXPECT_EQ(listener.afters, 3);
}

TEST(ObservableValue, AVectorWithANaNIsAChangeEachTime) {
    const auto owner = create<ValueOwner<std::vector<float>>>();
    const std::vector<float> levels{0, std::numeric_limits<float>::quiet_NaN()};
    CountingListener listener;
    listener.listenTo(owner->value);

    owner->value.set(levels);
    owner->value.set(levels);

    EXPECT_EQ(listener.afters, 2);
}

TEST(ObservableValue, NegativeZeroEqualsZero) {
    const auto single = create<ValueOwner<float>>();
    const auto record = create<ValueOwner<Meters>>();
    const auto vector = create<ValueOwner<std::vector<float>>>();
    vector->value.set({0.0F});

    EXPECT_EQ(single->value.set(-0.0F), 2U);
    EXPECT_FALSE(std::signbit(single->value.value()));
    EXPECT_EQ(record->value.set(Meters{{-0.0F}}), 2U);
    EXPECT_EQ(vector->value.set({-0.0F}), 2U);
}

TEST(ObservableValue, StringsAreComparedByLengthAndContentsBeyondAZero) {
    const auto owner = create<ValueOwner<std::string>>();
    owner->value.set(std::string("a\0b", 3));

    EXPECT_EQ(owner->value.set(std::string("a\0b", 3)), 2U);
    EXPECT_EQ(owner->value.set(std::string("a\0c", 3)), 0U);
    EXPECT_EQ(owner->value.set("a"), 0U);
    EXPECT_EQ(owner->value.set(std::string("a\0", 2)), 0U);
}

TEST(ObservableValue, VectorsAreComparedByLengthAndContents) {
    const auto owner = create<ValueOwner<std::vector<float>>>();
    owner->value.set({1, 2});

    EXPECT_EQ(owner->value.set({1, 2}), 2U);
    EXPECT_EQ(owner->value.set({1}), 0U);
    EXPECT_EQ(owner->value.set({1, 2, 3}), 0U);
    EXPECT_EQ(owner->value.set({}), 0U);
}

TEST(ObservableValue, PointersAreComparedByWhatTheyPointAtNotByItsContents) {
    const auto owner = create<ValueOwner<std::shared_ptr<const Words>>>();
    owner->value.set(std::make_shared<const Words>());

    EXPECT_EQ(owner->value.set(std::make_shared<const Words>()), 0U);
}

TEST(ObservablePointer, HasOneShareOfWhatItPointsAtAndAnotherOfWhatAChangeBrings) {
    LifeCounts counts;
    const auto owner = create<ValueOwner<Ref<ActiveCounter>>>();
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    owner->value.beginChange(object);
    EXPECT_EQ(referencesTo(*object), 2U);
    EXPECT_EQ(owner->value.pending(), object);
    owner->value.commitChange();
    owner->value.finishChange();

    EXPECT_EQ(referencesTo(*object), 2U);
    EXPECT_EQ(owner->value.pending(), object);
}

TEST(ObservablePointer, AnEqualPointerGivesTheArgumentsShareBack) {
    LifeCounts counts;
    const auto owner = create<ValueOwner<Ref<ActiveCounter>>>();
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    owner->value.set(object);

    EXPECT_EQ(owner->value.set(Ref<ActiveCounter>(object)), 2U);

    EXPECT_EQ(referencesTo(*object), 2U);
}

TEST(ObservablePointer, TheOldObjectIsDroppedAtTheCommit) {
    LifeCounts former;
    LifeCounts latter;
    const auto owner = create<ValueOwner<Ref<ActiveCounter>>>();
    owner->value.set(create<ActiveCounter>(former));

    owner->value.beginChange(create<ActiveCounter>(latter));
    EXPECT_EQ(former.ends, 0);
    EXPECT_EQ(referencesTo(*owner->value.value()), 1U);
    owner->value.commitChange();
    EXPECT_EQ(former.ends, 1);
    owner->value.finishChange();

    EXPECT_EQ(latter.ends, 0);
    EXPECT_EQ(referencesTo(*owner->value.value()), 1U);
}

TEST(ObservablePointer, ItsObjectsEndWithItsOwner) {
    LifeCounts counts;
    auto owner = create<ValueOwner<Ref<ActiveCounter>>>();
    owner->value.set(create<ActiveCounter>(counts));

    owner = nullptr;

    EXPECT_EQ(counts.ends, 1);
}

TEST(ObservableHeld, AHeldObjectOutlivesTheShareOfItsMaker) {
    LifeCounts counts;
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();
    auto local = Held<ActiveCounter>::first(create<ActiveCounter>(counts));

    owner->value.set(local);
    local = nullptr;

    EXPECT_EQ(counts.closes, 0);
    EXPECT_TRUE(owner->value.value()->isAlive.value());
    EXPECT_EQ(owner->value.value()->closedCounter()->get(), 0U);
    EXPECT_EQ(referencesTo(*owner->value.value()), 1U);
}

TEST(ObservableHeld, AnEqualOneGivesTheArgumentsHoldBack) {
    LifeCounts counts;
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();
    auto local = Held<ActiveCounter>::first(create<ActiveCounter>(counts));
    const Ref<ActiveCounter> watched = local.ref();
    owner->value.set(local);

    EXPECT_EQ(owner->value.set(local), 2U);
    local = nullptr;
    EXPECT_EQ(counts.closes, 0);
    owner->value.set(nullptr);

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(referencesTo(*watched), 1U);
}

TEST(ObservableHeld, TheOldOneClosesAtTheCommitAfterTheBeforeFunctions) {
    LifeCounts former;
    LifeCounts latter;
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();
    owner->value.set(Held<ActiveCounter>::first(create<ActiveCounter>(former)));
    struct Seen {
        LifeCounts& counts;
        int before = -1;
        int after = -1;
    } seen{former};
    owner->value.subscribe(
        &seen,
        [](void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
            static_cast<Seen*>(context)->before = static_cast<Seen*>(context)->counts.closes;
        },
        [](void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
            static_cast<Seen*>(context)->after = static_cast<Seen*>(context)->counts.closes;
        });

    owner->value.set(Held<ActiveCounter>::first(create<ActiveCounter>(latter)));

    EXPECT_EQ(seen.before, 0);
    EXPECT_EQ(seen.after, 1);
    EXPECT_EQ(former.ends, 1);
    EXPECT_EQ(latter.closes, 0);
}

// What sets the value again while the object that it held closes.
void expectNoSetFromTheCloseOfWhatGoes(Observable<Held<ActiveCounter>>& value) {
    LifeCounts counts;
    const auto second = Held<ActiveCounter>::first(create<ActiveCounter>(counts));
    const auto third = Held<ActiveCounter>::first(create<ActiveCounter>(counts));
    auto first = Held<ActiveCounter>::first(create<ActiveCounter>(counts));
    first->atClose = [&](ActiveCounter&) { value.set(third); };
    value.set(first);
    first = nullptr;

    value.set(second);

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(value.value(), second);
    EXPECT_EQ(value.pending(), second);
    value.set(nullptr);
}

TEST(ObservableHeld, ASetFromTheCloseOfTheObjectThatGoesIsDropped) {
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();
    CountingListener listener;
    listener.listenTo(owner->value);

    expectNoSetFromTheCloseOfWhatGoes(owner->value);
}

TEST(ObservableHeld, ASetFromTheCloseOfTheObjectThatGoesIsDroppedWithSubscribersOnly) {
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();
    CountingListener listener;
    owner->value.subscribe(&listener, nullptr, &CountingListener::after);

    expectNoSetFromTheCloseOfWhatGoes(owner->value);

    EXPECT_EQ(listener.afters, 3);
}

TEST(ObservableHeld, ASetFromTheCloseOfTheObjectThatGoesIsDroppedWithoutListeners) {
    const auto owner = create<ValueOwner<Held<ActiveCounter>>>();

    expectNoSetFromTheCloseOfWhatGoes(owner->value);
}

// A holder that stands with its foot in whatever the pointer points at.
struct Attached {
    using Pointer = Ref<ValueOwner<std::uint32_t>>;

    test::DiaryListener& listener;

    static void detach(void* context, ListenedTo&, ActiveObject&, const void* published, void* pending,
                       const void*, Reason reason) {
        const auto& former = *static_cast<const Pointer*>(published);
        if (former && (former != *static_cast<Pointer*>(pending) || reason == Reason::removed)) {
            static_cast<Attached*>(context)->listener.unsubscribe(former->value);
        }
    }
    static void attach(void* context, ListenedTo&, ActiveObject&, const void* published, void*, const void*,
                       Reason) {
        if (const auto& latter = *static_cast<const Pointer*>(published)) {
            static_cast<Attached*>(context)->listener.subscribe(latter->value);
        }
    }
};

TEST(ObservablePointer, AHolderFollowsItFromOneObjectToTheNext) {
    const auto owner = create<ValueOwner<Attached::Pointer>>();
    const Attached::Pointer one = create<ValueOwner<std::uint32_t>>();
    const Attached::Pointer other = create<ValueOwner<std::uint32_t>>();
    test::Diary diary;
    test::DiaryListener listener(diary, "holder");
    Attached attached{listener};
    owner->value.set(one);
    owner->value.subscribe(&attached, &Attached::detach, &Attached::attach, Position::last, true, true);

    one->value.set(1);
    EXPECT_EQ(diary.size(), 2U);
    owner->value.set(other);
    one->value.set(2);
    EXPECT_EQ(diary.size(), 2U);
    other->value.set(3);
    EXPECT_EQ(diary.size(), 4U);
    owner->value.unsubscribe(&attached, &Attached::detach, &Attached::attach, true, false);
    other->value.set(4);

    EXPECT_EQ(diary.size(), 4U);
}

}  // namespace
}  // namespace korva::framework
