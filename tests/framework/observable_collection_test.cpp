#include "framework/observable_collection.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "tests/support/active_counter.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::waitUntil;

using Lines = std::vector<std::string>;
using Move = ObservableCollection::Move;

// Writes down what comes and goes: an element is known by the number that it has as its value.
class Visitor {
public:
    Visitor(Lines& book, std::string visitorName) : lines(book), name(std::move(visitorName)) {}

    SlotHandle subscribe(ObservableCollection& collection, Position position = Position::last,
                         bool callBeforeNow = false, bool callAfterNow = false) {
        return collection.subscribe(this, &before, &after, position, callBeforeNow, callAfterNow);
    }
    void unsubscribe(ObservableCollection& collection, bool callBeforeNow = false,
                     bool callAfterNow = false) {
        collection.unsubscribe(this, &before, &after, callBeforeNow, callAfterNow);
    }

    std::function<void()> onBefore;
    std::function<void()> onAfter;

private:
    static void before(void* context, ListenedTo&, ActiveObject&, const void* published, void* pending,
                       const void* defaultValue, Reason reason) {
        auto& self = *static_cast<Visitor*>(context);
        self.write("before", published, pending, defaultValue, reason);
        if (self.onBefore) {
            self.onBefore();
        }
    }
    static void after(void* context, ListenedTo&, ActiveObject&, const void* published, void* pending,
                      const void* defaultValue, Reason reason) {
        auto& self = *static_cast<Visitor*>(context);
        self.write("after", published, pending, defaultValue, reason);
        if (self.onAfter) {
            self.onAfter();
        }
    }

    void write(const std::string& phase, const void* published, void* pending, const void* defaultValue,
               Reason reason) {
        const auto& element = static_cast<ActiveCounter&>(*static_cast<ActiveObject*>(pending));
        const bool isWellFormed = published == pending && defaultValue == nullptr;
        const std::string what = reason == Reason::added ? " added" : reason == Reason::left ? " left" : " ?";
        lines.push_back(name + " " + phase + " " + std::to_string(element.value.value()) + what +
                        (isWellFormed ? "" : " with wrong addresses"));
    }

    Lines& lines;
    std::string name;
};

class ObservableCollectionTest : public testing::Test {
protected:
    // What the visitors do ends with the test, but the collection tells them of each element that it lets go.
    void TearDown() override {
        for (Visitor* visitor : {&a, &b}) {
            visitor->onBefore = nullptr;
            visitor->onAfter = nullptr;
        }
    }

    // The collection is the only holder of what it is given.
    bool insert(std::uint32_t number, std::size_t index = ObservableCollection::atEnd) {
        Ref<ActiveCounter> element = create<ActiveCounter>(counts);
        element->value.set(number);
        return collection->insert(Held<ActiveObject>::first(element), index);
    }

    void insertAll(std::uint32_t count) {
        for (std::uint32_t number = 1; number <= count; ++number) {
            insert(number);
        }
        lines.clear();
    }

    [[nodiscard]] std::vector<std::uint32_t> numbers() const {
        std::vector<std::uint32_t> all;
        for (const auto& element : collection->elements()) {
            all.push_back(static_cast<ActiveCounter&>(*element).value.value());
        }
        return all;
    }

    using Numbers = std::vector<std::uint32_t>;

    LifeCounts counts;
    Lines lines;
    Visitor a{lines, "a"};
    Visitor b{lines, "b"};
    // The first to go: it tells its visitors of each element that it lets go.
    Ref<ObservableCollection> collection = create<ObservableCollection>();
};

TEST_F(ObservableCollectionTest, StartsEmpty) {
    EXPECT_TRUE(collection->elements().empty());
    EXPECT_EQ(collection->size.value(), 0);
    EXPECT_EQ(collection->lastMove.value(), (Move{nullptr, -1, -1}));
}

