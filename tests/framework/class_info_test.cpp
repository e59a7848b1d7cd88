#include "framework/class_info.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/active_object.h"
#include "framework/describe_members.h"
#include "framework/observable_collection.h"
#include "tests/support/active_counter.h"
#include "tests/support/diary_listener.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;

constexpr std::uint32_t standardGain = 100;

class Device : public ObjectClass<Device, ActiveObject> {
public:
    static void describeMembers(ClassInfo& info) {
        describe(info, "volume", &Device::volume);
        describe(info, "gain", &Device::gain, AtClose::resets);
        describe(info, "parts", &Device::parts, AtClose::resets);
        describe(info, "spares", &Device::spares);
    }

    Observable<std::uint32_t> volume{*this};
    Observable<std::uint32_t> gain{*this, standardGain};
    Ref<ObservableCollection> parts = create<ObservableCollection>();
    Ref<ObservableCollection> spares = create<ObservableCollection>();
};

class Speaker final : public ObjectClass<Speaker, Device> {
public:
    static void describeMembers(ClassInfo& info) { describe(info, "name", &Speaker::name, AtClose::resets); }

    Observable<std::string> name{*this};
};

class Silent final : public ObjectClass<Silent, Device> {};

std::vector<std::string_view> namesIn(const ClassInfo::ByName& members) {
    std::vector<std::string_view> names;
    for (const auto& [name, member] : members) {
        names.push_back(name);
    }
    return names;
}

using Names = std::vector<std::string_view>;

const ValueMember<std::uint32_t>& numberMember(std::string_view name) {
    return dynamic_cast<const ValueMember<std::uint32_t>&>(*Device::classInfo()->observableOfName.at(name));
}

TEST(ClassInfo, IsOneForAllObjectsOfAClass) {
    const Ref<Device> one = create<Device>();
    const Ref<Device> other = create<Device>();

    EXPECT_EQ(one->getClassInfo(), other->getClassInfo());
    EXPECT_EQ(one->getClassInfo(), Device::classInfo());
}

TEST(ClassInfo, OfAnObjectIsThatOfItsOwnClass) {
    const Ref<ActiveObject> object = create<Speaker>();

    EXPECT_EQ(object->getClassInfo(), Speaker::classInfo());
    EXPECT_EQ(object->getClassInfo()->typeTag, typeTag<Speaker>());
    EXPECT_EQ(Device::classInfo()->typeTag, typeTag<Device>());
}

TEST(ClassInfo, KnowsValuesAndCollectionsByName) {
    EXPECT_EQ(namesIn(Device::classInfo()->observableOfName), (Names{"gain", "isAlive", "volume"}));
    EXPECT_EQ(namesIn(Device::classInfo()->collectionOfName), (Names{"parts", "spares"}));
}

TEST(ClassInfo, EveryActiveObjectPublishesIsAlive) {
    EXPECT_EQ(namesIn(ActiveObject::classInfo()->observableOfName), Names{"isAlive"});
    EXPECT_TRUE(ActiveObject::classInfo()->resetAtClose.empty());
    EXPECT_TRUE(ActiveObject::classInfo()->collections.empty());
}

TEST(ClassInfo, ADerivedClassBeginsWithTheListsOfItsBase) {
    const ClassInfo& base = *Device::classInfo();
    const ClassInfo& derived = *Speaker::classInfo();

    ASSERT_EQ(derived.observables.size(), 4U);
    for (std::size_t index = 0; index < base.observables.size(); ++index) {
        EXPECT_EQ(derived.observables[index], base.observables[index]);
    }
    EXPECT_EQ(derived.observables.back(), derived.observableOfName.at("name"));
    EXPECT_EQ(derived.resetAtClose.size(), 2U);
    EXPECT_EQ(derived.collections, base.collections);
}

TEST(ClassInfo, ABaseDoesNotTellOfMembersOfADerivedClass) {
    static_cast<void>(Speaker::classInfo());

    EXPECT_FALSE(Device::classInfo()->observableOfName.contains("name"));
    EXPECT_EQ(Device::classInfo()->observables.size(), 3U);
}

TEST(ClassInfo, AClassThatDescribesNothingTellsOfItsBaseOnce) {
    EXPECT_EQ(Silent::classInfo()->observables, Device::classInfo()->observables);
    EXPECT_EQ(Silent::classInfo()->resetAtClose, Device::classInfo()->resetAtClose);
    EXPECT_EQ(Silent::classInfo()->typeTag, typeTag<Silent>());
}

