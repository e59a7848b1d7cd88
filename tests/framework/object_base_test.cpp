#include "framework/object_base.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/object_class.h"

namespace korva::framework {
namespace {

// Writes down its hooks; the end goes to whoever made it.
class HookedObject : public ObjectClass<HookedObject, ObjectBase> {
public:
    explicit HookedObject(std::vector<std::string>& book) : diary(book) {}

protected:
    ~HookedObject() override { diary.push_back("end"); }
    void onAddRef(std::uint32_t count) override { diary.push_back("added " + std::to_string(count)); }
    void onRelease(std::uint32_t count) override { diary.push_back("released " + std::to_string(count)); }
    void onReleaseLocked(std::uint32_t count) override { diary.push_back("locked " + std::to_string(count)); }

    std::vector<std::string>& diary;
};

using Lines = std::vector<std::string>;

TEST(ObjectBase, TheCreatorHasTheFirstReference) {
    Lines diary;
    const Ref<HookedObject> object = create<HookedObject>(diary);

    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
}

TEST(ObjectBase, HooksAreCalledWithTheNewCount) {
    Lines diary;
    Ref<HookedObject> object = create<HookedObject>(diary);
    EXPECT_EQ(diary, Lines{});

    object->AddRef();
    object->Release();
    EXPECT_EQ(diary, (Lines{"added 2", "released 1", "locked 1"}));

    diary.clear();
    object = nullptr;
    EXPECT_EQ(diary, (Lines{"released 0", "locked 0", "end"}));
}

// Looks at its own weak reference in the second hook of its last `Release`.
class WeakLooker final : public ObjectClass<WeakLooker, ObjectBase> {
public:
    WeakLooker(int& lookCount, int& livingCount) : looks(lookCount), living(livingCount) {}

protected:
    void onReleaseLocked(std::uint32_t count) override {
        if (count == 0) {
            ++looks;
            living += getWeak()->lock() != nullptr ? 1 : 0;
        }
    }

private:
    int& looks;
    int& living;
};

TEST(ObjectBase, TheWeakReferenceIsClearedBeforeTheSecondHookOfTheLastRelease) {
    int looks = 0;
    int living = 0;
    Ref<WeakLooker> object = create<WeakLooker>(looks, living);
    const Ref<WeakReference> weak = object->getWeak();
    ASSERT_NE(weak->lock(), nullptr);

    object = nullptr;

    EXPECT_EQ(looks, 1);
    EXPECT_EQ(living, 0);
}

class Animal : public ObjectClass<Animal, ObjectBase> {};
class Dog final : public ObjectClass<Dog, Animal> {};
class Cat final : public ObjectClass<Cat, Animal> {};
class Stone final : public ObjectBase {};

TEST(ObjectBase, CastToGivesTheObjectForItsClassAndItsBases) {
    const Ref<Dog> dog = create<Dog>();

    EXPECT_EQ(dog->castTo(typeTag<Dog>()), dog.get());
    EXPECT_EQ(dog->castTo(typeTag<Animal>()), dog.get());
    EXPECT_EQ(dog->castTo(typeTag<ObjectBase>()), dog.get());
}

TEST(ObjectBase, CastToGivesNullForAnyOtherClass) {
    const Ref<Dog> dog = create<Dog>();
    const Ref<Animal> animal = create<Animal>();
    const Ref<Stone> stone = create<Stone>();

    EXPECT_EQ(dog->castTo(typeTag<Cat>()), nullptr);
    EXPECT_EQ(animal->castTo(typeTag<Dog>()), nullptr);
    EXPECT_EQ(stone->castTo(typeTag<Animal>()), nullptr);
    EXPECT_EQ(stone->castTo(typeTag<ObjectBase>()), stone.get());
    EXPECT_EQ(dog->castTo(nullptr), nullptr);
}

TEST(ObjectBase, CastFindsTheClassAndTakesNull) {
    const Ref<Animal> animal = create<Dog>();

    EXPECT_NE(cast<Dog>(animal.get()), nullptr);
    EXPECT_EQ(cast<Cat>(animal.get()), nullptr);
    EXPECT_EQ(cast<Cat>(nullptr), nullptr);
}

TEST(ObjectBase, TellsNothingOfItsClass) {
    EXPECT_EQ(create<Stone>()->getClassInfo(), nullptr);
}

TEST(ObjectBase, ShareIfAliveAddsAReference) {
    Lines diary;
    const Ref<HookedObject> object = create<HookedObject>(diary);

    const Ref<HookedObject> shared = ObjectBase::shareIfAlive(*object);

    EXPECT_EQ(shared, object);
    EXPECT_EQ(object->AddRef(), 3U);
    object->Release();
}

class LastShare final : public ObjectClass<LastShare, ObjectBase> {
public:
    explicit LastShare(bool& sharedFlag) : shared(sharedFlag) {}

protected:
    void destroy() override {
        shared = ObjectBase::shareIfAlive(*this) != nullptr;
        ObjectBase::destroy();
    }

private:
    bool& shared;
};

TEST(ObjectBase, ShareIfAliveGivesNullOnceTheLastReferenceIsGone) {
    bool shared = true;
    Ref<LastShare> object = create<LastShare>(shared);

    object = nullptr;

    EXPECT_FALSE(shared);
}

// Takes references and drops them while it is being destroyed.
class Clinging final : public ObjectClass<Clinging, ObjectBase> {
public:
    explicit Clinging(int& destroyCount) : destroys(destroyCount) {}

protected:
    void destroy() override {
        ++destroys;
        AddRef();
        Release();
        ObjectBase::destroy();
    }

private:
    int& destroys;
};

TEST(ObjectBase, AReferenceTakenAndDroppedByDestroyDoesNotDestroyTwice) {
    int destroys = 0;
    Ref<Clinging> object = create<Clinging>(destroys);

    object = nullptr;

    EXPECT_EQ(destroys, 1);
}

class Failing final : public ObjectClass<Failing, HookedObject> {
public:
    Failing(Lines& book, Ref<WeakReference>& left) : ObjectClass(book) {
        left = getWeak();
        throw std::runtime_error("no object");
    }
};

TEST(ObjectBase, AConstructorThatRaisesReleasesTheReferenceThatIsLeft) {
    Lines diary;
    Ref<WeakReference> weak;

    EXPECT_THROW(static_cast<void>(create<Failing>(diary, weak)), std::runtime_error);

    ASSERT_NE(weak, nullptr);
    EXPECT_EQ(weak->lock(), nullptr);
    EXPECT_EQ(diary, Lines{"end"});
}

class Ended final : public ObjectClass<Ended, ObjectBase> {
public:
    explicit Ended(std::atomic<int>& endCount) : ends(endCount) {}

protected:
    ~Ended() override { ++ends; }

private:
    std::atomic<int>& ends;
};

class alignas(64) Aligned final : public ObjectClass<Aligned, ObjectBase> {
public:
    [[nodiscard]] std::uintptr_t misplacement() const { return reinterpret_cast<std::uintptr_t>(this) % 64; }
};

TEST(ObjectBase, IsAllocatedAsItsClassIsAligned) {
    std::vector<Ref<Aligned>> objects;
    for (int count = 0; count < 10; ++count) {
        objects.push_back(create<Aligned>());
        EXPECT_EQ(objects.back()->misplacement(), 0U);
    }
}

TEST(ObjectBase, TwoThreadsThatDropTheLastTwoReferencesEndItOnce) {
    constexpr int objectCount = 2000;
    std::atomic<int> ends{0};
    std::vector<Ref<Ended>> ones;
    std::vector<Ref<Ended>> others;
    for (int count = 0; count < objectCount; ++count) {
        ones.push_back(create<Ended>(ends));
        others.push_back(ones.back());
    }
    std::atomic<int> ready{0};
    const auto dropAll = [&ready](std::vector<Ref<Ended>>& references) {
        ++ready;
        while (ready != 2) {
        }
        for (Ref<Ended>& reference : references) {
            reference = nullptr;
        }
    };

    std::thread one([&] { dropAll(ones); });
    std::thread other([&] { dropAll(others); });
    one.join();
    other.join();

    EXPECT_EQ(ends, objectCount);
}

}  // namespace
}  // namespace korva::framework
