#include "tests/support/reference_fold.h"

namespace korva::test {
namespace {

struct Speaker {
    std::uint32_t bit;
    int plane;
};

constexpr Speaker frontLeft{0x1, 0};
constexpr Speaker frontRight{0x2, 1};
constexpr Speaker frontCenter{0x4, 2};
constexpr Speaker lowFrequency{0x8, 3};
constexpr Speaker backLeft{0x10, 4};
constexpr Speaker backRight{0x20, 5};
constexpr Speaker sideLeft{0x200, 6};
constexpr Speaker sideRight{0x400, 7};

class Fold {
public:
    Fold(float* const* planesToFold, std::uint32_t in, std::uint32_t out, std::uint32_t frameCount)
        : planes(planesToFold), inMask(in), outMask(out), frames(frameCount) {}

    void run() {
        if (outMask == 0) {
            add(frontRight, frontLeft, 1.0f);
            return;
        }
        toOneOf(frontLeft, {sideLeft, 0.7083f}, {backLeft, 0.7083f});
        toOneOf(frontRight, {sideRight, 0.7083f}, {backRight, 0.7083f});
        toOneOf(sideLeft, {frontLeft, 0.7083f}, {backLeft, 0.7083f});
        toOneOf(sideRight, {frontRight, 0.7083f}, {backRight, 0.7083f});
        toOneOf(backLeft, {sideLeft, 0.7083f}, {frontLeft, 0.7083f});
        toOneOf(backRight, {sideRight, 0.7083f}, {frontRight, 0.7083f});
        frontCenterToPairs();
        lowFrequencyToPairs();
    }

private:
    struct Target {
        Speaker speaker;
        float coefficient;
    };

    [[nodiscard]] bool plays(Speaker speaker) const { return (outMask & speaker.bit) != 0; }

    void add(Speaker source, Speaker target, float coefficient) {
        for (std::uint32_t k = 0; k < frames; ++k) {
            const float product = planes[source.plane][k] * coefficient;
            planes[target.plane][k] = planes[target.plane][k] + product;
        }
    }

    bool offer(Speaker source, Target target) {
        if (!plays(target.speaker)) {
            return false;
        }
        add(source, target.speaker, (inMask & target.speaker.bit) != 0 ? target.coefficient : 1.0f);
        return true;
    }

    bool offerPair(Speaker source, Speaker left, Speaker right, float coefficient) {
        const bool leftTook = offer(source, {left, coefficient});
        const bool rightTook = offer(source, {right, coefficient});
        return leftTook || rightTook;
    }

    /// The six sources with one destination end with the same two choices.
    void toOneOf(Speaker source, Target first, Target second) {
        if (plays(source)) {
            return;
        }
        offer(source, first) || offer(source, second) || offer(source, {frontCenter, 0.5f}) ||
            offer(source, {lowFrequency, 0.5f});
    }

    void frontCenterToPairs() {
        if (plays(frontCenter)) {
            return;
        }
        offerPair(frontCenter, frontLeft, frontRight, 0.5f) ||
            offerPair(frontCenter, sideLeft, sideRight, 0.7083f) ||
            offerPair(frontCenter, backLeft, backRight, 0.7083f) ||
            offer(frontCenter, {lowFrequency, 0.7083f});
    }

    void lowFrequencyToPairs() {
        if (plays(lowFrequency)) {
            return;
        }
        offer(lowFrequency, {frontCenter, 0.7083f}) || offerPair(lowFrequency, frontLeft, frontRight, 0.5f) ||
            offerPair(lowFrequency, sideLeft, sideRight, 0.7083f) ||
            offerPair(lowFrequency, backLeft, backRight, 0.7083f);
    }

    float* const* planes;
    std::uint32_t inMask;
    std::uint32_t outMask;
    std::uint32_t frames;
};

}  // namespace

void foldByRows(float* const* planes, std::uint32_t inMask, std::uint32_t outMask, std::uint32_t frames) {
    Fold(planes, inMask, outMask, frames).run();
}

}  // namespace korva::test
