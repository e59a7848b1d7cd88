#include "tests/platform/linux/audio_devices_test.h"

#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/published/property_interfaces.h"
#include "tests/support/environment.h"

namespace korva::platform {
namespace {

using Ids = std::vector<std::string>;
using test::SeededEndpoint;

class RegistryDevices : public AudioDevicesTest {
protected:
    [[nodiscard]] Ids idsOf(EDataFlow flow, DWORD mask) const {
        IMMDeviceCollection* made = nullptr;
        EXPECT_EQ(enumerator->EnumAudioEndpoints(flow, mask, &made), published::ok);
        const HeldObject<IMMDeviceCollection> devices(made);
        UINT count = 0;
        EXPECT_EQ(devices->GetCount(&count), published::ok);
        Ids ids;
        for (UINT i = 0; i < count; ++i) {
            IMMDevice* device = nullptr;
            EXPECT_EQ(devices->Item(i, &device), published::ok);
            ids.push_back(idOf(*HeldObject<IMMDevice>(device)));
        }
        return ids;
    }

    [[nodiscard]] HRESULT defaultOf(EDataFlow flow, std::string& id) const {
        auto* made = reinterpret_cast<IMMDevice*>(1);
        const HRESULT result = enumerator->GetDefaultAudioEndpoint(flow, eConsole, &made);
        const HeldObject<IMMDevice> device(made);
        id = device == nullptr ? "" : idOf(*device);
        return result;
    }
};

TEST_F(RegistryDevices, AnEmptyRegistryHasNone) {
    EXPECT_EQ(idsOf(eAll, published::deviceStatesAll), Ids{});
    std::string id;
    EXPECT_EQ(defaultOf(eRender, id), published::notFound);
    EXPECT_EQ(id, "");
}

TEST_F(RegistryDevices, FlowAndStateSayWhichAreGiven) {
    const SeededEndpoint speakers(eRender, 1);
    const SeededEndpoint unplugged(eRender, 8);
    const SeededEndpoint microphone(eCapture, 1);
    const SeededEndpoint disabled(eCapture, 2);
    EXPECT_EQ(idsOf(eRender, 15), (Ids{speakers.id(), unplugged.id()}));
    EXPECT_EQ(idsOf(eCapture, 15), (Ids{microphone.id(), disabled.id()}));
    EXPECT_EQ(idsOf(eAll, 15), (Ids{speakers.id(), unplugged.id(), microphone.id(), disabled.id()}));
    EXPECT_EQ(idsOf(eAll, 1), (Ids{speakers.id(), microphone.id()}));
    EXPECT_EQ(idsOf(eAll, 2 | 8), (Ids{unplugged.id(), disabled.id()}));
    EXPECT_EQ(idsOf(eAll, 0), Ids{});
}

TEST_F(RegistryDevices, TheDefaultIsTheFirstActiveOne) {
    const SeededEndpoint unplugged(eRender, 8);
    const SeededEndpoint first(eRender, 1);
    const SeededEndpoint second(eRender, 1);
    std::string id;
    EXPECT_EQ(defaultOf(eRender, id), published::ok);
    EXPECT_EQ(id, first.id());
    first.setNumber("DeviceState", 4);
    EXPECT_EQ(defaultOf(eRender, id), published::ok);
    EXPECT_EQ(id, second.id());
    EXPECT_EQ(defaultOf(eCapture, id), published::notFound);
}

TEST_F(RegistryDevices, ArgumentsOutOfRangeAreRefused) {
    auto* devices = reinterpret_cast<IMMDeviceCollection*>(1);
    EXPECT_EQ(enumerator->EnumAudioEndpoints(static_cast<EDataFlow>(3), 15, &devices),
              published::invalidArgument);
    EXPECT_EQ(devices, nullptr);
    EXPECT_EQ(enumerator->EnumAudioEndpoints(eRender, 16, &devices), published::invalidArgument);
    EXPECT_EQ(enumerator->EnumAudioEndpoints(eRender, 15, nullptr), published::nullPointer);
    auto* device = reinterpret_cast<IMMDevice*>(1);
    EXPECT_EQ(enumerator->GetDefaultAudioEndpoint(eAll, eConsole, &device), published::invalidArgument);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(enumerator->GetDefaultAudioEndpoint(eRender, static_cast<ERole>(3), &device),
              published::invalidArgument);
    EXPECT_EQ(enumerator->GetDefaultAudioEndpoint(eRender, eConsole, nullptr), published::nullPointer);
    EXPECT_EQ(enumerator->GetDevice(nullptr, &device), published::nullPointer);
    EXPECT_EQ(enumerator->GetDevice(u"x", nullptr), published::nullPointer);
}

TEST_F(RegistryDevices, ACollectionIsOfTheTimeItWasMade) {
    const SeededEndpoint first;
    IMMDeviceCollection* made = nullptr;
    ASSERT_EQ(enumerator->EnumAudioEndpoints(eRender, 15, &made), published::ok);
    const HeldObject<IMMDeviceCollection> devices(made);
    const SeededEndpoint second;
    first.remove();
    UINT count = 0;
    EXPECT_EQ(devices->GetCount(&count), published::ok);
    EXPECT_EQ(count, 1U);
    IMMDevice* device = nullptr;
    ASSERT_EQ(devices->Item(0, &device), published::ok);
    const HeldObject<IMMDevice> held(device);
    EXPECT_EQ(idOf(*held), first.id());
    device = reinterpret_cast<IMMDevice*>(1);
    EXPECT_EQ(devices->Item(1, &device), published::invalidArgument);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(devices->Item(0, nullptr), published::nullPointer);
    EXPECT_EQ(devices->GetCount(nullptr), published::nullPointer);
}

TEST_F(RegistryDevices, ADeviceIsFoundByItsIdentifierInAnyCase) {
    const SeededEndpoint endpoint(eCapture);
    std::string shouted = endpoint.id();
    for (char& c : shouted) {
        c = static_cast<char>(c >= 'a' && c <= 'f' ? c - 'a' + 'A' : c);
    }
    HeldObject<IMMDevice> device;
    EXPECT_EQ(find(shouted, device), published::ok);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(idOf(*device), endpoint.id());
}

TEST_F(RegistryDevices, AnUnknownIdentifierIsNotFound) {
    const SeededEndpoint endpoint;
    const std::string guid = endpoint.id().substr(17);
    for (const std::string& id : {std::string(), std::string("speakers"), guid, "{0.0.1.00000000}." + guid,
                                  endpoint.id() + "\\Properties",
                                  std::string("{0.0.0.00000000}.{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}")}) {
        HeldObject<IMMDevice> device;
        EXPECT_EQ(find(id, device), published::notFound) << id;
        EXPECT_EQ(device, nullptr) << id;
    }
}

TEST_F(RegistryDevices, ADeviceTellsItsFlow) {
    for (const EDataFlow flow : {eRender, eCapture}) {
        const SeededEndpoint seeded(flow);
        const auto device = deviceOf(seeded);
        void* object = nullptr;
        ASSERT_EQ(device->QueryInterface(published::iidOf<IMMEndpoint>, &object), published::ok);
        const HeldObject<IMMEndpoint> endpoint(static_cast<IMMEndpoint*>(object));
        EDataFlow told = eAll;
        EXPECT_EQ(endpoint->GetDataFlow(&told), published::ok);
        EXPECT_EQ(told, flow);
        EXPECT_EQ(endpoint->GetDataFlow(nullptr), published::nullPointer);
    }
}

TEST_F(RegistryDevices, BothFacesOfADeviceAreOneObject) {
    const SeededEndpoint seeded;
    const auto device = deviceOf(seeded);
    void* endpoint = nullptr;
    ASSERT_EQ(device->QueryInterface(published::iidOf<IMMEndpoint>, &endpoint), published::ok);
    const HeldObject<IMMEndpoint> other(static_cast<IMMEndpoint*>(endpoint));
    void* a = nullptr;
    void* b = nullptr;
    ASSERT_EQ(device->QueryInterface(published::iidOf<IUnknown>, &a), published::ok);
    ASSERT_EQ(other->QueryInterface(published::iidOf<IUnknown>, &b), published::ok);
    EXPECT_EQ(a, b);
    static_cast<IUnknown*>(a)->Release();
    EXPECT_EQ(static_cast<IUnknown*>(b)->Release(), 2U);
    void* none = reinterpret_cast<void*>(1);
    EXPECT_EQ(device->QueryInterface(published::iidOf<IPropertyStore>, &none), published::noInterface);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(device->QueryInterface(published::iidOf<IUnknown>, nullptr), published::nullPointer);
}

TEST_F(RegistryDevices, TheStateIsReadWhenItIsAskedFor) {
    const SeededEndpoint endpoint(eRender, 1);
    const auto device = deviceOf(endpoint);
    for (const DWORD state : {1U, 8U, 2U, 4U, 1U}) {
        endpoint.setNumber("DeviceState", state);
        DWORD told = 0;
        EXPECT_EQ(device->GetState(&told), published::ok);
        EXPECT_EQ(told, state);
    }
    EXPECT_EQ(device->GetState(nullptr), published::nullPointer);
}

TEST_F(RegistryDevices, OnlyTheVolumeOfAnActiveDeviceCanBeActivated) {
    const SeededEndpoint endpoint(eRender, 2);
    const auto device = deviceOf(endpoint);
    EXPECT_EQ(volumeOf(*device, published::deviceInvalidated), nullptr);
    endpoint.setNumber("DeviceState", 1);
    EXPECT_NE(volumeOf(*device), nullptr);
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(
        device->Activate(published::iidOf<published::IAudioSystemEffectsPropertyStore>, 23, nullptr, &object),
        published::noInterface);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(device->Activate(published::iidOf<IUnknown>, 23, nullptr, &object), published::noInterface);
    EXPECT_EQ(device->Activate(published::iidOf<IAudioEndpointVolume>, 23, nullptr, nullptr),
              published::nullPointer);
}

TEST_F(RegistryDevices, ARemovedDeviceIsNotFoundByAnyCall) {
    const SeededEndpoint endpoint;
    const auto device = deviceOf(endpoint);
    endpoint.remove();
    DWORD state = 0;
    EXPECT_EQ(device->GetState(&state), published::notFound);
    auto* store = reinterpret_cast<IPropertyStore*>(1);
    EXPECT_EQ(device->OpenPropertyStore(published::accessRead, &store), published::notFound);
    EXPECT_EQ(store, nullptr);
    EXPECT_EQ(volumeOf(*device, published::notFound), nullptr);
    EXPECT_EQ(idOf(*device), endpoint.id());
    HeldObject<IMMDevice> again;
    EXPECT_EQ(find(endpoint.id(), again), published::notFound);
}

TEST_F(RegistryDevices, ManyThreadsMayUseOneDeviceWhileItIsRemoved) {
    const SeededEndpoint endpoint;
    const auto device = deviceOf(endpoint);
    const auto use = [&] {
        for (int i = 0; i < 200; ++i) {
            device->AddRef();
            DWORD state = 0;
            const HRESULT result = device->GetState(&state);
            EXPECT_TRUE(result == published::ok || result == published::notFound) << std::hex << result;
            IPropertyStore* store = nullptr;
            if (device->OpenPropertyStore(published::accessReadWrite, &store) == published::ok) {
                store->Release();
            }
            EXPECT_GE(device->Release(), 1U);
        }
    };
    std::thread first(use);
    std::thread second(use);
    endpoint.remove();
    first.join();
    second.join();
    device->AddRef();
    EXPECT_EQ(device->Release(), 1U);
}

TEST(RegistryDevicesWithout, ARegistryThereIsNoEnumerator) {
    const test::OwnRegistry registry;
    const std::string path = std::filesystem::temp_directory_path() / "korva_no_registry_XXXXXX";
    std::string folder = path;
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    std::ofstream(folder + "/registry")
        << "This is something else, and long enough to be told from a registry.";
    {
        const test::EnvironmentVariable variable("KORVA_REGISTRY", folder + "/registry");
        auto* enumerator = reinterpret_cast<IMMDeviceEnumerator*>(1);
        EXPECT_TRUE(published::failed(createDeviceEnumerator(&enumerator)));
        EXPECT_EQ(enumerator, nullptr);
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace korva::platform
