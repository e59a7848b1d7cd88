#include "platform/host_event.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

#include "platform/published/results.h"
#include "platform/wait_handles.h"

namespace korva::platform {
namespace {

/// An event as a host hands it over.
template <class Handle>
HANDLE asHost(Handle handle) {
    if constexpr (std::is_pointer_v<Handle>) {
        return handle;
    } else {
        return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(handle));
    }
}

HANDLE badHandle() {
    return reinterpret_cast<HANDLE>(std::intptr_t{0x7FFFFF0});
}

TEST(HostEvent, IsNoneAtFirst) {
    EXPECT_EQ(HostEvent().handle(), nullptr);
}

TEST(HostEvent, TakesAHandleOfItsOwn) {
    const Event event;
    HostEvent own;
    EXPECT_EQ(own.duplicate(asHost(event.handle())), published::ok);
    EXPECT_NE(own.handle(), nullptr);
    EXPECT_NE(own.handle(), asHost(event.handle()));
}

TEST(HostEvent, LeavesTheHostsHandleOpen) {
    const Event event;
    {
        HostEvent own;
        ASSERT_EQ(own.duplicate(asHost(event.handle())), published::ok);
    }
    HostEvent again;
    EXPECT_EQ(again.duplicate(asHost(event.handle())), published::ok);
}

TEST(HostEvent, RefusesWhatIsNoHandleAndKeepsNone) {
    const Event event;
    HostEvent own;
    ASSERT_EQ(own.duplicate(asHost(event.handle())), published::ok);
    EXPECT_EQ(own.duplicate(badHandle()), published::invalidHandle);
    EXPECT_EQ(own.handle(), nullptr);
    EXPECT_EQ(own.duplicate(nullptr), published::invalidHandle);
}

TEST(HostEvent, GivesItsHandleBackAtTheEnd) {
    const Event event;
    for (int i = 0; i < 5000; ++i) {  // more than a process may have open
        HostEvent own;
        ASSERT_EQ(own.duplicate(asHost(event.handle())), published::ok) << i;
    }
}

TEST(HostEvent, GivesTheFormerHandleBackWhenItTakesAnother) {
    const Event event;
    HostEvent own;
    for (int i = 0; i < 5000; ++i) {
        ASSERT_EQ(own.duplicate(asHost(event.handle())), published::ok) << i;
    }
    own.release();
    EXPECT_EQ(own.handle(), nullptr);
}

}  // namespace
}  // namespace korva::platform
