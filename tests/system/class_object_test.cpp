// Class objects, objects that become part of others, and what holds the library.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/system/class_test.h"
#include "tests/system/support/own_object.h"

namespace korva::test {
namespace {

using published::IAudioMediaType;

class ClassObject : public ClassTest {};

TEST_P(ClassObject, IsAFactoryOfOneIdentity) {
    const auto factory = library.classObject(GetParam());
    const auto unknown = query<IUnknown>(*factory, iid::unknown);
    EXPECT_EQ(query<IClassFactory>(*unknown, iid::classFactory).get(), factory.get());
    EXPECT_EQ(query<IUnknown>(*unknown, iid::unknown).get(), unknown.get());
    EXPECT_EQ(referencesTo(*factory), 2U);
}

TEST_P(ClassObject, IsGivenAsAnUnknownToo) {
    ComPointer<IUnknown> unknown;
    EXPECT_EQ(library.getClassObject(GetParam().clsid, iid::unknown, unknown.receiveAny()), result::ok);
    EXPECT_TRUE(query<IClassFactory>(*unknown, iid::classFactory));
}

TEST_P(ClassObject, HasNoOtherFace) {
    void* found = this;
    EXPECT_EQ(library.getClassObject(GetParam().clsid, iid::processingObject, &found), result::noInterface);
    EXPECT_EQ(found, nullptr);
    found = this;
    const auto factory = library.classObject(GetParam());
    EXPECT_EQ(factory->QueryInterface(GetParam().ownInterface, &found), result::noInterface);
    EXPECT_EQ(found, nullptr);
}

TEST_P(ClassObject, TakesNoNullForAPlace) {
    EXPECT_EQ(library.getClassObject(GetParam().clsid, iid::classFactory, nullptr), result::nullPointer);
    const auto factory = library.classObject(GetParam());
    EXPECT_EQ(factory->QueryInterface(iid::unknown, nullptr), result::nullPointer);
    EXPECT_EQ(factory->CreateInstance(nullptr, iid::unknown, nullptr), result::nullPointer);
}

TEST_P(ClassObject, HoldsTheLibrary) {
    auto factory = library.classObject(GetParam());
    EXPECT_EQ(library.canUnloadNow(), result::no);
    EXPECT_EQ(factory.release(), 0U);
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

TEST_P(ClassObject, MakesObjectsOfItsClassByAnyFace) {
    const auto factory = library.classObject(GetParam());
    for (const IID& id : {iid::unknown, GetParam().ownInterface, iid::effects, iid::effects2, iid::effects3,
                          iid::notifications, iid::realtime, iid::processingObject, iid::configuration}) {
        ComPointer<IUnknown> made;
        EXPECT_EQ(factory->CreateInstance(nullptr, id, made.receiveAny()), result::ok);
        ASSERT_TRUE(made);
        EXPECT_EQ(referencesTo(*made), 1U);
        EXPECT_TRUE(query<IUnknown>(*made, GetParam().ownInterface));
    }
}

TEST_P(ClassObject, MakesNothingForAFaceThatObjectsDoNotHave) {
    const auto factory = library.classObject(GetParam());
    for (const IID& id : {iid::nobodys, iid::deviceNotifications, iid::classFactory}) {
        void* made = this;
        EXPECT_EQ(factory->CreateInstance(nullptr, id, &made), result::noInterface);
        EXPECT_EQ(made, nullptr);
    }
}

TEST_P(ClassObject, MayGoBeforeItsObjects) {
    auto object = library.make(GetParam());
    EXPECT_EQ(library.canUnloadNow(), result::no);
    EXPECT_EQ(object.release(), 0U);
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

KORVA_OF_EACH_CLASS(ClassObject);

TEST(ClassObjects, AreOfTheThreeClassesOnly) {
    const HostedLibrary library;
    for (const CLSID& other : {iid::nobodys, streamClass.ownInterface, iid::processingObject, CLSID{}}) {
        int something = 0;
        void* found = &something;
        EXPECT_EQ(library.getClassObject(other, iid::classFactory, &found), result::noSuchClass);
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(library.getClassObject(other, iid::classFactory, nullptr), result::nullPointer);
    }
}

TEST(ServerLock, HoldsTheLibraryAsOftenAsItIsTaken) {
    const HostedLibrary library;
    auto factory = library.classObject(streamClass);
    EXPECT_EQ(factory->LockServer(1), result::ok);
    EXPECT_EQ(factory->LockServer(1), result::ok);
    EXPECT_EQ(factory->LockServer(0), result::ok);
    factory.release();
    EXPECT_EQ(library.canUnloadNow(), result::no);
    EXPECT_EQ(library.classObject(modeClass)->LockServer(0), result::ok) << "whichever class it came by";
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

TEST(ServerLock, ThatNobodyTookCannotBeGivenBack) {
    const HostedLibrary library;
    const auto object = library.make(streamClass);
    EXPECT_TRUE(published::failed(library.classObject(streamClass)->LockServer(0)));
    EXPECT_EQ(library.canUnloadNow(), result::no) << "an object is there";
    EXPECT_EQ(library.classObject(streamClass)->LockServer(1), result::ok);
    EXPECT_EQ(library.classObject(streamClass)->LockServer(0), result::ok);
}

TEST(ServerLock, IsCountedRightByThreadsAtOnce) {
    const HostedLibrary library;
    const auto factory = library.classObject(endpointClass);
    std::atomic<int> failures{0};
    const auto work = [&] {
        for (int round = 0; round < 1000; ++round) {
            failures += factory->LockServer(1) == result::ok && factory->LockServer(0) == result::ok ? 0 : 1;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(failures, 0);
}

TEST(Unloading, IsHeldOffByAFormatThatOutlivesItsObject) {
    const HostedLibrary library;
    ComPointer<IAudioMediaType> suggestion;
    {
        HostedObject object(library, streamClass);
        OwnMediaType wish(wholes(2));
        ASSERT_EQ(object.apo->IsInputFormatSupported(nullptr, &wish, suggestion.receive()), result::no);
    }
    EXPECT_EQ(library.canUnloadNow(), result::no);
    EXPECT_NE(suggestion->GetAudioFormat(), nullptr);
    EXPECT_EQ(suggestion.release(), 0U);
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// An object of a host's that another one is a part of: it gives the part's faces for its own.
class Outer final : public IUnknown {
public:
    Outer(const HostedLibrary& library, const ClassFacts& facts) {
        const auto factory = library.classObject(facts);
        EXPECT_EQ(factory->CreateInstance(this, iid::unknown, inner.receiveAny()), result::ok);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        ++questions;
        if (!(id == iid::unknown)) {
            return inner->QueryInterface(id, object);
        }
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return result::ok;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    std::atomic<ULONG> references{1};
    std::atomic<int> questions{0};
    ComPointer<IUnknown> inner;
};

#pragma GCC diagnostic pop

class PartOfAnother : public ClassTest {
protected:
    [[nodiscard]] std::vector<IID> faces() const {
        return {GetParam().ownInterface, iid::effects,  iid::effects2,         iid::effects3,
                iid::notifications,      iid::realtime, iid::processingObject, iid::configuration};
    }
};

TEST_P(PartOfAnother, IsMadeWithoutAReferenceToIt) {
    const Outer outer(library, GetParam());
    ASSERT_TRUE(outer.inner);
    EXPECT_EQ(outer.references, 1U);
    EXPECT_EQ(referencesTo(*outer.inner), 1U);
}

TEST_P(PartOfAnother, IsAskedForItsOwnIdentityOnly) {
    const Outer outer(library, GetParam());
    const auto factory = library.classObject(GetParam());
    for (const IID& id : {GetParam().ownInterface, iid::processingObject, iid::nobodys}) {
        void* made = this;
        EXPECT_EQ(factory->CreateInstance(outer.inner.get(), id, &made), result::noAggregation);
        EXPECT_EQ(made, nullptr);
    }
    EXPECT_EQ(factory->CreateInstance(outer.inner.get(), iid::unknown, nullptr), result::nullPointer);
    EXPECT_EQ(factory->CreateInstance(outer.inner.get(), iid::realtime, nullptr), result::nullPointer);
}

TEST_P(PartOfAnother, HasTheOthersIdentityByAllItsFaces) {
    Outer outer(library, GetParam());
    for (const IID& id : faces()) {
        const auto face = query<IUnknown>(*outer.inner, id);
        ASSERT_TRUE(face);
        EXPECT_EQ(query<IUnknown>(*face, iid::unknown).get(), static_cast<IUnknown*>(&outer));
        for (const IID& to : faces()) {
            EXPECT_TRUE(query<IUnknown>(*face, to));
        }
    }
    EXPECT_EQ(outer.references, 1U);
}

TEST_P(PartOfAnother, AsksTheOtherForFaces) {
    Outer outer(library, GetParam());
    const auto face = query<IUnknown>(*outer.inner, iid::realtime);
    const int before = outer.questions;
    void* found = this;
    EXPECT_EQ(face->QueryInterface(iid::nobodys, &found), result::noInterface);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(outer.questions, before + 1);
}

TEST_P(PartOfAnother, HasAnIdentityOfItsOwnForWhoMadeIt) {
    const Outer outer(library, GetParam());
    EXPECT_EQ(query<IUnknown>(*outer.inner, iid::unknown).get(), outer.inner.get());
    void* found = this;
    EXPECT_EQ(outer.inner->QueryInterface(iid::nobodys, &found), result::noInterface);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(outer.inner->QueryInterface(iid::unknown, nullptr), result::nullPointer);
}

TEST_P(PartOfAnother, IsHeldByWhoMadeItAndHoldsTheOtherByItsFaces) {
    Outer outer(library, GetParam());
    {
        const auto face = query<IUnknown>(*outer.inner, iid::realtime);
        EXPECT_EQ(outer.references, 2U);
        EXPECT_EQ(referencesTo(*outer.inner), 1U);
        EXPECT_EQ(referencesTo(*face), 2U) << "the other's references";
    }
    EXPECT_EQ(outer.references, 1U);
    EXPECT_EQ(outer.inner.release(), 0U);
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

TEST_P(PartOfAnother, WorksAsByItself) {
    Outer outer(library, GetParam());
    const auto apo = query<published::IAudioProcessingObject>(*outer.inner, iid::processingObject);
    OwnMediaType wish(floats(2));
    ComPointer<IAudioMediaType> suggestion;
    EXPECT_EQ(apo->IsInputFormatSupported(nullptr, &wish, suggestion.receive()), result::ok);
    EXPECT_EQ(suggestion.get(), &wish);
}

KORVA_OF_EACH_CLASS(PartOfAnother);

}  // namespace
}  // namespace korva::test
