#include "framework/listener_list.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace korva::framework {
namespace {

void first(void*, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {}

// A list whose nodes have the addresses of letters as contexts.
class LetteredList {
public:
    SlotHandle add(char letter, Position position = Position::last) {
        return list.add(table, {&letters[static_cast<std::size_t>(letter - 'a')], first, nullptr}, position);
    }

    std::string walk() {
        list.restart();
        return walkRest();
    }

    std::string walkRest() {
        std::string seen;
        walkRest([&](char letter) { seen += letter; });
        return seen;
    }

    // Calls `call` with each letter that the walk has not come to.
    template <class Call>
    void walkRest(const Call& call) {
        while (const SubscriberNode* const node = list.advance(table)) {
            call(letterOf(*node));
        }
    }

    std::string backwards() const {
        std::string seen;
        static_cast<void>(list.findLast(table, [&](const SubscriberNode& node) {
            seen += letterOf(node);
            return false;
        }));
        return seen;
    }

    static char letterOf(const SubscriberNode& node) { return *static_cast<const char*>(node.context); }

    SlotTable<SubscriberNode> table;
    ListenerList<SubscriberNode> list;

private:
    std::array<char, 26> letters = [] {
        std::array<char, 26> all{};
        for (std::size_t index = 0; index < all.size(); ++index) {
            all[index] = static_cast<char>('a' + index);
        }
        return all;
    }();
};

TEST(ListenerList, StartsEmpty) {
    LetteredList letters;

    EXPECT_TRUE(letters.list.isEmpty());
    EXPECT_FALSE(letters.list.isWalking());
    EXPECT_EQ(letters.walk(), "");
}

struct Placing {
    std::string present;
    Position position;
    std::string expected;
};

class ListenerListPosition : public testing::TestWithParam<Placing> {};

TEST_P(ListenerListPosition, PutsTheNewListenerX) {
    LetteredList letters;
    for (const char letter : GetParam().present) {
        letters.add(letter);
    }

    letters.add('x', GetParam().position);

    EXPECT_EQ(letters.walk(), GetParam().expected);
    EXPECT_EQ(letters.backwards(), std::string(GetParam().expected.rbegin(), GetParam().expected.rend()));
}

INSTANTIATE_TEST_SUITE_P(AtTheEnd, ListenerListPosition,
                         testing::Values(Placing{"", Position::last, "x"}, Placing{"a", Position::last, "ax"},
                                         Placing{"ab", Position::last, "abx"},
                                         Placing{"abc", Position::last, "abcx"}));
INSTANTIATE_TEST_SUITE_P(AtTheHead, ListenerListPosition,
                         testing::Values(Placing{"", Position::first, "x"},
                                         Placing{"a", Position::first, "xa"},
                                         Placing{"ab", Position::first, "xab"},
                                         Placing{"abc", Position::first, "xabc"}));
INSTANTIATE_TEST_SUITE_P(BeforeTheLast, ListenerListPosition,
                         testing::Values(Placing{"", Position::beforeLast, "x"},
                                         Placing{"a", Position::beforeLast, "xa"},
                                         Placing{"ab", Position::beforeLast, "axb"},
                                         Placing{"abc", Position::beforeLast, "abxc"}));
INSTANTIATE_TEST_SUITE_P(AfterTheFirst, ListenerListPosition,
                         testing::Values(Placing{"", Position::afterFirst, "x"},
                                         Placing{"a", Position::afterFirst, "ax"},
                                         Placing{"ab", Position::afterFirst, "axb"},
                                         Placing{"abc", Position::afterFirst, "axbc"}));

TEST(ListenerList, RemovalMendsBothDirections) {
    for (const std::size_t removed : {0U, 1U, 2U}) {
        LetteredList letters;
        const std::array handles{letters.add('a'), letters.add('b'), letters.add('c')};
        std::string rest = "abc";
        rest.erase(removed, 1);

        letters.list.remove(letters.table, handles[removed]);

        EXPECT_EQ(letters.walk(), rest);
        EXPECT_EQ(letters.backwards(), std::string(rest.rbegin(), rest.rend()));
    }
}

TEST(ListenerList, RemovalOfTheOnlyOneLeavesItEmptyAndUsable) {
    LetteredList letters;
    const SlotHandle only = letters.add('a');

    letters.list.remove(letters.table, only);

    EXPECT_TRUE(letters.list.isEmpty());
    EXPECT_EQ(letters.backwards(), "");
    letters.add('b');
    EXPECT_EQ(letters.walk(), "b");
}

TEST(ListenerList, RemovalFreesTheNode) {
    LetteredList letters;
    const SlotHandle handle = letters.add('a');

    letters.list.remove(letters.table, handle);

    EXPECT_EQ(letters.table.usedCount(), 1U);
    EXPECT_EQ(letters.add('b'), handle);
}

TEST(ListenerList, RemovalOfTheNodeAtTheCursorMovesTheCursorToTheNext) {
    LetteredList letters;
    letters.add('a');
    const SlotHandle atCursor = letters.add('b');
    letters.add('c');
    std::string seen;
    letters.list.restart();

    letters.walkRest([&](char letter) {
        seen += letter;
        if (seen == "a") {
            letters.list.remove(letters.table, atCursor);
        }
    });

    EXPECT_EQ(seen, "ac");
}

TEST(ListenerList, RemovalOfTheLastNodeAtTheCursorEndsTheWalk) {
    LetteredList letters;
    letters.add('a');
    const SlotHandle atCursor = letters.add('b');
    std::string seen;
    letters.list.restart();

    letters.walkRest([&](char letter) {
        seen += letter;
        letters.list.remove(letters.table, atCursor);
    });

    EXPECT_EQ(seen, "a");
    EXPECT_FALSE(letters.list.isWalking());
}

TEST(ListenerList, RemovalOfTheNodeThatIsBeingCalledLeavesTheWalkAsItIs) {
    LetteredList letters;
    const SlotHandle called = letters.add('a');
    letters.add('b');
    std::string seen;
    letters.list.restart();

    letters.walkRest([&](char letter) {
        seen += letter;
        if (seen == "a") {
            letters.list.remove(letters.table, called);
        }
    });

    EXPECT_EQ(seen, "ab");
    EXPECT_EQ(letters.walk(), "b");
}

TEST(ListenerList, TheCursorIsAheadOfTheNodeThatIsCalled) {
    LetteredList letters;
    letters.add('a');
    letters.add('b');
    std::vector<bool> walking;
    letters.list.restart();

    letters.walkRest([&](char) { walking.push_back(letters.list.isWalking()); });

    EXPECT_EQ(walking, (std::vector<bool>{true, false}));
}

TEST(ListenerList, AWalkSurvivesThatTheTableGrows) {
    LetteredList letters;
    letters.add('a');
    letters.add('b');
    std::string seen;
    letters.list.restart();

    letters.walkRest([&](char letter) {
        for (int count = 0; count < 100; ++count) {
            letters.add('z', Position::first);
        }
        seen += letter;
    });

    EXPECT_EQ(seen, "ab");
    EXPECT_GE(letters.table.capacity(), 200U);
}

TEST(ListenerList, AnInnerWalkOfTheRestEndsTheOuterOne) {
    LetteredList letters;
    letters.add('a');
    letters.add('b');
    letters.add('c');
    std::string seen;
    letters.list.restart();

    letters.walkRest([&](char letter) {
        seen += letter;
        seen += "(" + letters.walkRest() + ")";
    });

    EXPECT_EQ(seen, "a(bc)");
}

TEST(ListenerList, TwoListsShareATable) {
    SlotTable<SubscriberNode> table;
    ListenerList<SubscriberNode> odd;
    ListenerList<SubscriberNode> even;
    std::array<int, 10> contexts{};
    for (std::size_t index = 0; index < contexts.size(); ++index) {
        (index % 2 == 0 ? even : odd).add(table, {&contexts[index], first, nullptr}, Position::last);
    }

    std::vector<void*> seen;
    odd.restart();
    while (const SubscriberNode* const node = odd.advance(table)) {
        seen.push_back(node->context);
    }

    EXPECT_EQ(seen,
              (std::vector<void*>{&contexts[1], &contexts[3], &contexts[5], &contexts[7], &contexts[9]}));
}

}  // namespace
}  // namespace korva::framework
