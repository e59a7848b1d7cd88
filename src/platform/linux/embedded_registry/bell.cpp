#include "embedded_registry/bell.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <limits>

namespace korva::platform::embedded {
namespace {

constexpr std::size_t pageSize = 4096;

/// A signal to the thread may cut it short.
bool takeRoom(int file) {
    int error = EINTR;
    while (error == EINTR) {
        error = posix_fallocate(file, 0, pageSize);
    }
    return error == 0;
}

/// The file of that path with a page in it; -1 if it can't be had.
int openPage(const char* path) {
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    // A page that the disk has no room for would end the process when it is written to.
    if (file >= 0 && !takeRoom(file)) {
        close(file);
        return -1;
    }
    return file;
}

}  // namespace

Bell::Bell(const std::string& path) noexcept {
    const int file = openPage(path.c_str());
    if (file < 0) {
        return;
    }
    void* const page = mmap(nullptr, pageSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (page != MAP_FAILED) {
        counter = static_cast<Counter*>(page);
    }
}

Bell::~Bell() {
    if (counter != &own) {
        munmap(counter, pageSize);
    }
}

// Neither call is told that it is for one process only: another process has the page at another address.
void Bell::ring() noexcept {
    counter->fetch_add(1, std::memory_order_release);
    syscall(SYS_futex, counter, FUTEX_WAKE, std::numeric_limits<int>::max(), nullptr, nullptr, 0);
}

void Bell::waitWhile(std::uint32_t count, std::int64_t limitMs) const noexcept {
    const timespec limit = {.tv_sec = limitMs / 1000, .tv_nsec = limitMs % 1000 * 1'000'000};
    syscall(SYS_futex, counter, FUTEX_WAIT, count, &limit, nullptr, 0);
}

}  // namespace korva::platform::embedded
