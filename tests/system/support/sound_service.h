// The system's sound service, as far as an audio object asks it.
#pragma once

#include <memory>

namespace korva::test {

/// While it lives, this process has the endpoints that the registry has, each in the state and with the
/// volume that stand there: where the system itself has a service for real devices only, this takes its
/// place. Made on a thread that stays in the multithreaded apartment meanwhile.
class SoundService {
public:
    SoundService();
    ~SoundService();
    SoundService(const SoundService&) = delete;
    SoundService& operator=(const SoundService&) = delete;

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace korva::test
