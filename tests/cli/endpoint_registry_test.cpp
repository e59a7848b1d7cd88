#include "korva/endpoint/endpoint_registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

#include "korva/errors.h"
#include "params/property_set_path.h"
#include "tests/support/own_registry.h"

namespace korva::tool {
namespace {

using platform::EndpointPlace;
using platform::RegistryKey;

class EndpointRegistry : public testing::Test {
protected:
    [[nodiscard]] bool hasUserSet(const std::string& id) const {
        RegistryKey key;
        return machine.open(params::propertySetPath(id, "User"), platform::RegistryAccess::read, key) == 0;
    }

    test::OwnRegistry registry;
    RegistryKey machine = RegistryKey::root(platform::RegistryRoot::localMachine);
};

TEST_F(EndpointRegistry, WhatIsMadeIsReadBack) {
    const std::string id = makeEndpoint({.name = "Speakers", .flow = eCapture, .volume = 0.5F});
    const EndpointDescription endpoint = readEndpoint(placeOfId(id));
    EXPECT_EQ(platform::endpointIdOf(endpoint.place), id);
    EXPECT_EQ(endpoint.state, 1U);
    EXPECT_EQ(endpoint.name, "Speakers");
    EXPECT_EQ(endpoint.loudness, (platform::EndpointLoudness{0.5F, false}));
    EXPECT_TRUE(hasUserSet(id));
    removeEndpoint(endpoint.place);
    EXPECT_FALSE(hasUserSet(id));
    EXPECT_TRUE(readAllEndpoints().empty());
}

TEST_F(EndpointRegistry, NothingIsMadeOfWhatIsWrong) {
    EXPECT_THROW(static_cast<void>(makeEndpoint({.name = ""})), ToolError);
    EXPECT_THROW(static_cast<void>(makeEndpoint({.name = "\xFF"})), ToolError);
    EXPECT_THROW(static_cast<void>(makeEndpoint({.name = "a", .volume = std::nanf("")})), ToolError);
    EXPECT_THROW(static_cast<void>(makeEndpoint({.name = "a", .volume = 1.5F})), ToolError);
    EXPECT_TRUE(readAllEndpoints().empty());
}

TEST_F(EndpointRegistry, AnEndpointThatIsGoneIsUnknown) {
    const EndpointPlace place = placeOfId(makeEndpoint({.name = "Speakers"}));
    removeEndpoint(place);
    EXPECT_THROW(removeEndpoint(place), ToolError);
    EXPECT_THROW(changeEndpoint(place, {.volume = 0.5F}), ToolError);
    EXPECT_THROW(static_cast<void>(readEndpoint(place)), ToolError);
    EXPECT_TRUE(readAllEndpoints().empty()) << "a change makes no endpoint";
}

// Whoever finds the device finds its name and its sets as well.
TEST_F(EndpointRegistry, NobodySeesHalfAnEndpoint) {
    std::atomic<bool> isDone{false};
    std::thread maker([&] {
        for (int i = 0; i < 50; ++i) {
            static_cast<void>(makeEndpoint({.name = "Speakers"}));
        }
        isDone = true;
    });
    while (!isDone) {
        for (const EndpointDescription& endpoint : readAllEndpoints()) {
            EXPECT_EQ(endpoint.name, "Speakers");
            EXPECT_EQ(endpoint.state, 1U);
            EXPECT_TRUE(hasUserSet(platform::endpointIdOf(endpoint.place)));
        }
    }
    maker.join();
    EXPECT_EQ(readAllEndpoints().size(), 50U);
}

}  // namespace
}  // namespace korva::tool
