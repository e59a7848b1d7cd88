#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "platform/reference_count.h"
#include "tests/platform/linux/audio_devices_test.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

// Published interfaces have no destructor in their tables.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace korva::platform {
namespace {

using test::SeededEndpoint;
using test::waitUntil;

/// Notes what it is told. It is the test's own: references are only counted.
class Notes final : public IMMNotificationClient {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return published::noInterface;
    }
    ReferenceCount STDMETHODCALLTYPE AddRef() override { return ++references; }
    ReferenceCount STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE OnDeviceStateChanged(LPCWSTR id, DWORD state) override {
        return note("state " + toUtf8(id) + " " + std::to_string(state));
    }
    HRESULT STDMETHODCALLTYPE OnDeviceAdded(LPCWSTR id) override { return note("added " + toUtf8(id)); }
    HRESULT STDMETHODCALLTYPE OnDeviceRemoved(LPCWSTR id) override { return note("removed " + toUtf8(id)); }
    HRESULT STDMETHODCALLTYPE OnDefaultDeviceChanged(EDataFlow flow, ERole role, LPCWSTR id) override {
        return note("default " + std::to_string(flow) + std::to_string(role) + " " +
                    (id == nullptr ? std::string("none") : toUtf8(id)));
    }
    HRESULT STDMETHODCALLTYPE OnPropertyValueChanged(LPCWSTR id, const PROPERTYKEY) override {
        return note("property " + toUtf8(id));
    }

    [[nodiscard]] bool has(const std::string& line) const {
        const std::lock_guard guard(mutex);
        return std::ranges::find(lines, line) != lines.end();
    }
    [[nodiscard]] std::size_t count() const {
        const std::lock_guard guard(mutex);
        return lines.size();
    }

    std::atomic<ReferenceCount> references{1};

private:
    HRESULT note(const std::string& line) {
        const std::lock_guard guard(mutex);
        lines.push_back(line);
        return published::ok;
    }

    mutable std::mutex mutex;
    std::vector<std::string> lines;
};

class DeviceNotifications : public AudioDevicesTest {
protected:
    void add(Notes& notes) const {
        EXPECT_EQ(enumerator->RegisterEndpointNotificationCallback(&notes), published::ok);
    }
    void remove(Notes& notes) const {
        EXPECT_EQ(enumerator->UnregisterEndpointNotificationCallback(&notes), published::ok);
    }
};

TEST_F(DeviceNotifications, TheFirstEndpointOfAnEmptyRegistryIsTold) {
    Notes notes;
    add(notes);
    const SeededEndpoint endpoint(eCapture);
    EXPECT_TRUE(waitUntil([&] { return notes.has("added " + endpoint.id()); }));
    EXPECT_TRUE(waitUntil([&] { return notes.has("default 12 " + endpoint.id()); }));
    remove(notes);
    EXPECT_FALSE(notes.has("default 00 " + endpoint.id()));
    EXPECT_TRUE(notes.has("default 10 " + endpoint.id()));
    EXPECT_TRUE(notes.has("default 11 " + endpoint.id()));
}

TEST_F(DeviceNotifications, StatesAndEndsAreTold) {
    const SeededEndpoint first;
    const SeededEndpoint second;
    Notes notes;
    add(notes);
    first.setNumber("DeviceState", 8);
    EXPECT_TRUE(waitUntil([&] { return notes.has("state " + first.id() + " 8"); }));
    EXPECT_TRUE(waitUntil([&] { return notes.has("default 02 " + second.id()); }));
    second.remove();
    EXPECT_TRUE(waitUntil([&] { return notes.has("removed " + second.id()); }));
    EXPECT_TRUE(waitUntil([&] { return notes.has("default 02 none"); }));
    remove(notes);
    EXPECT_FALSE(notes.has("added " + first.id()));
    EXPECT_FALSE(notes.has("removed " + first.id()));
}

TEST_F(DeviceNotifications, WhatDoesNotConcernThemIsNotTold) {
    const SeededEndpoint endpoint;
    Notes notes;
    add(notes);
    endpoint.setVolume(0.5F);
    endpoint.setNumber("DeviceState", 1);
    endpoint.setNumber("DeviceState", 2);
    EXPECT_TRUE(waitUntil([&] { return notes.has("default 02 none"); }));
    remove(notes);
    EXPECT_EQ(notes.count(), 4U) << "one state and the default of three roles";
}

TEST_F(DeviceNotifications, AClientIsHeldAsLongAsItListens) {
    const std::size_t atRest = test::threadCountAtRest();
    Notes notes;
    EXPECT_EQ(enumerator->UnregisterEndpointNotificationCallback(&notes), published::notFound);
    add(notes);
    EXPECT_EQ(notes.references, 2U);
    remove(notes);
    EXPECT_EQ(notes.references, 1U);
    EXPECT_TRUE(waitUntil([&] { return test::threadCount() == atRest; }));
    EXPECT_EQ(enumerator->UnregisterEndpointNotificationCallback(&notes), published::notFound);
    EXPECT_EQ(enumerator->RegisterEndpointNotificationCallback(nullptr), published::nullPointer);
    EXPECT_EQ(enumerator->UnregisterEndpointNotificationCallback(nullptr), published::nullPointer);
}

TEST_F(DeviceNotifications, AnEnumeratorThatEndsLetsItsClientsGo) {
    Notes notes;
    add(notes);
    enumerator.reset();
    EXPECT_EQ(notes.references, 1U);
    const SeededEndpoint endpoint;
    EXPECT_EQ(notes.count(), 0U);
}

}  // namespace
}  // namespace korva::platform
