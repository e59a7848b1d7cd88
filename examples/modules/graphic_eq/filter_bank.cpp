#include "filter_bank.h"

#include <algorithm>

#include "small_numbers.h"

namespace equaliser {

void FilterBank::clear() {
    hasSound = false;
    states.fill({});
    glide.jumpTo(glide.aim());
    tune();
}

void FilterBank::change(const Response& response, std::uint32_t glideFrames) {
    if (!hasSound) {
        glide.jumpTo(response);
    } else if (response != glide.aim()) {
        // What a band remembers from when it ran last is long gone.
        for (std::size_t i = 0; i < bandCount; ++i) {
            if (!glide.needs(i)) {
                states[i] = {};
            }
        }
        glide.moveTo(response, glideFrames);
    }
    tune();
}

void FilterBank::process(const DspBlock& block) {
    hasSound = true;
    const SmallNumbersAreZero here;
    for (std::uint32_t begin = 0; begin < block.frames; begin += framesAtOnce) {
        if (glide.framesToGo() == 0 && glide.aim().changesNothing()) {
            return;
        }
        const std::uint32_t count = std::min(block.frames - begin, framesAtOnce);
        gather(block, begin, count, workspace);
        run(workspace, count);
        scatter(workspace, block, begin, count);
    }
}

void FilterBank::run(Frame* frames, std::uint32_t count) {
    for (; glide.framesToGo() != 0 && count != 0; ++frames, --count) {
        glide.step();
        tune();
        filter(running.data(), runningCount, glide.response().outputGain, frames, 1);
    }
    if (!glide.aim().changesNothing()) {
        filter(running.data(), runningCount, glide.aim().outputGain, frames, count);
    }
}

void FilterBank::tune() {
    runningCount = 0;
    for (std::size_t i = 0; i < bandCount; ++i) {
        if (glide.needs(i)) {
            running[runningCount++] = {Coefficients(glide.response().bands[i]), &states[i]};
        }
    }
}

}  // namespace equaliser
