#include "korva/host/engine_services.h"

#include <gtest/gtest.h>

#include "platform/property_value.h"

namespace korva::tool {
namespace {

using platform::Reference;

TEST(EngineServices, HaveAWorkQueue) {
    const Reference<EngineServices> services(new EngineServices);
    void* face = nullptr;
    ASSERT_EQ(
        services->QueryService(published::workQueueServiceId,
                               published::iidOf<published::IAudioProcessingObjectRTQueueService>, &face),
        published::ok);
    const Reference<published::IAudioProcessingObjectRTQueueService> queue(
        static_cast<published::IAudioProcessingObjectRTQueueService*>(face));
    DWORD id = 0;
    EXPECT_EQ(queue->GetRealTimeWorkQueue(&id), published::ok);
    EXPECT_NE(id, 0U);
    EXPECT_EQ(queue->GetRealTimeWorkQueue(nullptr), published::nullPointer);
}

TEST(EngineServices, KeepNoLog) {
    const Reference<EngineServices> services(new EngineServices);
    void* face = services.get();
    EXPECT_EQ(
        services->QueryService(published::loggingServiceId,
                               published::iidOf<published::IAudioProcessingObjectLoggingService>, &face),
        published::noInterface);
    EXPECT_EQ(face, nullptr);
}

TEST(EngineServices, OfAnotherFaceAreRefused) {
    const Reference<EngineServices> services(new EngineServices);
    void* face = services.get();
    EXPECT_EQ(services->QueryService(published::workQueueServiceId, published::iidOf<IPropertyStore>, &face),
              published::noInterface);
    EXPECT_EQ(face, nullptr);
    EXPECT_EQ(services->QueryService(published::workQueueServiceId, published::iidOf<IUnknown>, nullptr),
              published::nullPointer);
}

TEST(EmptyStore, HasNoPropertyAndTakesNone) {
    const Reference<EmptyStore> store(new EmptyStore);
    DWORD count = 7;
    EXPECT_EQ(store->GetCount(&count), published::ok);
    EXPECT_EQ(count, 0U);
    PROPERTYKEY key{};
    EXPECT_EQ(store->GetAt(0, &key), published::invalidArgument);
    platform::PropertyValue value;
    EXPECT_EQ(store->GetValue(key, value.out()), published::ok);
    EXPECT_EQ(value->vt, VT_EMPTY);
    EXPECT_EQ(store->SetValue(key, value.get()), published::storageAccessDenied);
    EXPECT_EQ(store->Commit(), published::ok);
    EXPECT_EQ(store->GetCount(nullptr), published::nullPointer);
    EXPECT_EQ(store->GetAt(0, nullptr), published::nullPointer);
    EXPECT_EQ(store->GetValue(key, nullptr), published::nullPointer);
}

TEST(EndpointCollection, IsEmptyWithoutAnEndpoint) {
    const Reference<EndpointCollection> devices(new EndpointCollection(nullptr));
    UINT count = 7;
    EXPECT_EQ(devices->GetCount(&count), published::ok);
    EXPECT_EQ(count, 0U);
    IMMDevice* device = nullptr;
    EXPECT_EQ(devices->Item(0, &device), published::invalidArgument);
    EXPECT_EQ(devices->Item(0, nullptr), published::nullPointer);
    EXPECT_EQ(devices->GetCount(nullptr), published::nullPointer);
}

}  // namespace
}  // namespace korva::tool