TEST_F(ObservableCollectionTest, InsertsAtTheEndOrBeforeAnIndex) {
    EXPECT_TRUE(insert(1));
    EXPECT_TRUE(insert(2));
    EXPECT_TRUE(insert(3, 0));
    EXPECT_TRUE(insert(4, 2));
    EXPECT_TRUE(insert(5, 4));

    EXPECT_EQ(numbers(), (Numbers{3, 1, 4, 2, 5}));
    EXPECT_EQ(collection->size.value(), 5);
}

TEST_F(ObservableCollectionTest, RefusesNullAndIndicesBehindTheEnd) {
    insert(1);
    const std::uint32_t orderBefore = collection->order.value();

    EXPECT_FALSE(collection->insert(nullptr));
    EXPECT_FALSE(insert(2, 2));
    EXPECT_FALSE(collection->removeAt(1));
    EXPECT_FALSE(collection->move(0, 1));
    EXPECT_FALSE(collection->move(1, 0));

    EXPECT_EQ(numbers(), Numbers{1});
    EXPECT_EQ(collection->order.value(), orderBefore);
}

TEST_F(ObservableCollectionTest, RemovesAnElementByItselfOrByItsIndex) {
    insertAll(3);

    EXPECT_TRUE(collection->remove(*collection->elements()[1]));
    EXPECT_EQ(numbers(), (Numbers{1, 3}));
    EXPECT_TRUE(collection->removeAt(0));

    EXPECT_EQ(numbers(), Numbers{3});
    EXPECT_EQ(collection->size.value(), 1);
}

TEST_F(ObservableCollectionTest, DoesNotRemoveAStranger) {
    insertAll(1);
    const Ref<ActiveCounter> stranger = create<ActiveCounter>(counts);

    EXPECT_FALSE(collection->remove(*stranger));

    EXPECT_EQ(numbers(), Numbers{1});
}

TEST_F(ObservableCollectionTest, ListenersHearOfWhatComesBeforeAndAfterItDoes) {
    a.subscribe(*collection);
    b.subscribe(*collection, Position::first);
    std::vector<std::size_t> sizes;
    a.onBefore = [&] { sizes.push_back(collection->elements().size()); };
    a.onAfter = a.onBefore;

    insert(7);

    EXPECT_EQ(lines, (Lines{"b before 7 added", "a before 7 added", "b after 7 added", "a after 7 added"}));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{0, 1}));
}

TEST_F(ObservableCollectionTest, ListenersHearOfWhatGoesBeforeAndAfterItDoes) {
    insertAll(2);
    a.subscribe(*collection);
    std::vector<std::size_t> sizes;
    a.onBefore = [&] { sizes.push_back(collection->elements().size()); };
    a.onAfter = a.onBefore;

    collection->removeAt(0);

    EXPECT_EQ(lines, (Lines{"a before 1 left", "a after 1 left"}));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 1}));
}

