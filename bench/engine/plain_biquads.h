// Twelve bells for each of eight planes, as one writes them first.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korva::bench {

inline constexpr std::size_t bandsInAll = 12;

/// Second-order sections in direct form with the example equaliser's transfer functions: one plane and one
/// band after the other.
class PlainBiquads {
public:
    PlainBiquads(const std::array<float, bandsInAll>& gainsDb, const std::array<float, bandsInAll>& centresHz,
                 double sampleRate);

    void process(std::span<float* const> planes, std::uint32_t frames);

private:
    struct Section {
        float b0, b1, b2, a1, a2;
    };
    struct Past {
        float x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    };

    static void filter(const Section& section, Past& past, float* samples, std::uint32_t frames);

    std::array<Section, bandsInAll> sections;
    std::array<std::array<Past, bandsInAll>, 8> pasts;
};

}  // namespace korva::bench
