#include "platform/registry.h"

#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <system_error>

#include "platform/unicode.h"
#include "platform/windows/object_sharing.h"
#include "platform/windows/registry_handle.h"

extern "C" NTSYSAPI NTSTATUS NTAPI NtDeleteKey(HANDLE key);  // the system's header leaves it out

namespace korva::platform {

/// Closes its key, unless that is a root.
class OpenRegistryKey {
public:
    OpenRegistryKey(HKEY opened, RegistryAccess granted) noexcept : handle(opened), access(granted) {}
    ~OpenRegistryKey() {
        if (!isPredefined(handle)) {
            RegCloseKey(handle);
        }
    }
    OpenRegistryKey(const OpenRegistryKey&) = delete;
    OpenRegistryKey& operator=(const OpenRegistryKey&) = delete;

    /// A share of `key`, which is closed with the last one. Closes it as well if there is no memory for that.
    [[nodiscard]] static RegistryKey share(HKEY key, RegistryAccess granted) {
        std::unique_ptr<const OpenRegistryKey> opened;
        try {
            opened = std::make_unique<const OpenRegistryKey>(key, granted);
        } catch (...) {
            const OpenRegistryKey closing(key, granted);
            throw;
        }
        return RegistryKey(std::shared_ptr<const OpenRegistryKey>(std::move(opened)));
    }

    /// The system looks at this for values only: to make and delete keys it asks what the user may do.
    [[nodiscard]] bool mayWrite() const noexcept { return access != RegistryAccess::read; }

