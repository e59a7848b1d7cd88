#include "rt/fold_plan.h"

#include "rt/fold_rows.h"
#include "rt/realtime.h"

namespace korva::rt {

KORVA_RT_CODE void makeFoldPlan(std::uint32_t inMask, std::uint32_t outMask, FoldPlan& plan) noexcept {
    constexpr std::uint8_t none = planeCount;
    std::uint8_t slotOfPlane[planeCount] = {none, none, none, none, none, none, none, none};
    std::uint32_t count = 0;
    forEachFold(inMask, outMask, [&](Plane source, Plane target, float coefficient) {
        std::uint8_t& slot = slotOfPlane[target];
        if (slot == none) {
            slot = static_cast<std::uint8_t>(count++);
            plan.destinations[slot].plane = target;
            plan.destinations[slot].sourceCount = 0;
        }
        FoldPlan::Destination& destination = plan.destinations[slot];
        destination.sources[destination.sourceCount++] = {coefficient, source};
    });
    plan.destinationCount = count;
}

}  // namespace korva::rt
