// The faces of an object, and who counts the references to it.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "tests/system/class_test.h"

namespace korva::test {
namespace {

std::vector<IID> facesOf(const ClassFacts& facts) {
    return {iid::unknown,       facts.ownInterface, iid::effects,          iid::effects2,     iid::effects3,
            iid::notifications, iid::realtime,      iid::processingObject, iid::configuration};
}

class Faces : public ClassTest {
protected:
    [[nodiscard]] ComPointer<IUnknown> face(const IID& id) const { return query<IUnknown>(*object, id); }

    ComPointer<IUnknown> object = library.make(GetParam());
};

TEST_P(Faces, AreAllThere) {
    for (const IID& id : facesOf(GetParam())) {
        EXPECT_TRUE(face(id)) << id.Data1;
    }
}

TEST_P(Faces, GiveThemselvesAgain) {
    for (const IID& id : facesOf(GetParam())) {
        const auto first = face(id);
        const auto second = query<IUnknown>(*first, id);
        EXPECT_EQ(first.get(), second.get()) << id.Data1;
    }
}

TEST_P(Faces, LeadToEachOther) {
    for (const IID& from : facesOf(GetParam())) {
        for (const IID& to : facesOf(GetParam())) {
            const auto there = query<IUnknown>(*face(from), to);
            ASSERT_TRUE(there) << from.Data1 << " to " << to.Data1;
            EXPECT_EQ(there.get(), face(to).get());
            EXPECT_EQ(query<IUnknown>(*there, from).get(), face(from).get());
        }
    }
}

TEST_P(Faces, LeadByWayOfAnyOtherToWhereTheyLeadDirectly) {
    for (const IID& from : facesOf(GetParam())) {
        for (const IID& by : facesOf(GetParam())) {
            for (const IID& to : facesOf(GetParam())) {
                EXPECT_EQ(query<IUnknown>(*query<IUnknown>(*face(from), by), to).get(), face(to).get());
            }
        }
    }
}

TEST_P(Faces, HaveOneIdentity) {
    for (const IID& id : facesOf(GetParam())) {
        EXPECT_EQ(query<IUnknown>(*face(id), iid::unknown).get(), object.get()) << id.Data1;
    }
}

TEST_P(Faces, AreOneForTheThreeGenerationsOfEffects) {
    EXPECT_EQ(face(iid::effects).get(), face(iid::effects2).get());
    EXPECT_EQ(face(iid::effects).get(), face(iid::effects3).get());
}

TEST_P(Faces, OfAnotherKindAreRefusedWithNull) {
    std::vector<IID> others = {iid::nobodys,
                               iid::deviceNotifications,
                               iid::variableRate,
                               iid::notifications2,
                               iid::mediaType,
                               iid::classFactory,
                               IID{}};
    for (const ClassFacts& facts : allClasses) {
        if (!(facts.clsid == GetParam().clsid)) {
            others.push_back(facts.ownInterface);
        }
        others.push_back(facts.clsid);
    }
    for (const IID& from : facesOf(GetParam())) {
        for (const IID& other : others) {
            void* found = this;
            EXPECT_EQ(face(from)->QueryInterface(other, &found), result::noInterface) << other.Data1;
            EXPECT_EQ(found, nullptr);
        }
    }
}

TEST_P(Faces, TakeNoNullForAPlace) {
    for (const IID& id : facesOf(GetParam())) {
        EXPECT_EQ(face(id)->QueryInterface(id, nullptr), result::nullPointer);
        EXPECT_EQ(face(id)->QueryInterface(iid::nobodys, nullptr), result::nullPointer);
    }
}

TEST_P(Faces, CountTheReferencesToTheirObject) {
    EXPECT_EQ(referencesTo(*object), 1U);
    for (const IID& id : facesOf(GetParam())) {
        const auto other = face(id);
        EXPECT_EQ(referencesTo(*object), 2U);
        EXPECT_EQ(referencesTo(*other), 2U);
    }
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST_P(Faces, ThatAreRefusedCostNoReference) {
    void* found = nullptr;
    static_cast<void>(object->QueryInterface(iid::nobodys, &found));
    static_cast<void>(object->QueryInterface(iid::unknown, nullptr));
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST_P(Faces, KeepTheirObjectEachByItself) {
    for (const IID& id : facesOf(GetParam())) {
        auto first = library.make(GetParam());
        auto last = query<IUnknown>(*first, id);
        EXPECT_EQ(first.release(), 1U);
        EXPECT_TRUE(query<IUnknown>(*last, iid::realtime));
        EXPECT_EQ(last.release(), 0U);
    }
}

TEST_P(Faces, AreCountedRightByThreadsAtOnce) {
    constexpr std::size_t rounds = 2000;
    std::atomic<int> wrong{0};
    const auto work = [&](std::size_t first) {
        const std::vector<IID> ids = facesOf(GetParam());
        for (std::size_t round = 0; round < rounds; ++round) {
            const auto one = face(ids[(first + round) % ids.size()]);
            one->AddRef();
            const auto two = query<IUnknown>(*one, iid::unknown);
            one->Release();
            void* none = &wrong;
            const bool isRefused =
                one->QueryInterface(iid::nobodys, &none) == result::noInterface && none == nullptr;
            wrong += isRefused && two.get() == object.get() ? 0 : 1;
        }
    };
    std::thread other(work, 4);
    work(0);
    other.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST_P(Faces, EndTheirObjectOnceWhicheverThreadLetsGoLast) {
    object.release();
    for (int round = 0; round < 20; ++round) {
        auto mine = library.make(GetParam());
        auto others = query<IUnknown>(*mine, iid::realtime);
        std::atomic<ULONG> left{0};
        std::thread other([&] { left += others.release(); });
        left += mine.release();
        other.join();
        EXPECT_EQ(left, 1U) << "one has let go first and the other last";
        EXPECT_EQ(library.canUnloadNow(), result::ok);
    }
}

KORVA_OF_EACH_CLASS(Faces);

}  // namespace
}  // namespace korva::test
