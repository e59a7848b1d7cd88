#include "engine/volume_level.h"

#include <cmath>

namespace korva::engine {

float volumeDb(float scalar) noexcept {
    const float level = 20.0f * std::log10(scalar);
    return level > -130.0f ? level : -130.0f;
}

}  // namespace korva::engine