    HKEY const handle;

private:
    RegistryAccess access;
};

namespace {

using Access = RegistryAccess;
using Result = RegistryResult;
namespace result = registry_result;

constexpr std::size_t longestKeyName = 255;      // UTF-16 units.
constexpr std::size_t longestValueName = 16383;  // The same.
constexpr std::size_t deepestPath = 512;
constexpr const wchar_t* linkValue = L"SymbolicLinkValue";

/// What an open key gives, where want of memory becomes a result.
template <class Action>
Result answer(const OpenRegistryKey* key, const Action& action) noexcept {
    try {
        return key == nullptr ? result::invalidHandle : action(*key);
    } catch (...) {
        return result::outOfMemory;
    }
}

/// Text for the system, which takes a zero unit for its end: there is none inside.
std::optional<WideString> systemText(std::string_view utf8) {
    if (utf8.find('\0') != utf8.npos) {
        return std::nullopt;
    }
    return exactWide(utf8);
}

std::optional<WideString> valueNameOf(std::string_view utf8) {
    auto name = systemText(utf8);
    return name && name->size() <= longestValueName ? std::move(name) : std::nullopt;
}

/// A path as every version of the system takes it: without the backslash that may end it, and with a name
/// between any two.
std::optional<WideString> pathOf(std::string_view utf8) {
    auto path = systemText(utf8);
    if (path && path->ends_with(L'\\')) {
        path->pop_back();
    }
    if (!path || utf8.empty()) {
        return path;
    }
    std::size_t depth = 0;
    for (std::size_t begin = 0; begin <= path->size(); ++depth) {
        const std::size_t end = std::min(path->find(L'\\', begin), path->size());
        if (end == begin || end - begin > longestKeyName) {
            return std::nullopt;
        }
        begin = end + 1;
    }
    return depth <= deepestPath ? std::move(path) : std::nullopt;
}

/// The path of a key to delete: the system would take an empty one for the open key itself.
std::optional<WideString> pathBelow(std::string_view utf8) {
    return utf8.empty() ? std::nullopt : pathOf(utf8);
}

/// What the look for the mark of a link gives. A key that may only be written is opened once more for it.
LSTATUS findLinkValue(HKEY handle, Access access) {
    HKEY reading = handle;
    if (access == Access::write) {
        const LSTATUS failed =
            RegOpenKeyExW(handle, nullptr, REG_OPTION_OPEN_LINK, KEY_QUERY_VALUE, &reading);
        if (failed != ERROR_SUCCESS) {
            return failed;
        }
    }
    const LSTATUS found = RegQueryValueExW(reading, linkValue, nullptr, nullptr, nullptr, nullptr);
    if (reading != handle) {
        RegCloseKey(reading);
    }
    return found;
}

/// Takes an open key over: refused if it points elsewhere.
Result keepUnlessLink(HKEY handle, Access access, RegistryKey& opened) {
    RegistryKey key = OpenRegistryKey::share(handle, access);
    const LSTATUS linked = findLinkValue(handle, access);
    if (linked == ERROR_SUCCESS) {
        return result::isLink;
    }
    if (linked != ERROR_FILE_NOT_FOUND) {
        return linked;
    }
    opened = std::move(key);
    return result::success;
}

Result openKey(HKEY parent, const WideString& path, Access access, RegistryKey& opened) {
    HKEY handle = nullptr;
    // A link is opened as the key that it is: where it leads is what must not be opened.
    const LSTATUS failed =
        RegOpenKeyExW(parent, path.c_str(), REG_OPTION_OPEN_LINK, static_cast<REGSAM>(access), &handle);
    return failed != ERROR_SUCCESS ? failed : keepUnlessLink(handle, access, opened);
}

/// Null if there is no memory for it.
SECURITY_ATTRIBUTES* forEveryone() noexcept {
    static ObjectSharing everyoneMayAll("D:(A;;0xF003F;;;WD)(A;;0xF003F;;;BA)");
    return everyoneMayAll.attributes();
}

Result createKey(HKEY parent, const WideString& path, Access access, RegistrySharing sharing,
                 RegistryKey& opened, bool& created) {
    const bool isShared = sharing == RegistrySharing::everyone;
    SECURITY_ATTRIBUTES* const attributes = isShared ? forEveryone() : nullptr;
    if (isShared && attributes == nullptr) {
        return result::outOfMemory;
    }
    HKEY handle = nullptr;
    DWORD disposition = 0;
    const LSTATUS failed = RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_OPEN_LINK,
                                           static_cast<REGSAM>(access), attributes, &handle, &disposition);
    if (failed != ERROR_SUCCESS) {
        return failed;
    }
    created = disposition == REG_CREATED_NEW_KEY;
    return keepUnlessLink(handle, access, opened);
}

/// Grows `buffer` until `read(buffer, capacity)` doesn't find it too small, up to `longest` units.
template <class Read>
LSTATUS readName(std::size_t longest, WideString& name, const Read& read) {
    name.resize(128);
    for (;;) {
        auto length = static_cast<DWORD>(name.size());
        const LSTATUS failed = read(name.data(), &length);
        if (failed == ERROR_MORE_DATA && name.size() <= longest) {
            // How much is needed isn't told.
            name.resize(2 * name.size());
            continue;
        }
        name.resize(failed == ERROR_SUCCESS ? length : 0);
        return failed;
    }
}

LSTATUS readKeyName(HKEY key, DWORD index, WideString& name) {
    return readName(longestKeyName, name, [&](WCHAR* buffer, DWORD* length) {
        return RegEnumKeyExW(key, index, buffer, length, nullptr, nullptr, nullptr, nullptr);
    });
}

enum class Deletion { key, tree };

Result deleteAllBelow(HKEY key);

// By its name the system would delete what a link leads to, and with all below it: a key that everybody may
// write to would be a way to delete any other. So the key that was opened as what it is goes, not its name.
Result deleteAt(HKEY parent, const WideString& path, Deletion deletion) {
    const REGSAM rights = DELETE | (deletion == Deletion::tree ? KEY_ENUMERATE_SUB_KEYS : 0);
    HKEY handle = nullptr;
    const LSTATUS failed = RegOpenKeyExW(parent, path.c_str(), REG_OPTION_OPEN_LINK, rights, &handle);
    if (failed != ERROR_SUCCESS) {
        return failed;
    }
    const OpenRegistryKey opened(handle, Access::write);
    const Result kept = deletion == Deletion::tree ? deleteAllBelow(handle) : result::success;
    return kept != result::success ? kept : static_cast<Result>(RtlNtStatusToDosError(NtDeleteKey(handle)));
}

/// Ends with the first one that stays.
Result deleteAllBelow(HKEY key) {
    WideString name;
    for (;;) {
        const LSTATUS failed = readKeyName(key, 0, name);
        if (failed != ERROR_SUCCESS) {
            return failed == ERROR_NO_MORE_ITEMS ? result::success : failed;
        }
        if (const Result kept = deleteAt(key, name, Deletion::tree); kept != result::success) {
            return kept;
        }
    }
}

}  // namespace

