// Mutexes that every process of the machine can look for by name: the sign that their maker lives.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace korva::platform {

/// Holds a mutex of a name, like "Global\{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}", from when it is made until
/// it goes or its process ends, however that happens. Nobody waits for one: others ask `isMutexHeld`.
///
/// On Windows it is the system's, held by the thread that made it: Everyone may wait for it, Administrators
/// may do all. Elsewhere it is a locked file "Global_{...}.lock" in the folder "<registry>.run" beside the
/// registry's file, so that those who share a registry agree on who lives; the file goes with the mutex, but
/// stays where the process was killed.
class NamedMutex {
public:
    /// None.
    NamedMutex() noexcept = default;
    /// None if the system refuses it; one that isn't ours alone if another one has that name already.
    /// [any, blocks]
    [[nodiscard]] static NamedMutex create(const std::string& name) noexcept;

    NamedMutex(NamedMutex&& other) noexcept : handle(std::exchange(other.handle, noHandle)) {
        path.swap(other.path);
    }
    NamedMutex& operator=(NamedMutex&& other) noexcept {
        std::swap(handle, other.handle);
        path.swap(other.path);
        return *this;
    }
    ~NamedMutex();

    explicit operator bool() const noexcept { return handle != noHandle; }

private:
    static constexpr std::intptr_t noHandle = -1;

    std::intptr_t handle = noHandle;
    std::string path;  ///< Of the file, where it is one.
};

/// Whether some live process has a mutex of that name; asking disturbs nobody.  [any, blocks]
[[nodiscard]] bool isMutexHeld(const std::string& name) noexcept;

/// Clears away what a killed process left of a mutex; leaves one that is held alone.  [any, blocks]
void removeAbandonedMutex(const std::string& name) noexcept;

}  // namespace korva::platform