TEST(ClassInfo, AMemberGivesTheAddressOfItsValueInAnyObject) {
    const Ref<Device> one = create<Device>();
    const Ref<Speaker> other = create<Speaker>();
    const MemberDescriptor& member = *Device::classInfo()->observableOfName.at("volume");

    EXPECT_EQ(member.address(*one), &one->volume.value());
    EXPECT_EQ(member.address(*other), &other->volume.value());
    EXPECT_EQ(member.valueType(), typeTag<std::uint32_t>());
}

TEST(ClassInfo, AMemberIsSetByReferenceAndByValueAsAnyChange) {
    const Ref<Device> device = create<Device>();
    Diary diary;
    DiaryListener listener(diary, "meter");
    listener.subscribe(device->volume);
    const std::uint32_t five = 5;

    numberMember("volume").setByReference(*device, five);
    numberMember("volume").setByValue(*device, 6);

    EXPECT_EQ(device->volume.value(), 6U);
    EXPECT_EQ(diary, (Diary{"meter before 0 to 5", "meter after 5 to 5", "meter before 5 to 6",
                            "meter after 6 to 6"}));
}

TEST(ClassInfo, AMemberIsResetToItsDefault) {
    const Ref<Device> device = create<Device>();
    device->gain.set(3);

    numberMember("gain").reset(*device);

    EXPECT_EQ(device->gain.value(), standardGain);
}

TEST(ClassInfo, ACollectionMemberIsResetByEmptyingIt) {
    test::LifeCounts counts;
    const Ref<Device> device = create<Device>();
    device->parts->insert(Held<ActiveObject>::first(create<test::ActiveCounter>(counts)));
    const MemberDescriptor& member = *Device::classInfo()->collectionOfName.at("parts");
    EXPECT_EQ(member.address(*device), device->parts.get());

    member.reset(*device);

    EXPECT_TRUE(device->parts->elements().empty());
    EXPECT_EQ(counts.closes, 1);
}

TEST(ClassInfo, ResetOfACollectionThatIsNotThereDoesNothing) {
    const Ref<Device> device = create<Device>();
    device->parts = nullptr;
    const MemberDescriptor& member = *Device::classInfo()->collectionOfName.at("parts");

    member.reset(*device);

    EXPECT_EQ(member.address(*device), nullptr);
}

TEST(ClassInfo, CloseResetsTheMembersThatAskForIt) {
    test::LifeCounts part;
    test::LifeCounts spare;
    const Ref<Device> device = create<Device>();
    device->gain.set(3);
    device->parts->insert(Held<ActiveObject>::first(create<test::ActiveCounter>(part)));
    device->spares->insert(Held<ActiveObject>::first(create<test::ActiveCounter>(spare)));

    device->close();

    EXPECT_EQ(device->gain.value(), standardGain);
    EXPECT_TRUE(device->parts->elements().empty());
    EXPECT_EQ(part.closes, 1);
    EXPECT_EQ(device->spares->elements().size(), 1U);
    EXPECT_EQ(spare.closes, 0);
}

TEST(ClassInfo, CloseResetsWhatABaseTellsToo) {
    const Ref<Speaker> speaker = create<Speaker>();
    speaker->gain.set(3);
    speaker->name.set("left");

    speaker->close();

    EXPECT_EQ(speaker->gain.value(), standardGain);
    EXPECT_EQ(speaker->name.value(), "");
}

TEST(ClassInfo, CloseLeavesOrdinaryMembersAsTheyAre) {
    const Ref<Device> device = create<Device>();
    device->volume.set(7);

    device->close();

    EXPECT_EQ(device->volume.value(), 7U);
}

TEST(ClassInfo, SubscribersSeeTheResetAtCloseAsAnyChangeAfterIsAlive) {
    const Ref<Device> device = create<Device>();
    device->gain.set(3);
    Diary diary;
    DiaryListener listener(diary, "meter");
    listener.subscribe(device->gain);
    bool isAlive = true;
    listener.onAfter = [&] { isAlive = device->isAlive.value(); };

    device->close();

    EXPECT_EQ(diary, (Diary{"meter before 3 to 100", "meter after 100 to 100"}));
    EXPECT_FALSE(isAlive);
}

TEST(ClassInfo, AnObjectWithoutReferencesClosesWithoutResets) {
    Ref<Device> device = create<Device>();
    device->gain.set(3);
    Diary diary;
    DiaryListener listener(diary, "meter");
    listener.subscribe(device->gain);

    device = nullptr;

    EXPECT_EQ(diary, Diary{});
}

}  // namespace
}  // namespace korva::framework
