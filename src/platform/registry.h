// The registry: keys in a tree, with typed values, and word of their changes.
//
// On Windows it is the system's. Elsewhere it is one file for all processes of a user: KORVA_REGISTRY in the
// environment names it, else it is $XDG_STATE_HOME/korva/registry (~/.local/state/korva/registry), made when
// it is first opened; the copy of a process (by fork) leaves it alone until it runs another program. Both
// keep to the same contract; where they can't, it is said here.
//
// Paths and names are UTF-8 without a zero inside; parts of a path are separated by a backslash, one more may
// end it, and none is empty. The name of a key takes up to 255 units of UTF-16, that of a value up to 16,383,
// and a path up to 512 names. Names are compared without regard to case (Unicode's simple folding; the system
// has its own, older one) and kept as they were first written. The empty value name is the key's default
// value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/wait_handles.h"

namespace korva::platform {

/// 0, or why the registry refused: numbers of Windows.
using RegistryResult = std::int32_t;

namespace registry_result {
inline constexpr RegistryResult success = 0;
inline constexpr RegistryResult notFound = 2;       ///< No such key or value.
inline constexpr RegistryResult accessDenied = 5;   ///< Not for this access; or a key with sub-keys.
inline constexpr RegistryResult invalidHandle = 6;  ///< No open key.
inline constexpr RegistryResult invalidData = 13;   ///< Data that its type doesn't allow.
inline constexpr RegistryResult outOfMemory = 14;
inline constexpr RegistryResult invalidParameter = 87;  ///< A path or name that is none, see above.
inline constexpr RegistryResult diskFull = 112;
inline constexpr RegistryResult busy = 170;              ///< Another writer kept the file for over 5 s.
inline constexpr RegistryResult moreData = 234;          ///< A buffer is too small.
inline constexpr RegistryResult noMoreItems = 259;       ///< An index past the end.
inline constexpr RegistryResult isLink = 681;            ///< The key points at another one; refused.
inline constexpr RegistryResult corrupt = 1015;          ///< The file is damaged.
inline constexpr RegistryResult ioFailed = 1016;         ///< The file can't be read or written.
inline constexpr RegistryResult notRegistryFile = 1017;  ///< The file is something else; it is left alone.
inline constexpr RegistryResult keyDeleted = 1018;       ///< The open key was deleted.
inline constexpr RegistryResult cancelled = 1223;        ///< The caller wants no more of it.
inline constexpr RegistryResult newerFile = 1306;        ///< A newer version made the file; it is left alone.
inline constexpr RegistryResult wrongType = 1630;        ///< A value of another type.
}  // namespace registry_result

/// The types of values. Any other number is kept as well.
namespace registry_type {
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t string = 1;  ///< UTF-16, as a rule with its terminator.
inline constexpr std::uint32_t expandString = 2;
inline constexpr std::uint32_t binary = 3;
inline constexpr std::uint32_t dword = 4;        ///< 4 bytes, little-endian.
inline constexpr std::uint32_t multiString = 7;  ///< Strings with their terminators, and one more.
inline constexpr std::uint32_t qword = 11;       ///< 8 bytes, little-endian.
}  // namespace registry_type

enum class RegistryRoot : std::uint32_t {
    classesRoot = 0x80000000,  ///< "Software\Classes" of the next but one.
    currentUser = 0x80000001,
    localMachine = 0x80000002
};

/// What an open key may be used for, in the numbers of Windows.
enum class RegistryAccess : std::uint32_t {
    read = 0x20019,       ///< KEY_READ
    write = 0x20006,      ///< KEY_WRITE: to change values and sub-keys; to read or watch gives 5.
    readWrite = 0x2001F,  ///< Both.
};

/// Who may use a key that is made. An embedded registry leaves that to the rights of its file.
enum class RegistrySharing {
    inherited,  ///< As the key above says.
    everyone,   ///< Everyone, and Administrators, may do everything with it.
};

/// A value as it is stored: any bytes of any length under any type.
struct RegistryValue {
    std::uint32_t type = registry_type::none;
    std::vector<std::byte> data;
};

class OpenRegistryKey;

/// A share of an open key; the last one closes it. A key that is deleted stays open: all its operations give
/// 1018, also when one of the same name is made again. Without a key, they give 6.
///
/// Different threads may use one key at once.  [any, blocks]
class RegistryKey {
public:
    /// No key.
    RegistryKey() noexcept = default;

    /// A key that is always there, with every access; no key (and the result why) only where the registry
    /// itself can't be opened.
    [[nodiscard]] static RegistryKey root(RegistryRoot root, RegistryResult* result = nullptr);

