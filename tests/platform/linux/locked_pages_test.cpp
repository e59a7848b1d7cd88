// What the kernel counts as locked, and what it does where it refuses.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <string>

#include "platform/memory_lock.h"

namespace korva::platform {
namespace {

std::size_t pageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The kernel's count of this process's locked memory, in bytes.
std::size_t lockedBytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    std::size_t kilobytes = 0;
    while (status >> word) {
        if (word == "VmLck:") {
            status >> kilobytes;
            return kilobytes * 1024;
        }
    }
    return 0;
}

/// Fresh pages of this process, unlocked again at the end.
class Pages {
public:
    explicit Pages(std::size_t count)
        : bytes(count * pageSize()),
          start(static_cast<char*>(
              mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    ~Pages() { munmap(start, bytes); }
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    std::size_t bytes;
    char* start;
};

/// Whether `check` holds in a copy of this process, so that it may give away what it can't get back.
template <typename Check>
bool holdsInChild(Check check) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(check() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(LockedPages, AreCountedAsLocked) {
    const Pages pages(3);
    const std::size_t before = lockedBytes();

    EXPECT_TRUE(lockMemory(pages.start, pages.bytes));

    EXPECT_EQ(lockedBytes(), before + pages.bytes);
}

TEST(LockedPages, AreAllThatHoldAByteOfTheRange) {
    const Pages pages(3);
    const std::size_t before = lockedBytes();

    EXPECT_TRUE(lockMemory(pages.start + pageSize() - 1, 2));

    EXPECT_EQ(lockedBytes(), before + 2 * pageSize());
}

TEST(LockedPages, AreNoneForMemoryThatIsNotThereAnyMore) {
    char* start = nullptr;
    {
        const Pages pages(1);
        start = pages.start;
    }
    const std::size_t before = lockedBytes();

    EXPECT_FALSE(lockMemory(start, 1));

    EXPECT_EQ(lockedBytes(), before);
}

TEST(LockedPages, AreRefusedBeyondTheLimitAndTheMemoryStaysUsable) {
    const Pages pages(1);

    EXPECT_TRUE(holdsInChild([&] {
        const rlimit none{0, 0};
        constexpr uid_t nobody = 65534;
        // A process with privileges may lock past the limit, so they are given up.
        if (setrlimit(RLIMIT_MEMLOCK, &none) != 0 || (geteuid() == 0 && setuid(nobody) != 0)) {
            return false;
        }
        const bool refused = !lockMemory(pages.start, pages.bytes);
        pages.start[0] = 'a';
        return refused && pages.start[0] == 'a';
    }));
}

TEST(LockedPages, MayComeToTheLimitOfAUserWithoutPrivileges) {
    EXPECT_TRUE(holdsInChild([] {
        const rlimit some{8192, 8192};
        constexpr uid_t nobody = 65534;
        return setrlimit(RLIMIT_MEMLOCK, &some) == 0 && (geteuid() != 0 || setuid(nobody) == 0) &&
               lockableMemory() == std::size_t{8192};
    }));
}

}  // namespace
}  // namespace korva::platform
