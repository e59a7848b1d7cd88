#include "platform/registry.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include "embedded_registry/database.h"
#include "embedded_registry/failure.h"
#include "embedded_registry/place.h"

namespace korva::platform {

using embedded::Database;
using embedded::KeyChain;
using namespace registry_result;

namespace {

/// Where what goes wrong below becomes a result.
template <class Action>
RegistryResult answer(const Action& action) noexcept {
    try {
        return action();
    } catch (const embedded::Failure& failure) {
        return failure.result;
    } catch (...) {
        // No memory, or no thread.
        return outOfMemory;
    }
}

/// Numbers above those of the roots, each given once: at a million keys a second they last for centuries.
std::uintptr_t nextHandle() noexcept {
    static constinit std::atomic<std::uintptr_t> last{0x100000000};
    return last.fetch_add(4, std::memory_order_relaxed) + 4;
}

}  // namespace

class OpenRegistryKey {
public:
    OpenRegistryKey(std::shared_ptr<Database> in, KeyChain keys, RegistryAccess granted,
                    std::uintptr_t number)
        : database(std::move(in)), chain(std::move(keys)), access(granted), handle(number) {}

    [[nodiscard]] static RegistryKey share(std::shared_ptr<Database> in, KeyChain keys,
                                           RegistryAccess granted, std::uintptr_t number) {
        return RegistryKey(
            std::make_shared<const OpenRegistryKey>(std::move(in), std::move(keys), granted, number));
    }

    [[nodiscard]] embedded::KeyId id() const noexcept { return chain.back(); }
    [[nodiscard]] bool mayWrite() const noexcept { return access != RegistryAccess::read; }
    [[nodiscard]] bool mayRead() const noexcept { return access != RegistryAccess::write; }

    /// The name of the value at `index`, from names that are read again only after a change below the key.
    [[nodiscard]] RegistryResult valueName(std::size_t index, std::size_t capacity, std::string& name) const {
        if (!mayRead()) {
            return accessDenied;
        }
        const std::lock_guard guard(namesMutex);
        if (const RegistryResult result = database->reader.refresh(id(), names); result != success) {
            return result;
        }
        if (index >= names.names.size()) {
            return noMoreItems;
        }
        if (names.names[index].size() >= capacity) {
            return moreData;
        }
        name = names.names[index];
        return success;
    }

    using Removal = RegistryResult (embedded::Writer::*)(const KeyChain& from, const embedded::Path& path);
    [[nodiscard]] RegistryResult remove(std::string_view path, Removal removal) const;

    const std::shared_ptr<Database> database;
    const KeyChain chain;
    const RegistryAccess access;
    const std::uintptr_t handle;

private:
    mutable Mutex namesMutex;
    mutable embedded::ValueNames names;
};

RegistryKey RegistryKey::root(RegistryRoot root, RegistryResult* result) {
    RegistryKey opened;
    const RegistryResult outcome = answer([&] {
        const auto database = Database::current();
        KeyChain chain;
        const RegistryResult found = database->findRoot(root, chain);
        if (found == success) {
            opened = OpenRegistryKey::share(database, std::move(chain), RegistryAccess::readWrite,
                                            static_cast<std::uintptr_t>(root));
        }
        return found;
    });
    if (result != nullptr) {
        *result = outcome;
    }
    return opened;
}

RegistryResult RegistryKey::open(std::string_view path, RegistryAccess access, RegistryKey& opened) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        const auto parts = embedded::splitPath(path);
        if (!parts) {
            return invalidParameter;
        }
        KeyChain chain;
        const RegistryResult result = key->database->reader.find(key->chain, *parts, chain);
        if (result == success) {
            opened = OpenRegistryKey::share(key->database, std::move(chain), access, nextHandle());
        }
        return result;
    });
}

RegistryResult RegistryKey::create(std::string_view path, RegistryAccess access, RegistryKey& opened,
                                   bool* created, RegistrySharing) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        const auto parts = embedded::splitPath(path);
        if (!parts) {
            return invalidParameter;
        }
        KeyChain chain;
        bool isNew = false;
        // Most are there, and a look waits for no writer.
        RegistryResult result = key->database->reader.find(key->chain, *parts, chain);
        if (result == notFound) {
            result = key->mayWrite() ? key->database->writer.create(key->chain, *parts, chain, isNew)
                                     : accessDenied;
        }
        if (result != success) {
            return result;
        }
        opened = OpenRegistryKey::share(key->database, std::move(chain), access, nextHandle());
        if (created != nullptr) {
            *created = isNew;
        }
        return success;
    });
}

