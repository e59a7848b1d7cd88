// Mutexes that every process of the machine can look for by name: the sign that their maker lives.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace korva::platform {

/// Whether a mutex may have that name: "Global\" and then 1 to 200 signs of ASCII, without space, slash and
/// backslash.  [any]
[[nodiscard]] constexpr bool isMutexName(std::string_view name) noexcept {
    constexpr std::string_view space = "Global\\";
    constexpr std::size_t longest = 200;
    return name.starts_with(space) && name.size() > space.size() && name.size() <= space.size() + longest &&
           std::all_of(name.begin() + space.size(), name.end(),
                       [](char c) { return c > ' ' && c < '\x7F' && c != '/' && c != '\\'; });
}

/// Holds a mutex of a name, like "Global\{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}", from when it is made until
/// it goes or its process ends, however that happens. Nobody waits for one: others ask `isMutexHeld`. One
/// name's mutex may be held several times; it is gone with the last.
///
/// On Windows it is the system's, owned by the thread that made it: Everyone may wait for it, Administrators
/// may do all. Elsewhere it is a locked file "Global_{...}.lock" in the folder "<registry>.run" beside the
/// registry's file, so that those who share a registry agree on who lives; the file goes with the mutex, but
/// stays where the process was killed.
///
/// Any thread may let it go.  [any, blocks]
class NamedMutex {
public:
    /// None.
    NamedMutex() noexcept;
    /// None if the name isn't one, or the system refuses it.
    [[nodiscard]] static NamedMutex create(const std::string& name) noexcept;

    NamedMutex(NamedMutex&& other) noexcept;
    NamedMutex& operator=(NamedMutex&& other) noexcept;
    ~NamedMutex();

    explicit operator bool() const noexcept { return held != nullptr; }

private:
    struct Held;
    explicit NamedMutex(std::unique_ptr<const Held> mutex) noexcept;

    std::unique_ptr<const Held> held;
};

/// Whether some live process has a mutex of that name; asking disturbs nobody. One that can't be looked at
/// counts as held.  [any, blocks]
[[nodiscard]] bool isMutexHeld(const std::string& name) noexcept;

/// Clears away what a killed process left of a mutex; leaves alone one that is held.  [any, blocks]
void removeAbandonedMutex(const std::string& name) noexcept;

}  // namespace korva::platform
