// The choices of the fold, and the walk over them for two speaker masks.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "rt/speakers.h"

namespace korva::rt {

/// A set of planes, one bit each.
using PlaneSet = std::uint32_t;

constexpr PlaneSet setOf(Plane plane) {
    return 1u << plane;
}

/// The planes whose own speaker is in `mask`. The eight bits lie in two runs: 0x3F, and 0x600.
constexpr PlaneSet planesOfMask(std::uint32_t mask) {
    return (mask & 0x3F) | ((mask & 0x600) >> 3);
}

/// Where a plane without a speaker goes: to the planes of the first choice that the output has any of.
struct FoldRow {
    struct Choice {
        PlaneSet planes;
        float coefficient;
    };
    Plane source;
    std::array<Choice, 4> choices;
};

namespace foldTo {
inline constexpr float minus3dB = 0.7083f;  ///< About -3 dB: to a neighbour on the same side.
inline constexpr float minus6dB = 0.5f;     ///< -6 dB: from one plane to two, or from two to one.
inline constexpr PlaneSet frontPair = setOf(FrontLeft) | setOf(FrontRight);
inline constexpr PlaneSet sidePair = setOf(SideLeft) | setOf(SideRight);
inline constexpr PlaneSet backPair = setOf(BackLeft) | setOf(BackRight);
inline constexpr PlaneSet center = setOf(FrontCenter);
inline constexpr PlaneSet lfe = setOf(LowFrequency);

/// In the order in which sources are added. A left plane never reaches a right one, nor the reverse.
inline constexpr std::array<FoldRow, planeCount> rows = {{
    {FrontLeft,
     {{{setOf(SideLeft), minus3dB}, {setOf(BackLeft), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {FrontRight,
     {{{setOf(SideRight), minus3dB}, {setOf(BackRight), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {SideLeft,
     {{{setOf(FrontLeft), minus3dB}, {setOf(BackLeft), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {SideRight,
     {{{setOf(FrontRight), minus3dB}, {setOf(BackRight), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {BackLeft,
     {{{setOf(SideLeft), minus3dB}, {setOf(FrontLeft), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {BackRight,
     {{{setOf(SideRight), minus3dB}, {setOf(FrontRight), minus3dB}, {center, minus6dB}, {lfe, minus6dB}}}},
    {FrontCenter, {{{frontPair, minus6dB}, {sidePair, minus3dB}, {backPair, minus3dB}, {lfe, minus3dB}}}},
    {LowFrequency, {{{center, minus3dB}, {frontPair, minus6dB}, {sidePair, minus3dB}, {backPair, minus3dB}}}},
}};
}  // namespace foldTo

/// Calls `add(source, destination, coefficient)` for each fold, in the order in which they are added up.
/// Inlined, so that it stays in its caller's code section.
template <typename Add>
[[gnu::always_inline]] inline void forEachFold(std::uint32_t inMask, std::uint32_t outMask, Add add) {
    if (outMask == 0) {  // the whole word, unknown speakers too
        add(FrontRight, FrontLeft, 1.0f);
        return;
    }
    const PlaneSet inPlanes = planesOfMask(inMask);
    const PlaneSet outPlanes = planesOfMask(outMask);
    for (const FoldRow& row : foldTo::rows) {
        if ((outPlanes & setOf(row.source)) != 0) {
            continue;
        }
        for (const FoldRow::Choice& choice : row.choices) {
            PlaneSet targets = choice.planes & outPlanes;
            if (targets == 0) {
                continue;
            }
            for (; targets != 0; targets &= targets - 1) {
                const auto target = static_cast<Plane>(std::countr_zero(targets));
                add(row.source, target, (inPlanes & setOf(target)) != 0 ? choice.coefficient : 1.0f);
            }
            break;
        }
    }
}

}  // namespace korva::rt
