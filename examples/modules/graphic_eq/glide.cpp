#include "glide.h"

namespace equaliser {
namespace {

float between(float from, float to, float part) {
    return from + part * (to - from);
}

Band between(const Band& from, const Band& to, float part) {
    return {between(from.tuning, to.tuning, part), between(from.damping, to.damping, part),
            between(from.share, to.share, part)};
}

/// A band that comes out of nothing or goes into it does so where it is: on a way through the frequencies it
/// would be heard.
void keepInPlace(Band& from, Band& to) {
    if (from.isFlat()) {
        from = {to.tuning, to.damping, 0};
    } else if (to.isFlat()) {
        to = {from.tuning, from.damping, 0};
    }
}

}  // namespace

void Glide::jumpTo(const Response& response) {
    asked = from = to = now = response;
    framesLeft = 0;
}

void Glide::moveTo(const Response& response, std::uint32_t frames) {
    asked = to = response;
    from = now;
    for (std::size_t i = 0; i < bandCount; ++i) {
        keepInPlace(from.bands[i], to.bands[i]);
    }
    framesInAll = framesLeft = frames;
}

void Glide::step() {
    --framesLeft;
    if (framesLeft == 0) {
        jumpTo(asked);
        return;
    }
    // Sets out and arrives without a kink, which would be a click.
    const float way = static_cast<float>(framesInAll - framesLeft) / static_cast<float>(framesInAll);
    const float part = way * way * (3 - 2 * way);
    for (std::size_t i = 0; i < bandCount; ++i) {
        now.bands[i] = between(from.bands[i], to.bands[i], part);
    }
    now.outputGain = between(from.outputGain, to.outputGain, part);
}

bool Glide::needs(std::size_t band) const {
    return !from.bands[band].isFlat() || !to.bands[band].isFlat();
}

}  // namespace equaliser
