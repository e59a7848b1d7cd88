// Those who listen to something in the registry, and the thread that tells them.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "platform/counted_object.h"
#include "platform/mutex.h"
#include "platform/registry.h"
#include "platform/wait_handles.h"

namespace korva::platform::devices {

/// The clients of one watched key, with all below it. A thread looks at the key from the first client on
/// until the last has gone; it calls one client at a time. Owned by shares, of which the thread has one.
///
/// Clients may come and go at any time, also from inside a call. They are told from when `add` returns until
/// `remove` does: `remove` waits for a call of the client that it removes, unless it runs inside a call.
///
/// Lock order: `mutex` before everything in the registry. No client is called, and none released, under it.
/// [any]
class RegistryListeners : public std::enable_shared_from_this<RegistryListeners> {
public:
    virtual ~RegistryListeners() = default;
    RegistryListeners(const RegistryListeners&) = delete;
    RegistryListeners& operator=(const RegistryListeners&) = delete;

    /// Keeps a reference to the client. A client that is added twice is called twice. A result of the
    /// registry means that the client is not there; raises `std::system_error` where the system has no thread
    /// or event left.  [any, blocks]
    RegistryResult add(IUnknown& client);
    /// E_NOTFOUND for one who isn't there.  [any, blocks]
    HRESULT remove(IUnknown& client);
    /// [any, blocks]
    void removeAll();

protected:
    explicit RegistryListeners(RegistryKey watchedKey) : key(std::move(watchedKey)) {}

    /// Reads what the first client is told the changes of. The result is the registry's.
    virtual RegistryResult remember() = 0;
    /// Reads again, and tells of what is different by `tellAll`.  [the thread]
    virtual void look() = 0;

    /// Calls `tell` for each client in the order in which they came; not for one who goes meanwhile.
    /// [the thread]
    void tellAll(const std::function<void(IUnknown&)>& tell);

    const RegistryKey key;

private:
    struct Client {
        std::uint64_t number;
        Reference<IUnknown> object;
    };

    RegistryResult start();
    static void enterThread(void* share);
    void run();
    bool waitForChange();
    [[nodiscard]] std::vector<std::uint64_t> clientNumbers();
    IUnknown* enter(std::uint64_t number);
    void leave();
    [[nodiscard]] bool isOnThread() const { return std::this_thread::get_id() == threadId; }

    Event wake;  ///< Signalled for the thread to see that nobody is left.

    Mutex mutex;
    std::condition_variable changed;  ///< A call or the thread has ended.
    std::vector<Client> clients;
    std::uint64_t lastNumber = 0;
    std::optional<std::uint64_t> running;  ///< Who is being called.
    Reference<IUnknown> leaving;           ///< Who went from inside its own call.
    bool hasThread = false;
    std::thread::id threadId;

    /// The thread's own while there is one.
    std::unique_ptr<RegistryWatch> watch;
};

}  // namespace korva::platform::devices