    /// Opens a key below this one (this one itself once more if `path` is empty), whatever this one may be
    /// used for. `opened` is as it was unless the result is 0. A key with a value "SymbolicLinkValue" points
    /// elsewhere and is refused with 681; the way to it is not looked at.
    [[nodiscard]] RegistryResult open(std::string_view path, RegistryAccess access,
                                      RegistryKey& opened) const;
    /// The same, and makes the keys that are missing: 5 if there are any and this key may only be read.
    /// `created` tells whether it was. `sharing` is that of each key that is made.
    [[nodiscard]] RegistryResult create(std::string_view path, RegistryAccess access, RegistryKey& opened,
                                        bool* created = nullptr,
                                        RegistrySharing sharing = RegistrySharing::inherited) const;

    /// Deletes a key below this one; 5 if it has sub-keys or this key may only be read, 2 if it is missing,
    /// 87 for an empty path. A key that points elsewhere goes itself: what it points at stays.
    [[nodiscard]] RegistryResult deleteKey(std::string_view path) const;
    /// Deletes a key below this one with all below it, at once with an embedded registry. The same results
    /// but for the sub-keys.
    [[nodiscard]] RegistryResult deleteTree(std::string_view path) const;

    /// `value` is as it was unless the result is 0.
    [[nodiscard]] RegistryResult readValue(std::string_view name, RegistryValue& value) const;
    [[nodiscard]] RegistryResult setValue(std::string_view name, std::uint32_t type,
                                          std::span<const std::byte> data) const;
    [[nodiscard]] RegistryResult deleteValue(std::string_view name) const;

    /// The name of the value at `index`, from 0 on, in the order in which values were made with an embedded
    /// registry. 259 past the last one; 234 if the name and a terminator take more than `capacity` bytes.
    [[nodiscard]] RegistryResult valueName(std::uint32_t index, std::size_t capacity,
                                           std::string& name) const;
    /// The name of the sub-key at `index`; 259 past the last one.
    [[nodiscard]] RegistryResult keyName(std::uint32_t index, std::string& name) const;

    /// Brings what was written to the disk.
    [[nodiscard]] RegistryResult flush() const;

    /// The system's number of the open key, 0 for none. An embedded registry never gives one twice.
    [[nodiscard]] std::uintptr_t handle() const noexcept;
    explicit operator bool() const noexcept { return static_cast<bool>(key); }

    /// Whether both are shares of one open key: a key that is opened twice has two handles, unless it is a
    /// root.
    friend bool operator==(const RegistryKey& a, const RegistryKey& b) noexcept {
        return a.handle() == b.handle();
    }

private:
    friend class RegistryWatch;
    friend class OpenRegistryKey;
    explicit RegistryKey(std::shared_ptr<const OpenRegistryKey> open) noexcept : key(std::move(open)) {}

    std::shared_ptr<const OpenRegistryKey> key;
};

/// One step of a change of many values. Keys that are missing on the way to a value are made.
struct RegistryChange {
    enum class Kind { createKey, setValue, deleteValue, deleteTree };

    Kind kind = Kind::createKey;
    RegistryRoot root = RegistryRoot::localMachine;
    std::string path{};     ///< Of the key.
    std::string name{};     ///< Of the value.
    RegistryValue value{};  ///< What it is set to.
};

/// Makes all the changes in their order, or none. To delete what isn't there is no fault; a key that points
/// elsewhere is refused, unless it is deleted itself. An embedded registry shows them to others all together;
/// the system's shows one after the other, and keeps those before one that fails. `failedIndex` then tells
/// which one failed. `isCancelled`, if there is one, is asked before each: once it says so that one fails
/// with 1223.  [any, blocks]
[[nodiscard]] RegistryResult applyRegistryChanges(std::span<const RegistryChange> changes,
                                                  std::size_t* failedIndex = nullptr,
                                                  bool (*isCancelled)() = nullptr);

/// Tells when values change. Signalled by the first change after `arm`, and not again before the next `arm`.
/// A change before a key is first armed is not told of, one between a signal and the next `arm` need not be:
/// so arm first and read then. A key that is armed when it is armed again may lose a change that comes just
/// then. To set a value to what it is may count as a change or not; that a key of the subtree comes or goes
/// need not. The deletion of the armed key itself may pass unnoticed: `arm` then gives 1018.
///
/// One thread arms and takes; the handle may be waited on by others.
class RegistryWatch {
public:
    /// Raises `std::system_error` when the system has no events left.
    RegistryWatch();
    ~RegistryWatch();
    RegistryWatch(const RegistryWatch&) = delete;
    RegistryWatch& operator=(const RegistryWatch&) = delete;

    /// Asks for word of the next change of a value in `key` or below it. Several keys may be armed at once.
    /// An armed key whose last share goes may signal.  [blocks]
    [[nodiscard]] RegistryResult arm(const RegistryKey& key);

    /// Signalled from a change until it is taken; valid as long as this object.
    [[nodiscard]] WaitHandle handle() const noexcept;
    /// Whether it was signalled. It isn't afterwards.
    bool take() noexcept;

private:
    class Signal;
    std::unique_ptr<Signal> signal;
};

/// Where the registry is, for messages: a file's path, or the system's name for it.
[[nodiscard]] std::string registryPlace();

}  // namespace korva::platform
