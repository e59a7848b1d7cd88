// Which parameters the equaliser takes over, and which it doesn't.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "tests/examples/graphic_eq/played_equaliser.h"
#include "tests/support/float_bits.h"

namespace korva::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

constexpr BandValues someGains{6, -3, 0, 12, -12, 1, 0, 0, 4, -8, 24, -24};

/// Whether two ways to set an equaliser sound the same.
template <class One, class Other>
void expectSameSound(const One& one, const Other& other) {
    const Sound sound = noise(500);
    PlayedEqualiser first;
    PlayedEqualiser second;
    one(first);
    other(second);
    expectSameBits(first.played(sound), second.played(sound));
}

TEST(EqualiserParameters, AreBroughtIntoRange) {
    expectSameSound(
        [](auto& e) {
            e.setGains({100, -100, 24.5f, 1e30f});
        },
        [](auto& e) {
            e.setGains({24, -24, 24, 24});
        });
    expectSameSound([](auto& e) { e.setOutputGain(90); }, [](auto& e) { e.setOutputGain(24); });
    expectSameSound([](auto& e) { e.setOutputGain(-200); }, [](auto& e) { e.setOutputGain(-96); });
    expectSameSound(
        [](auto& e) {
            e.setAllGains(6), e.setCentres({-5, 1e-30f, 9, 1e9f});
        },
        [](auto& e) {
            e.setAllGains(6), e.setCentres({10, 10, 10, 40000});
        });
}

TEST(EqualiserParameters, AreStandardCentresWhereTheyAreZero) {
    expectSameSound(
        [](auto& e) {
            e.setAllGains(6), e.setCentres({500, -0.0f}), e.setCentres({});
        },
        [](auto& e) { e.setAllGains(6); });
    expectSameSound([](auto& e) { e.setAllGains(6); },
                    [](auto& e) {
                        e.setAllGains(6);
                        e.setCentres({31.5f, 56, 100, 180, 315, 560, 1000, 1800, 3150, 5600, 10000, 18000});
                    });
}

TEST(EqualiserParameters, KeepWhatTheyWereWhereTheNewValueIsNoNumber) {
    expectSameSound(
        [](auto& e) {
            e.setGains({1, 2, 3, 4}), e.setGains({notANumber, infinity, -infinity, 5});
        },
        [](auto& e) {
            e.setGains({1, 2, 3, 5});
        });
    expectSameSound([](auto& e) { e.setOutputGain(3), e.setOutputGain(notANumber); },
                    [](auto& e) { e.setOutputGain(3); });
    expectSameSound([](auto& e) { e.setAllGains(6), e.setCentres({50}), e.setCentres({infinity}); },
                    [](auto& e) { e.setAllGains(6), e.setCentres({50}); });
}

TEST(EqualiserParameters, OfAnotherSizeAreIgnored) {
    const std::vector<float> many(13, 6.0f);
    const auto bytes = std::as_bytes(std::span(many));
    for (const std::int32_t id : {3, 4, 5, 8}) {
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            const bool isRight = size == (id == 8 ? 1u : id == 4 ? 4u : 48u);
            if (!isRight) {
                expectSameSound([&](auto& e) { e.setGains(someGains), e.set(0, id, bytes.first(size)); },
                                [](auto& e) { e.setGains(someGains); });
            }
        }
    }
}

TEST(EqualiserParameters, OfOthersAreIgnored) {
    const std::vector<float> values(12, 6.0f);
    const auto bytes = std::as_bytes(std::span(values));
    expectSameSound(
        [&](auto& e) {
            e.setGains(someGains);
            for (const std::int32_t bank : {-2, -1, 1, 4}) {
                for (const std::int32_t id : {-18, 3, 4, 5, 8, 24}) {
                    for (const std::size_t size : {0u, 4u, 48u}) {
                        e.set(bank, id, bytes.first(size));
                    }
                }
            }
            for (const std::int32_t id : {-18, -3, 0, 1, 2, 6, 7, 9}) {
                for (const std::size_t size : {0u, 1u, 4u, 48u}) {
                    e.set(0, id, bytes.first(size));
                }
            }
        },
        [](auto& e) { e.setGains(someGains); });
}

TEST(EqualiserParameters, AreReadFromAnyAddress) {
    std::vector<std::byte> bytes(sizeof someGains + 1);
    const auto values = std::as_bytes(std::span(someGains));
    std::copy(values.begin(), values.end(), bytes.begin() + 1);
    expectSameSound([&](auto& e) { e.set(0, 3, std::span(bytes).subspan(1)); },
                    [](auto& e) { e.setGains(someGains); });
}

}  // namespace
}  // namespace korva::test
