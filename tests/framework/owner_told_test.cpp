#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "framework/active_object.h"

namespace korva::framework {
namespace {

/// A sum that follows its parts, and a limited value.
class Sum final : public ObjectClass<Sum, ActiveObject> {
public:
    Observable<std::uint32_t> left{*this, tellsOwner};
    Observable<std::uint32_t> right{*this, tellsOwner};
    Observable<std::uint32_t> limited{*this, tellsOwner};
    Observable<std::uint32_t> sum{*this};
    std::uint32_t toldCount = 0;
    std::vector<std::uint32_t> publishedWhenTold;

private:
    void onValueChanging(ObservableBase& value) override {
        ++toldCount;
        publishedWhenTold.push_back(left.value());
        if (&value == &limited && limited.pending() > 100) {
            limited.set(100);
        }
        sum.set(left.pending() + right.pending());
    }
};

void ignore(void*, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {}

TEST(OwnerTold, AValueTellsItsOwnerBeforeItIsPublished) {
    const Ref<Sum> object = create<Sum>();
    object->left.set(2);
    EXPECT_EQ(object->publishedWhenTold, std::vector<std::uint32_t>{0});
    EXPECT_EQ(object->sum.value(), 2U);
}

TEST(OwnerTold, AnEqualValueTellsNobody) {
    const Ref<Sum> object = create<Sum>();
    object->left.set(2);
    object->left.set(2);
    object->right.set(0);
    EXPECT_EQ(object->toldCount, 1U);
}

TEST(OwnerTold, ListenersMakeNoDifference) {
    const Ref<Sum> object = create<Sum>();
    object->left.addPropagator(nullptr, &ignore);
    object->right.subscribe(nullptr, &ignore, &ignore);
    object->left.set(2);
    object->right.set(3);
    EXPECT_EQ(object->toldCount, 2U);
    EXPECT_EQ(object->sum.value(), 5U);
}

TEST(OwnerTold, TheOwnerMayReplaceTheIncomingValue) {
    const Ref<Sum> object = create<Sum>();
    object->limited.set(1000);
    EXPECT_EQ(object->limited.value(), 100U);
    object->limited.addPropagator(nullptr, &ignore);
    object->limited.set(7);
    object->limited.set(2000);
    EXPECT_EQ(object->limited.value(), 100U);
}

TEST(OwnerTold, AChangeInPhasesTellsAsItBegins) {
    const Ref<Sum> object = create<Sum>();
    object->left.beginChange(9);
    EXPECT_EQ(object->sum.value(), 9U);
    EXPECT_EQ(object->left.value(), 0U);
    object->left.commitChange();
    object->left.finishChange();
    EXPECT_EQ(object->toldCount, 1U);
}

}  // namespace
}  // namespace korva::framework
