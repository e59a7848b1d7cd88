// A property store over a key of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "params/fx_property_store.h"
#include "params/property_set_path.h"
#include "tests/support/own_endpoint.h"

namespace korva::test {

inline constexpr GUID someFormat = {
    0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};

[[nodiscard]] constexpr PROPERTYKEY someKey(DWORD pid) noexcept {
    return {someFormat, pid};
}
/// The name of `someKey`'s value.
[[nodiscard]] inline std::string someName(unsigned pid) {
    return "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}," + std::to_string(pid);
}

/// The "User" set of an endpoint: its key, as a program fills it, and a store of the test's thread over it.
class OwnStore {
public:
    void fill(std::string_view name, std::uint32_t type, std::string_view data) const {
        EXPECT_EQ(key.setValue(name, type, std::as_bytes(std::span(data))), 0);
    }

    [[nodiscard]] std::string stored(std::string_view name) const {
        platform::RegistryValue value;
        EXPECT_EQ(key.readValue(name, value), 0);
        return std::string(reinterpret_cast<const char*>(value.data.data()), value.data.size());
    }

    [[nodiscard]] platform::RegistryResult look(std::string_view name) const {
        platform::RegistryValue value;
        return key.readValue(name, value);
    }

    /// One that persists what it is told.
    [[nodiscard]] framework::Ref<params::FxPropertyStore> persistent(platform::RegistryKey over) const {
        return framework::create<params::FxPropertyStore>(
            std::move(over), endpoint.setPath("User"), endpoint.id(), "User",
            params::FxPropertyStore::Mode::reads | params::FxPropertyStore::Mode::persists);
    }

    OwnEndpoint endpoint;
    platform::RegistryKey key = endpoint.makeSet("User");
    framework::Ref<params::FxPropertyStore> store = params::FxPropertyStore::Open(endpoint.id(), "User");
};

/// Writes down the names that a signal brings; the empty ones between them as well.
class SignalListener {
public:
    explicit SignalListener(framework::Observable<std::string>& signal) {
        signal.subscribe(this, nullptr, [](void* self, auto&, auto&, const void* value, auto...) {
            static_cast<SignalListener*>(self)->heard.push_back(*static_cast<const std::string*>(value));
        });
    }
    SignalListener(const SignalListener&) = delete;
    SignalListener& operator=(const SignalListener&) = delete;

    std::vector<std::string> heard;
};

}  // namespace korva::test
