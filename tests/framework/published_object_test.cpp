#include "framework/published_object.h"

#include <gtest/gtest.h>

#include "framework/active_object.h"
#include "platform/published/property_interfaces.h"

namespace korva::framework {
namespace {

class EmptyStore final : public PublishedObject<EmptyStore, ActiveObject, IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) override {
        *count = 0;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::invalidArgument; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT*) override { return published::ok; }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return published::ok; }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }
};

TEST(PublishedObject, ItsInterfaceAndIUnknownAreOneFaceWithAReference) {
    const Ref<EmptyStore> object = create<EmptyStore>();
    IPropertyStore* const face = object.get();
    for (const GUID& id : {published::iidOf<IUnknown>, published::iidOf<IPropertyStore>}) {
        void* found = nullptr;
        EXPECT_EQ(face->QueryInterface(id, &found), published::ok);
        EXPECT_EQ(found, face);
        EXPECT_EQ(face->Release(), 1U);
    }
}

TEST(PublishedObject, AnotherInterfaceIsRefusedAndTheResultIsNull) {
    const Ref<EmptyStore> object = create<EmptyStore>();
    void* found = object.get();
    EXPECT_EQ(object->QueryInterface(published::iidOf<published::IAudioSystemEffectsPropertyStore>, &found),
              published::noInterface);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object->QueryInterface(published::iidOf<IUnknown>, nullptr), published::nullPointer);
}

TEST(PublishedObject, BothFacesCountTheSameReferences) {
    Ref<EmptyStore> object = create<EmptyStore>();
    Ref<IPropertyStore> face = Ref<IPropertyStore>::share(object.get());
    ActiveObject& base = *object;
    EXPECT_EQ(base.AddRef(), 3U);
    EXPECT_EQ(face->Release(), 2U);
    const Ref<WaitableCounter> destroyed = object->destroyedCounter();
    object = nullptr;
    EXPECT_EQ(destroyed->get(), 0U);
    face = nullptr;
    EXPECT_EQ(destroyed->get(), 1U);
}

}  // namespace
}  // namespace korva::framework
