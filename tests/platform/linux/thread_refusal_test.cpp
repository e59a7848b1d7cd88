// Threads that the system refuses.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <cstddef>
#include <system_error>

#include "platform/thread.h"
#include "platform/wait_handles.h"
#include "tests/platform/thread_library.h"
#include "tests/support/loaded_library.h"

namespace korva::platform {
namespace {

/// While it lives, threads are to get more stack than there are addresses, so none can be started.
class NoRoomForThreads {
public:
    NoRoomForThreads() {
        pthread_getattr_default_np(&usual);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, std::size_t{1} << 56);
        EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
        pthread_attr_destroy(&huge);
    }
    ~NoRoomForThreads() {
        pthread_setattr_default_np(&usual);
        pthread_attr_destroy(&usual);
    }
    NoRoomForThreads(const NoRoomForThreads&) = delete;
    NoRoomForThreads& operator=(const NoRoomForThreads&) = delete;

private:
    pthread_attr_t usual{};
};

void setFlag(void* argument) {
    *static_cast<bool*>(argument) = true;
}

TEST(ThreadRefusal, IsRaisedAsASystemError) {
    bool ran = false;
    {
        const NoRoomForThreads noRoom;
        EXPECT_THROW(Thread(setFlag, &ran), std::system_error);
    }
    EXPECT_FALSE(ran);
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGINT), 0);

    Thread(setFlag, &ran).join();
    EXPECT_TRUE(ran);
}

TEST(ThreadRefusal, LeavesTheLibraryFreeToGo) {
    Event mayEnd;
    test::Errand errand{mayEnd.handle()};
    test::LoadedLibrary library(KORVA_THREAD_LIBRARY);
    const auto startThread = library.function<test::StartWaitingThread>("startWaitingThread");
    {
        const NoRoomForThreads noRoom;
        ASSERT_FALSE(startThread(&errand));
    }
    library.close();

    EXPECT_FALSE(test::isLoaded(KORVA_THREAD_LIBRARY));
}

}  // namespace
}  // namespace korva::platform
