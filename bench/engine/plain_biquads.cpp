#include "bench/engine/plain_biquads.h"

#include <cmath>
#include <numbers>

namespace korva::bench {

PlainBiquads::PlainBiquads(const std::array<float, bandsInAll>& gainsDb,
                           const std::array<float, bandsInAll>& centresHz, double sampleRate) {
    for (std::size_t i = 0; i < bandsInAll; ++i) {
        const double amplitude = std::pow(10.0, gainsDb[i] / 40.0);
        const double angle = 2 * std::numbers::pi * centresHz[i] / sampleRate;
        const double width = std::tan(angle / 2) / std::tan(angle / 2 * std::pow(10.0, -0.125));
        const double alpha = std::sin(angle) * (width - 1 / width) / 2;
        const double a0 = 1 + alpha / amplitude;
        const auto share = [a0](double value) { return static_cast<float>(value / a0); };
        sections[i] = {share(1 + alpha * amplitude), share(-2 * std::cos(angle)),
                       share(1 - alpha * amplitude), share(-2 * std::cos(angle)),
                       share(1 - alpha / amplitude)};
    }
}

void PlainBiquads::process(std::span<float* const> planes, std::uint32_t frames) {
    for (std::size_t plane = 0; plane < pasts.size(); ++plane) {
        for (std::size_t i = 0; i < bandsInAll; ++i) {
            filter(sections[i], pasts[plane][i], planes[plane], frames);
        }
    }
}

void PlainBiquads::filter(const Section& section, Past& past, float* samples, std::uint32_t frames) {
    Past last = past;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const float x = samples[i];
        const float y = section.b0 * x + section.b1 * last.x1 + section.b2 * last.x2 - section.a1 * last.y1 -
                        section.a2 * last.y2;
        last = {x, last.x1, y, last.y1};
        samples[i] = y;
    }
    past = last;
}

}  // namespace korva::bench