RegistryResult OpenRegistryKey::remove(std::string_view path, Removal removal) const {
    return answer([&] {
        const auto parts = embedded::splitPath(path);
        if (!parts || parts->empty()) {
            return invalidParameter;
        }
        return mayWrite() ? (database->writer.*removal)(chain, *parts) : accessDenied;
    });
}

RegistryResult RegistryKey::deleteKey(std::string_view path) const {
    return key == nullptr ? invalidHandle : key->remove(path, &embedded::Writer::deleteKey);
}

RegistryResult RegistryKey::deleteTree(std::string_view path) const {
    return key == nullptr ? invalidHandle : key->remove(path, &embedded::Writer::deleteTree);
}

RegistryResult RegistryKey::readValue(std::string_view name, RegistryValue& value) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        const auto folded = embedded::foldedName(name, embedded::longestValueName);
        if (!folded) {
            return invalidParameter;
        }
        return key->mayRead() ? key->database->reader.readValue(key->id(), *folded, value) : accessDenied;
    });
}

RegistryResult RegistryKey::setValue(std::string_view name, std::uint32_t type,
                                     std::span<const std::byte> data) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        const auto folded = embedded::foldedName(name, embedded::longestValueName);
        if (!folded) {
            return invalidParameter;
        }
        return key->mayWrite() ? key->database->writer.setValue(key->chain, name, *folded, type, data)
                               : accessDenied;
    });
}

RegistryResult RegistryKey::deleteValue(std::string_view name) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        const auto folded = embedded::foldedName(name, embedded::longestValueName);
        if (!folded) {
            return invalidParameter;
        }
        return key->mayWrite() ? key->database->writer.deleteValue(key->chain, *folded) : accessDenied;
    });
}

RegistryResult RegistryKey::valueName(std::uint32_t index, std::size_t capacity, std::string& name) const {
    return key == nullptr ? invalidHandle : answer([&] { return key->valueName(index, capacity, name); });
}

RegistryResult RegistryKey::keyName(std::uint32_t index, std::string& name) const {
    if (key == nullptr) {
        return invalidHandle;
    }
    return answer([&] {
        return key->mayRead() ? key->database->reader.keyName(key->id(), index, name) : accessDenied;
    });
}

RegistryResult RegistryKey::flush() const {
    return key == nullptr ? invalidHandle : answer([&] { return key->database->writer.flush(key->id()); });
}

std::uintptr_t RegistryKey::handle() const noexcept {
    return key == nullptr ? 0 : key->handle;
}

RegistryResult applyRegistryChanges(std::span<const RegistryChange> changes, std::size_t* failedIndex,
                                    bool (*isCancelled)()) {
    std::size_t index = 0;
    const RegistryResult result =
        answer([&] { return Database::current()->writer.apply(changes, isCancelled, index); });
    if (result != success && failedIndex != nullptr) {
        *failedIndex = index;
    }
    return result;
}

/// Keeps the files open that it was armed in.
class RegistryWatch::Signal {
public:
    Signal() = default;
    ~Signal() {
        for (const auto& database : databases) {
            database->listener.forget(own);
        }
    }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    [[nodiscard]] RegistryResult arm(const std::shared_ptr<Database>& database, embedded::KeyId key) {
        if (std::find(databases.begin(), databases.end(), database) == databases.end()) {
            databases.push_back(database);
        }
        return database->listener.arm(own, key);
    }

    embedded::WatchSignal own;

private:
    std::vector<std::shared_ptr<Database>> databases;
};

RegistryWatch::RegistryWatch() : signal(std::make_unique<Signal>()) {}

RegistryWatch::~RegistryWatch() = default;

RegistryResult RegistryWatch::arm(const RegistryKey& key) {
    if (!key) {
        return invalidHandle;
    }
    return answer(
        [&] { return key.key->mayRead() ? signal->arm(key.key->database, key.key->id()) : accessDenied; });
}

WaitHandle RegistryWatch::handle() const noexcept {
    return signal->own.handle();
}

bool RegistryWatch::take() noexcept {
    return signal->own.take();
}

std::string registryPlace() {
    return embedded::registryPath();
}

}  // namespace korva::platform
