// A library that runs threads of its own, for tests that unload it meanwhile.
#include "tests/platform/thread_library.h"

#include <array>
#include <system_error>
#include <utility>

#include "platform/thread.h"

namespace korva::test {
namespace {

/// Memory of the library, which goes with it.
std::atomic<int> ownAnswer{libraryAnswer};

void waitAndAnswer(void* argument) {
    auto* const errand = static_cast<Errand*>(argument);
    errand->isRunning.store(true);
    const std::array handles{errand->mayEnd};
    platform::waitForHandles(handles, platform::waitForever);
    errand->answer.store(ownAnswer.load());
}

}  // namespace

extern "C" {

#pragma GCC visibility push(default)

bool startWaitingThread(Errand* errand) {
    try {
        platform::Thread thread(waitAndAnswer, errand);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

bool runThread(Errand* errand) {
    try {
        platform::Thread thread(waitAndAnswer, errand);
        thread.join();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

#pragma GCC visibility pop

}  // extern "C"

}  // namespace korva::test
