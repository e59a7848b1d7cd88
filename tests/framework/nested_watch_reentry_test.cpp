// Watches whose actions change what they watch.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include "framework/active_object.h"
#include "framework/nested_watch.h"
#include "framework/wiring.h"
#include "tests/support/diary_listener.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;

/// Watches `outer`, and `inner` inside it; what its actions do besides noting is the test's to say.
class Nest final : public ObjectClass<Nest, ActiveObject>, public Wiring<Nest> {
public:
    explicit Nest(Diary& book) : diary(book) {}

    void begin() {
        watching = watch(outer)
                       .whileSet([this](std::uint32_t now) { act("+outer ", now, onOuter); },
                                 [this](std::uint32_t now) { act("-outer ", now, nullptr); })
                       .then(inner)
                       .whileSet([this](std::uint32_t now) { act("+inner ", now, onInner); },
                                 [this](std::uint32_t now) { act("-inner ", now, nullptr); });
    }

    Observable<std::uint32_t> outer{*this};
    Observable<std::uint32_t> inner{*this};
    NestedWatch watching;
    std::function<void()> onOuter;
    std::function<void()> onInner;

private:
    void onClose() override {
        watching.drop();
        ActiveObject::onClose();
    }

    // Moved out first: an action that comes back here does so once.
    void act(const std::string& what, std::uint32_t now, std::function<void()> once) {
        diary.push_back(what + std::to_string(now));
        if (once) {
            onOuter = nullptr;
            onInner = nullptr;
            once();
        }
    }

    Diary& diary;
};

class NestedWatchReentry : public testing::Test {
protected:
    void beginWith(std::uint32_t outer, std::uint32_t inner) {
        nest->outer.set(outer);
        nest->inner.set(inner);
        nest->begin();
    }

    Diary diary;
    Ref<Nest> nest = create<Nest>(diary);
};

TEST_F(NestedWatchReentry, DroppedByAnActionItEntersNothingMore) {
    nest->onOuter = [this] { nest->watching.drop(); };
    nest->begin();
    nest->inner.set(1);
    nest->outer.set(1);
    nest->outer.set(2);
    EXPECT_EQ(diary, (Diary{"+outer 1", "-outer 1"}));
}

TEST_F(NestedWatchReentry, AnActionThatUnsetsItsOwnValueBeginsNoLowerLevel) {
    nest->onOuter = [this] { nest->outer.set(0); };
    beginWith(1, 1);
    EXPECT_EQ(diary, (Diary{"+outer 1", "-outer 1"}));
    nest->outer.set(2);
    nest->watching.drop();
    nest->inner.set(5);
    EXPECT_EQ(diary, (Diary{"+outer 1", "-outer 1", "+outer 2", "+inner 1", "-inner 1", "-outer 2"}));
}

TEST_F(NestedWatchReentry, AnActionThatSetsALowerValueFindsItEnteredOnce) {
    nest->onOuter = [this] { nest->inner.set(7); };
    nest->begin();
    nest->outer.set(1);
    EXPECT_EQ(diary, (Diary{"+outer 1", "+inner 7"}));
}

TEST_F(NestedWatchReentry, AnActionThatChangesItsOwnValueAtOnceIsEnteredAnew) {
    nest->onInner = [this] { nest->inner.set(2); };
    beginWith(1, 1);
    EXPECT_EQ(diary, (Diary{"+outer 1", "+inner 1", "-inner 1", "+inner 2"}));
    nest->watching.drop();
    nest->inner.set(3);
    EXPECT_EQ(diary.size(), 6U);
}

TEST_F(NestedWatchReentry, ALevelThatBeginsBeforeItsValueChangesIsEnteredWithTheNewOne) {
    DiaryListener other(diary, "other");
    other.onBefore = [this] { nest->outer.set(1); };
    nest->inner.set(5);
    other.subscribe(nest->inner);
    nest->begin();
    nest->inner.set(6);
    EXPECT_EQ(diary, (Diary{"other before 5 to 6", "+outer 1", "other after 6 to 6", "+inner 6"}));
    diary.clear();
    nest->outer.set(0);
    nest->inner.set(0);
    nest->inner.set(5);
    EXPECT_EQ(diary.front(), "-inner 6");
}

TEST_F(NestedWatchReentry, AnUpperValueUnsetByAnAfterFunctionEntersTheLowerLevelNoMore) {
    nest->outer.set(1);
    nest->inner.set(1);
    DiaryListener other(diary, "other");
    other.onAfter = [this] { nest->outer.set(0); };
    other.subscribe(nest->inner);
    nest->begin();
    diary.clear();
    nest->inner.set(2);
    EXPECT_EQ(diary, (Diary{"other before 1 to 2", "-inner 1", "other after 2 to 2", "-outer 1"}));
}

TEST_F(NestedWatchReentry, AnActionThatRaisesAtTheBeginningLeavesNoListener) {
    nest->outer.set(1);
    nest->onOuter = [] { throw std::runtime_error("raised"); };
    EXPECT_THROW(nest->begin(), std::runtime_error);
    nest->outer.set(2);
    EXPECT_EQ(diary, (Diary{"+outer 1", "-outer 1"}));
}

}  // namespace
}  // namespace korva::framework
