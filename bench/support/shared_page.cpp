#include "bench/support/shared_page.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace korva::bench {

static_assert(std::atomic<std::int64_t>::is_always_lock_free);

SharedFile::SharedFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, sizeof(SharedPage)) != 0) {
        throw std::runtime_error("no shared page");
    }
    void* const mapped =
        mmap(nullptr, sizeof(SharedPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file, 0);
    close(file);
    if (mapped == MAP_FAILED) {
        throw std::runtime_error("no shared page");
    }
    // Zero is what all members begin with, so nothing is constructed over what the other process has there.
    page = static_cast<SharedPage*>(mapped);
}

SharedFile::~SharedFile() {
    munmap(page, sizeof(SharedPage));
}

std::int64_t nowNs() noexcept {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

}  // namespace korva::bench