TEST_F(ObservableCollectionTest, SizeAndOrderChangeBetweenTheBeforeAndTheAfterFunctions) {
    a.subscribe(*collection);
    std::vector<std::int32_t> sizes;
    std::vector<std::uint32_t> orders;
    a.onBefore = [&] {
        sizes.push_back(collection->size.value());
        orders.push_back(collection->order.value());
    };
    a.onAfter = a.onBefore;

    insert(1);

    EXPECT_EQ(sizes, (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(orders[1], orders[0] + 1);
}

TEST_F(ObservableCollectionTest, OrderCountsInsertionsRemovalsAndMoves) {
    const std::uint32_t start = collection->order.value();

    insertAll(3);
    EXPECT_EQ(collection->order.value(), start + 3);
    collection->move(0, 2);
    EXPECT_EQ(collection->order.value(), start + 4);
    collection->removeAt(0);

    EXPECT_EQ(collection->order.value(), start + 5);
}

TEST_F(ObservableCollectionTest, MovesForwardAndBackward) {
    insertAll(4);
    const void* const first = collection->elements()[0].get();

    EXPECT_TRUE(collection->move(0, 2));
    EXPECT_EQ(numbers(), (Numbers{2, 3, 1, 4}));
    EXPECT_EQ(collection->lastMove.value(), (Move{first, 0, 2}));
    EXPECT_TRUE(collection->move(2, 0));
    EXPECT_EQ(numbers(), (Numbers{1, 2, 3, 4}));
    EXPECT_EQ(collection->lastMove.value(), (Move{first, 2, 0}));
    EXPECT_TRUE(collection->move(0, 3));

    EXPECT_EQ(numbers(), (Numbers{2, 3, 4, 1}));
}

TEST_F(ObservableCollectionTest, AMoveTellsNoListenerOfElements) {
    insertAll(2);
    a.subscribe(*collection);

    collection->move(0, 1);

    EXPECT_EQ(lines, Lines{});
    EXPECT_EQ(collection->size.value(), 2);
}

TEST_F(ObservableCollectionTest, AMoveToItsOwnPlaceChangesNothing) {
    insertAll(2);
    const std::uint32_t orderBefore = collection->order.value();

    EXPECT_TRUE(collection->move(1, 1));

    EXPECT_EQ(collection->order.value(), orderBefore);
    EXPECT_EQ(collection->lastMove.value(), (Move{nullptr, -1, -1}));
}

TEST_F(ObservableCollectionTest, ClearRemovesTheLastFirstAndTellsOfEach) {
    insertAll(3);
    a.subscribe(*collection);

    EXPECT_TRUE(collection->clear());

    EXPECT_EQ(lines, (Lines{"a before 3 left", "a after 3 left", "a before 2 left", "a after 2 left",
                            "a before 1 left", "a after 1 left"}));
    EXPECT_EQ(collection->size.value(), 0);
    EXPECT_TRUE(collection->clear());
}

TEST_F(ObservableCollectionTest, AListenerThatJoinsIsCalledForEachElementInIndexOrder) {
    insertAll(3);

    a.subscribe(*collection, Position::last, false, true);
    EXPECT_EQ(lines, (Lines{"a after 1 added", "a after 2 added", "a after 3 added"}));
    lines.clear();
    b.subscribe(*collection, Position::last, true, true);

    EXPECT_EQ(lines, (Lines{"b before 1 added", "b before 2 added", "b before 3 added", "b after 1 added",
                            "b after 2 added", "b after 3 added"}));
}

TEST_F(ObservableCollectionTest, AListenerThatLeavesIsCalledForEachElementInIndexOrder) {
    insertAll(2);
    a.subscribe(*collection);
    b.subscribe(*collection);

    a.unsubscribe(*collection, true, false);
    EXPECT_EQ(lines, (Lines{"a before 1 left", "a before 2 left"}));
    lines.clear();
    b.unsubscribe(*collection, true, true);
    EXPECT_EQ(lines, (Lines{"b after 1 left", "b after 2 left", "b before 1 left", "b before 2 left"}));
    lines.clear();
    insert(3);

    EXPECT_EQ(lines, Lines{});
}

TEST_F(ObservableCollectionTest, AListenerThatWasNotThereLeavesInSilence) {
    insertAll(2);

    a.unsubscribe(*collection, true, true);

    EXPECT_EQ(lines, Lines{});
}

TEST_F(ObservableCollectionTest, ChangesFromInsideAWalkAreDropped) {
    insertAll(2);
    a.subscribe(*collection);
    std::vector<bool> results;
    const auto change = [&] {
        results.push_back(insert(9));
        results.push_back(collection->removeAt(0));
        results.push_back(collection->remove(*collection->elements()[0]));
        results.push_back(collection->move(0, 1));
        results.push_back(collection->clear());
    };
    a.onBefore = change;
    a.onAfter = change;

    EXPECT_TRUE(insert(3));

    EXPECT_EQ(results, std::vector<bool>(10, false));
    EXPECT_EQ(numbers(), (Numbers{1, 2, 3}));
    EXPECT_EQ(lines, (Lines{"a before 3 added", "a after 3 added"}));
}

TEST_F(ObservableCollectionTest, TakesChangesAgainAfterAWalk) {
    a.subscribe(*collection);
    a.onAfter = [&] { insert(9); };
    insert(1);
    a.onAfter = nullptr;

    EXPECT_TRUE(insert(2));

    EXPECT_EQ(numbers(), (Numbers{1, 2}));
}

TEST_F(ObservableCollectionTest, TakesChangesAgainAfterAListenerRaised) {
    a.subscribe(*collection);
    a.onBefore = [] { throw std::runtime_error("listener"); };
    EXPECT_THROW(insert(1), std::runtime_error);
    a.onBefore = nullptr;

    EXPECT_TRUE(insert(2));

    EXPECT_EQ(numbers(), Numbers{2});
}

TEST_F(ObservableCollectionTest, AListenerThatComesDuringAWalkComesAfterTheRest) {
    Visitor late(lines, "late");
    a.subscribe(*collection);
    b.subscribe(*collection);
    a.onBefore = [&] {
        late.subscribe(*collection);
        lines.push_back("a goes on");
    };

    insert(1);

    EXPECT_EQ(lines, (Lines{"a before 1 added", "b before 1 added", "a goes on", "a after 1 added",
                            "b after 1 added", "late after 1 added"}));
    late.unsubscribe(*collection);
}

TEST_F(ObservableCollectionTest, AListenerThatLeavesDuringAWalkLeavesAfterTheRest) {
    a.subscribe(*collection);
    b.subscribe(*collection);
    a.onAfter = [&] {
        b.unsubscribe(*collection);
        lines.push_back("a goes on");
    };

    insert(1);
    lines.clear();
    insert(2);

    EXPECT_EQ(lines, (Lines{"a before 2 added", "a after 2 added", "a goes on"}));
}

TEST_F(ObservableCollectionTest, AListenerMayEmptyTheCollectionWhileItJoins) {
    insertAll(3);
    a.onAfter = [&] { collection->clear(); };

    a.subscribe(*collection, Position::last, false, true);

    EXPECT_TRUE(collection->elements().empty());
}

TEST_F(ObservableCollectionTest, AnElementThatLeavesIsClosedUnlessOthersHoldItToo) {
    insertAll(1);
    EXPECT_EQ(counts.closes, 0);
    const Held<ActiveObject> kept = collection->elements()[0];
    insert(2);

    collection->clear();

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
    EXPECT_TRUE(kept->isAlive.value());
}

TEST_F(ObservableCollectionTest, TheMakersShareMayGoOnceTheElementIsIn) {
    Ref<ActiveCounter> element = create<ActiveCounter>(counts);
    element->AddRef();
    element->holdClose();
    collection->insert(Held<ActiveObject>(element));

    element->close();
    element->Release();
    EXPECT_EQ(counts.closes, 0);
    element->close();
    EXPECT_EQ(counts.closes, 0);
    collection->clear();

    EXPECT_EQ(counts.closes, 1);
}

TEST_F(ObservableCollectionTest, AnElementThatGoesIsStillThereForTheAfterFunctions) {
    insertAll(1);
    a.subscribe(*collection);
    int closesSeen = -1;
    a.onAfter = [&] { closesSeen = counts.closes; };

    collection->removeAt(0);

    EXPECT_EQ(closesSeen, 0);
    EXPECT_EQ(counts.closes, 1);
}

TEST_F(ObservableCollectionTest, ItsCloseTellsOfEachElementAndClosesIt) {
    insertAll(2);
    a.subscribe(*collection);

    collection->close();

    EXPECT_EQ(lines, (Lines{"a before 2 left", "a after 2 left", "a before 1 left", "a after 1 left"}));
    EXPECT_EQ(counts.closes, 2);
    EXPECT_EQ(collection->size.value(), 0);
    EXPECT_FALSE(collection->isAlive.value());
}

TEST_F(ObservableCollectionTest, ItsEndClosesItsElements) {
    insertAll(2);

    collection = nullptr;

    EXPECT_EQ(counts.closes, 2);
    EXPECT_EQ(counts.ends, 2);
}

TEST_F(ObservableCollectionTest, AnElementMayBeInTwice) {
    auto element = Held<ActiveObject>::first(create<ActiveCounter>(counts));
    collection->insert(element);
    collection->insert(element);
    const ActiveObject& same = *element;
    element = nullptr;

    EXPECT_TRUE(collection->remove(same));
    EXPECT_EQ(counts.closes, 0);
    EXPECT_TRUE(collection->remove(same));

    EXPECT_EQ(counts.closes, 1);
}

TEST(ObservableCollectionThreads, StrangersChangeItOnItsOwnersThread) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Lines lines;
    Visitor visitor(lines, "visitor");
    Ref<ObservableCollection> collection;
    std::array<Held<ActiveObject>, 2> elements;
    worker->runSynchronously([&] {
        collection = create<ObservableCollection>();
        for (auto& element : elements) {
            element = Held<ActiveObject>::first(create<ActiveCounter>(counts));
        }
    });
    bool wasOwner = false;
    visitor.onAfter = [&] { wasOwner = collection->isOwnerThread(); };
    EXPECT_NE(visitor.subscribe(*collection), 0U);

    EXPECT_TRUE(collection->insert(elements[0]));
    EXPECT_TRUE(collection->insert(elements[1], 0));
    EXPECT_TRUE(collection->move(0, 1));
    EXPECT_TRUE(collection->remove(*elements[0]));
    EXPECT_TRUE(collection->removeAt(0));
    EXPECT_TRUE(collection->clear());
    EXPECT_EQ(collection->size.read(), 0);
    visitor.unsubscribe(*collection);

    EXPECT_TRUE(wasOwner);
    EXPECT_EQ(lines.size(), 8U);
    elements = {};
    EXPECT_TRUE(waitUntil([&] { return counts.ends == 2; }));
    EXPECT_EQ(counts.closes, 2);
}

TEST(ObservableCollectionThreads, ManyThreadsInsertAndRemove) {
    constexpr int threadCount = 4;
    constexpr int elementsEach = 50;
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ObservableCollection> collection;
    worker->runSynchronously([&] { collection = create<ObservableCollection>(); });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int count = 0; count < elementsEach; ++count) {
                Held<ActiveObject> element;
                worker->runSynchronously(
                    [&] { element = Held<ActiveObject>::first(create<ActiveCounter>(counts)); });
                EXPECT_TRUE(collection->insert(element));
                EXPECT_TRUE(count % 2 == 0 || collection->remove(*element));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(collection->size.read(), threadCount * elementsEach / 2);
    collection->clear();
    EXPECT_TRUE(waitUntil([&] { return counts.ends == threadCount * elementsEach; }));
}

TEST(ObservableCollectionThreads, WithoutADispatcherStrangersChangeNothing) {
    LifeCounts counts;
    const auto collection = create<ObservableCollection>();
    auto element = Held<ActiveObject>::first(create<ActiveCounter>(counts));
    collection->insert(element);
    std::vector<bool> results;
    SlotHandle handle = 1;
    Lines lines;
    Visitor visitor(lines, "visitor");

    std::thread stranger([&] {
        results = {collection->insert(nullptr), collection->removeAt(0), collection->remove(*element),
                   collection->move(0, 0), collection->clear()};
        handle = visitor.subscribe(*collection, Position::last, true, true);
    });
    stranger.join();

    EXPECT_EQ(results, std::vector<bool>(5, false));
    EXPECT_EQ(handle, 0U);
    EXPECT_EQ(lines, Lines{});
    EXPECT_EQ(collection->elements().size(), 1U);
}

}  // namespace
}  // namespace korva::framework