RegistryKey RegistryKey::root(RegistryRoot root, RegistryResult* outcome) {
    RegistryKey opened;
    Result failed = result::success;
    try {
        // The system's roots are the same numbers as signed ones.
        const auto number = static_cast<std::intptr_t>(static_cast<std::int32_t>(root));
        opened = OpenRegistryKey::share(reinterpret_cast<HKEY>(number), Access::readWrite);
    } catch (...) {
        failed = result::outOfMemory;
    }
    if (outcome != nullptr) {
        *outcome = failed;
    }
    return opened;
}

RegistryResult RegistryKey::open(std::string_view path, RegistryAccess access, RegistryKey& opened) const {
    return answer(key.get(), [&](const OpenRegistryKey& parent) -> Result {
        const auto widePath = pathOf(path);
        return widePath ? openKey(parent.handle, *widePath, access, opened) : result::invalidParameter;
    });
}

RegistryResult RegistryKey::create(std::string_view path, RegistryAccess access, RegistryKey& opened,
                                   bool* created, RegistrySharing sharing) const {
    return answer(key.get(), [&](const OpenRegistryKey& parent) -> Result {
        const auto widePath = pathOf(path);
        if (!widePath) {
            return result::invalidParameter;
        }
        bool isNew = false;
        Result failed = result::success;
        // Not every version tells that the key itself, with an empty path, was there before.
        if (parent.mayWrite() && !widePath->empty()) {
            failed = createKey(parent.handle, *widePath, access, sharing, opened, isNew);
        } else {
            failed = openKey(parent.handle, *widePath, access, opened);
            failed = failed == result::notFound ? result::accessDenied : failed;
        }
        if (created != nullptr && failed == result::success) {
            *created = isNew;
        }
        return failed;
    });
}

RegistryResult RegistryKey::deleteKey(std::string_view path) const {
    return answer(key.get(), [&](const OpenRegistryKey& parent) -> Result {
        const auto widePath = pathBelow(path);
        if (!widePath) {
            return result::invalidParameter;
        }
        return parent.mayWrite() ? deleteAt(parent.handle, *widePath, Deletion::key) : result::accessDenied;
    });
}

RegistryResult RegistryKey::deleteTree(std::string_view path) const {
    return answer(key.get(), [&](const OpenRegistryKey& parent) -> Result {
        const auto widePath = pathBelow(path);
        if (!widePath) {
            return result::invalidParameter;
        }
        return parent.mayWrite() ? deleteAt(parent.handle, *widePath, Deletion::tree) : result::accessDenied;
    });
}

RegistryResult RegistryKey::readValue(std::string_view name, RegistryValue& value) const {
    return answer(key.get(), [&](const OpenRegistryKey& open) -> Result {
        const auto wideName = valueNameOf(name);
        if (!wideName) {
            return result::invalidParameter;
        }
        // Most values fit; and one that grows while it is read is asked for again.
        std::vector<std::byte> data(128);
        for (;;) {
            DWORD type = 0;
            auto size = static_cast<DWORD>(data.size());
            const LSTATUS failed = RegQueryValueExW(open.handle, wideName->c_str(), nullptr, &type,
                                                    reinterpret_cast<BYTE*>(data.data()), &size);
            if (failed != ERROR_SUCCESS && failed != ERROR_MORE_DATA) {
                return failed;
            }
            data.resize(size);
            if (failed == ERROR_SUCCESS) {
                value = {.type = type, .data = std::move(data)};
                return result::success;
            }
        }
    });
}

RegistryResult RegistryKey::setValue(std::string_view name, std::uint32_t type,
                                     std::span<const std::byte> data) const {
    return answer(key.get(), [&](const OpenRegistryKey& open) -> Result {
        const auto wideName = valueNameOf(name);
        if (!wideName || data.size() > std::numeric_limits<DWORD>::max()) {
            return result::invalidParameter;
        }
        // The system looks behind the data of a string: it stores two bytes more if they are a terminator
        // that the caller seems to have left out. Bytes that are none keep it from that.
        std::vector<std::byte> guarded(data.size() + sizeof(WCHAR), std::byte{0xFF});
        std::copy(data.begin(), data.end(), guarded.begin());
        return RegSetValueExW(open.handle, wideName->c_str(), 0, type,
                              reinterpret_cast<const BYTE*>(guarded.data()), static_cast<DWORD>(data.size()));
    });
}

