#include "platform/endpoint_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/own_registry.h"
#include "tests/support/seeded_endpoint.h"

namespace korva::platform {
namespace {

class EndpointValues : public testing::Test {
protected:
    [[nodiscard]] std::vector<EndpointPlace> places(EDataFlow flow) const {
        std::vector<EndpointPlace> found;
        EXPECT_EQ(readEndpoints(machine, flow, found), 0);
        return found;
    }
    [[nodiscard]] bool isListed(EDataFlow flow, const EndpointPlace& place) const {
        const auto all = places(flow);
        return std::ranges::find(all, place) != all.end();
    }

    test::OwnRegistry registry;
    RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
};

std::uint32_t stateOf(const test::SeededEndpoint& endpoint) {
    std::uint32_t state = 0;
    EXPECT_EQ(readEndpointState(endpoint.key(), state), 0);
    return state;
}

EndpointLoudness loudnessOf(const test::SeededEndpoint& endpoint) {
    EndpointLoudness loudness{-1.0F, true};
    EXPECT_EQ(readEndpointLoudness(endpoint.key(), loudness), 0);
    return loudness;
}

TEST_F(EndpointValues, AnEndpointIsListedWithItsFlowOnly) {
    const test::SeededEndpoint speakers(eRender);
    const test::SeededEndpoint microphone(eCapture);
    EXPECT_TRUE(isListed(eRender, speakers.place()));
    EXPECT_TRUE(isListed(eCapture, microphone.place()));
    EXPECT_FALSE(isListed(eRender, {eRender, microphone.place().guid}));
    EXPECT_FALSE(isListed(eCapture, {eCapture, speakers.place().guid}));
}

TEST_F(EndpointValues, ARemovedEndpointIsListedNoMore) {
    const test::SeededEndpoint endpoint;
    endpoint.remove();
    EXPECT_FALSE(isListed(eRender, endpoint.place()));
}

TEST_F(EndpointValues, AKeyThatIsNoGuidIsNoEndpoint) {
    const test::SeededEndpoint endpoint;
    RegistryKey stray;
    ASSERT_EQ(machine.create(endpointsPath(eRender) + "\\{no endpoint}", RegistryAccess::read, stray), 0);
    for (const EndpointPlace& place : places(eRender)) {
        EXPECT_NE(place.guid, GUID{});
    }
    EXPECT_TRUE(isListed(eRender, endpoint.place()));
    EXPECT_EQ(machine.deleteTree(endpointsPath(eRender) + "\\{no endpoint}"), 0);
}

TEST_F(EndpointValues, WithoutARegistryTheListStaysAsItWas) {
    std::vector<EndpointPlace> found{{eCapture, GUID{}}};
    EXPECT_EQ(readEndpoints(RegistryKey(), eRender, found), registry_result::invalidHandle);
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(EndpointValues, TheFourStatesAreReadAndTheSystemsMarksLeftOut) {
    const test::SeededEndpoint endpoint;
    for (const std::uint32_t state : {1U, 2U, 4U, 8U}) {
        endpoint.setNumber(endpoint_value::state, state);
        EXPECT_EQ(stateOf(endpoint), state);
        endpoint.setNumber(endpoint_value::state, state | 0x10000000U);
        EXPECT_EQ(stateOf(endpoint), state);
    }
}

TEST_F(EndpointValues, WhatIsNoStateIsNotPresent) {
    const test::SeededEndpoint endpoint;
    for (const std::uint32_t state : {0U, 3U, 15U, 16U, 0xFFFFFFFFU}) {
        endpoint.setNumber(endpoint_value::state, state);
        EXPECT_EQ(stateOf(endpoint), 4U) << state;
    }
    ASSERT_EQ(endpoint.key().deleteValue(endpoint_value::state), 0);
    EXPECT_EQ(stateOf(endpoint), 4U);
    const std::array<std::byte, 4> one{std::byte{1}};
    ASSERT_EQ(endpoint.key().setValue(endpoint_value::state, registry_type::binary, one), 0);
    EXPECT_EQ(stateOf(endpoint), 4U);
    const std::array<std::byte, 8> longOne{std::byte{1}};
    ASSERT_EQ(endpoint.key().setValue(endpoint_value::state, registry_type::dword, longOne), 0);
    EXPECT_EQ(stateOf(endpoint), 4U);
}

TEST_F(EndpointValues, AnEndpointWithoutVolumeIsAtItsLoudest) {
    const test::SeededEndpoint endpoint;
    EXPECT_EQ(loudnessOf(endpoint), (EndpointLoudness{1.0F, false}));
}

TEST_F(EndpointValues, VolumeAndMuteAreReadToTheBit) {
    const test::SeededEndpoint endpoint;
    for (const float scalar : {0.0F, 1.0F, 0.1F, std::numeric_limits<float>::denorm_min()}) {
        endpoint.setVolume(scalar);
        EXPECT_EQ(loudnessOf(endpoint), (EndpointLoudness{scalar, false}));
    }
    endpoint.setNumber(endpoint_value::muted, 1);
    EXPECT_TRUE(loudnessOf(endpoint).isMuted);
}

TEST_F(EndpointValues, WhatIsNoVolumeCountsAsNone) {
    const test::SeededEndpoint endpoint;
    for (const float scalar : {-0.1F, 1.0001F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
        endpoint.setVolume(scalar);
        EXPECT_EQ(loudnessOf(endpoint).scalar, 1.0F) << scalar;
    }
}

TEST_F(EndpointValues, ARemovedEndpointHasNone) {
    const test::SeededEndpoint endpoint;
    endpoint.remove();
    std::uint32_t state = 77;
    EndpointLoudness loudness{0.5F, true};
    EXPECT_EQ(readEndpointState(endpoint.key(), state), registry_result::keyDeleted);
    EXPECT_EQ(readEndpointLoudness(endpoint.key(), loudness), registry_result::keyDeleted);
    EXPECT_EQ(state, 77U);
    EXPECT_EQ(loudness, (EndpointLoudness{0.5F, true}));
}

}  // namespace
}  // namespace korva::platform
