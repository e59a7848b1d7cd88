// A disk that takes no more after a while, for the registry's file and those beside it.
#pragma once

#include <sqlite3.h>

#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace korva::test {

/// While it lives, what this process writes to the registry's files meets the fault after so many bytes. The
/// bytes that there is room for are written still. One at a time in a process.
class FaultyDisk {
public:
    enum class Fault {
        full,    ///< ENOSPC
        broken,  ///< EIO
        killed   ///< The process ends by SIGKILL.
    };

    FaultyDisk(Fault kind, std::int64_t goodBytes) {
        fault = kind;
        room = goodBytes;
        replaceWrites(reinterpret_cast<sqlite3_syscall_ptr>(&FaultyDisk::write));
    }
    ~FaultyDisk() { replaceWrites(nullptr); }
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// Whether it took everything so far.
    [[nodiscard]] static bool isGood() noexcept { return room >= 0; }

private:
    /// Null brings back the system's own.
    static void replaceWrites(sqlite3_syscall_ptr function) {
        sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
        for (const char* const name : {"pwrite", "pwrite64"}) {
            system->xSetSystemCall(system, name, function);
        }
    }

    static ssize_t write(int file, const void* bytes, std::size_t count, off_t at) {
        const std::int64_t left = room.fetch_sub(static_cast<std::int64_t>(count));
        if (left >= static_cast<std::int64_t>(count)) {
            return pwrite(file, bytes, count, at);
        }
        const ssize_t written = left > 0 ? pwrite(file, bytes, static_cast<std::size_t>(left), at) : 0;
        if (fault == Fault::killed) {
            kill(getpid(), SIGKILL);
        }
        if (written > 0) {
            return written;
        }
        errno = fault == Fault::full ? ENOSPC : EIO;
        return -1;
    }

    static inline std::atomic<Fault> fault{Fault::full};
    static inline std::atomic<std::int64_t> room{0};
};

}  // namespace korva::test