RegistryResult RegistryKey::deleteValue(std::string_view name) const {
    return answer(key.get(), [&](const OpenRegistryKey& open) -> Result {
        const auto wideName = valueNameOf(name);
        return wideName ? RegDeleteValueW(open.handle, wideName->c_str()) : result::invalidParameter;
    });
}

RegistryResult RegistryKey::valueName(std::uint32_t index, std::size_t capacity, std::string& name) const {
    return answer(key.get(), [&](const OpenRegistryKey& open) -> Result {
        WideString wideName;
        const LSTATUS failed = readName(longestValueName, wideName, [&](WCHAR* buffer, DWORD* length) {
            return RegEnumValueW(open.handle, index, buffer, length, nullptr, nullptr, nullptr, nullptr);
        });
        if (failed != ERROR_SUCCESS) {
            return failed;
        }
        std::string utf8 = toUtf8(wideName);
        if (utf8.size() >= capacity) {
            return result::moreData;
        }
        name = std::move(utf8);
        return result::success;
    });
}

RegistryResult RegistryKey::keyName(std::uint32_t index, std::string& name) const {
    return answer(key.get(), [&](const OpenRegistryKey& open) -> Result {
        WideString wideName;
        const LSTATUS failed = readKeyName(open.handle, index, wideName);
        if (failed == ERROR_SUCCESS) {
            name = toUtf8(wideName);
        }
        return failed;
    });
}

RegistryResult RegistryKey::flush() const {
    return key == nullptr ? result::invalidHandle : RegFlushKey(key->handle);
}

std::uintptr_t RegistryKey::handle() const noexcept {
    return key == nullptr ? 0 : reinterpret_cast<std::uintptr_t>(key->handle);
}

namespace {

Result applyChange(const RegistryChange& change) {
    using Kind = RegistryChange::Kind;
    const RegistryKey root = RegistryKey::root(change.root);
    if (change.kind == Kind::deleteTree) {
        return root.deleteTree(change.path);
    }
    RegistryKey key;
    if (change.kind == Kind::deleteValue) {
        const Result failed = root.open(change.path, Access::readWrite, key);
        return failed != result::success ? failed : key.deleteValue(change.name);
    }
    const Result failed = root.create(change.path, Access::readWrite, key);
    if (failed != result::success || change.kind == Kind::createKey) {
        return failed;
    }
    return key.setValue(change.name, change.value.type, change.value.data);
}

bool deletes(const RegistryChange& change) {
    return change.kind == RegistryChange::Kind::deleteValue ||
           change.kind == RegistryChange::Kind::deleteTree;
}

}  // namespace

RegistryResult applyRegistryChanges(std::span<const RegistryChange> changes, std::size_t* failedIndex,
                                    bool (*isCancelled)()) {
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const bool isOver = isCancelled != nullptr && isCancelled();
        const Result failed = isOver ? result::cancelled : applyChange(changes[i]);
        if (failed == result::success || (failed == result::notFound && deletes(changes[i]))) {
            continue;
        }
        if (failedIndex != nullptr) {
            *failedIndex = i;
        }
        return failed;
    }
    return result::success;
}

/// The system takes its event's reference itself: it may signal after this object's is closed.
class RegistryWatch::Signal {
public:
    Event event;
};

RegistryWatch::RegistryWatch() : signal(std::make_unique<Signal>()) {}

RegistryWatch::~RegistryWatch() = default;

RegistryResult RegistryWatch::arm(const RegistryKey& key) {
    if (!key) {
        return registry_result::invalidHandle;
    }
    // Without the last flag the system ends it together with the thread that asked.
    constexpr DWORD filter = REG_NOTIFY_CHANGE_LAST_SET | REG_NOTIFY_THREAD_AGNOSTIC;
    return RegNotifyChangeKeyValue(key.key->handle, TRUE, filter, signal->event.handle(), TRUE);
}

WaitHandle RegistryWatch::handle() const noexcept {
    return signal->event.handle();
}

bool RegistryWatch::take() noexcept {
    if (WaitForSingleObject(signal->event.handle(), 0) != WAIT_OBJECT_0) {
        return false;
    }
    // A signal that comes between the two is of a change before this returns, and told with this one.
    signal->event.reset();
    return true;
}

std::string registryPlace() {
    return "the Windows registry";
}

}  // namespace korva::platform
