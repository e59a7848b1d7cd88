// A thread that plays while another does something else to the instance.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "korva/module/check/sound.h"

namespace korva::tool {

/// Plays noise through an instance from its begin to its end, without a pause. What it heard that was no
/// finite number can be asked for afterwards.
class AudioLoop {
public:
    AudioLoop(TestedInstance& playedInstance, const Scene& playedScene, std::uint32_t seed);
    ~AudioLoop();
    AudioLoop(const AudioLoop&) = delete;
    AudioLoop& operator=(const AudioLoop&) = delete;

    /// Returns when that many more blocks have been played.  [blocks]
    void waitForBlocks(std::uint32_t count) const;

    /// Ends the thread, and throws `CheckFailed` if the sound wasn't finite.
    void expectFinite();
    /// Ends the thread.
    void stop();

private:
    void run();

    TestedInstance& instance;
    const Scene& scene;
    const Cuts cuts;
    const Sound noise;
    Bus bus;
    std::string notFinite;  ///< Written by the thread, read after its end.
    std::atomic<std::uint32_t> blocks{0};
    std::atomic<bool> isAskedToStop{false};
    std::thread thread;  ///< Last: it uses all of the above.
};

}  // namespace korva::tool
