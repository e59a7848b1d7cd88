// The queues of a thread, by which any thread can run work on it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "framework/dispatch_task.h"
#include "framework/object_class.h"
#include "framework/posted_call.h"
#include "framework/ring_queue.h"
#include "framework/spin.h"
#include "framework/task_queue.h"
#include "framework/thread_number.h"
#include "framework/waitable_counter.h"
#include "platform/mutex.h"
#include "platform/thread.h"

namespace korva::framework {

class DelayPool;
class Dispatcher;

/// The object that a thread is started for: for whoever looks at a process and asks what its threads do.
struct RootType {
    TypeTag identity = nullptr;
    std::uint32_t size = 0;
    std::uint32_t alignment = 0;

    template <class T>
    static RootType of() noexcept {
        return {typeTag<T>(), static_cast<std::uint32_t>(sizeof(T)), static_cast<std::uint32_t>(alignof(T))};
    }
};

/// One use of a dispatcher, and a reference to it. The drop of the last use asks the thread to stop and waits
/// until it has; dropped on that very thread, it runs what is left in the queues instead. The last use isn't
/// dropped in a call that the thread itself waits for: that ends the process. That of a hosted dispatcher is
/// dropped on the thread that it serves.  [any, blocks]
class DispatcherUse {
public:
    DispatcherUse() noexcept = default;
    /// Another use of a dispatcher that has one.
    explicit DispatcherUse(Ref<Dispatcher> dispatcher) noexcept;
    DispatcherUse(DispatcherUse&& other) noexcept = default;
    DispatcherUse& operator=(DispatcherUse&& other) noexcept;
    ~DispatcherUse();

    [[nodiscard]] Dispatcher* get() const noexcept { return dispatcher.get(); }
    [[nodiscard]] const Ref<Dispatcher>& ref() const noexcept { return dispatcher; }
    Dispatcher* operator->() const noexcept { return dispatcher.get(); }
    Dispatcher& operator*() const noexcept { return *dispatcher; }
    explicit operator bool() const noexcept { return static_cast<bool>(dispatcher); }

private:
    Ref<Dispatcher> dispatcher;
};

/// A thread's pair of queues: calls whose callers wait, and tasks. Calls go first; within a queue the order
/// is that of the pushes. A dispatcher has a thread of its own, or is hosted: then it serves a thread of
/// somebody else, who is told by the wake callback when to call `runOne`.
///
/// Two threads that call each other at the same moment both come back: a thread that waits for its call runs
/// the calls that others make to it meanwhile.
///
/// Members are [any] unless they say otherwise.
class Dispatcher : public ObjectClass<Dispatcher, ObjectBase> {
public:
    enum State : std::uint32_t { starting = 0, running = 1, stopping = 2 };

    using WakeCallback = std::function<void(Dispatcher&)>;

    /// Starts a thread with a dispatcher, and gives its first use. Raises std::system_error where the system
    /// has no thread left.
    [[nodiscard]] static DispatcherUse start(RootType rootType = {});

    /// The dispatcher of the calling thread; null if it has none. The thread itself keeps it alive.
    [[nodiscard]] static Dispatcher* current() noexcept;

    /// Makes a dispatcher for the calling thread, which has none or a stopped one, and gives its first use.
    /// `wakeCallback`, which may be empty and raises nothing, is called by any thread after it has pushed
    /// something.
    [[nodiscard]] static DispatcherUse hostOnThisThread(WakeCallback wakeCallback);

    /// Runs `function(argument)` on the dispatcher's thread and waits until it has run, without a limit; at
    /// once if that is the calling thread. False, with nothing run, if the dispatcher has stopped. What the
    /// function raises is raised here. Allocates nothing.  [any, blocks]
    bool runSynchronously(PostedCall::Function function, void* argument);

    /// The same for anything that can be called without arguments.  [any, blocks]
    template <class Callable>
    bool runSynchronously(Callable&& callable) {
        using Target = std::remove_reference_t<Callable>;
        return runSynchronously([](void* argument) { (*static_cast<Target*>(argument))(); },
                                const_cast<void*>(static_cast<const void*>(std::addressof(callable))));
    }

    /// Queues a task (see `makeTask`); the handle's drop cancels it. A dispatcher that is about to stop drops
    /// it unreported. `cancelCounter`, if any, is the task's instead of one of its own.
    template <class Callable>
    [[nodiscard]] TaskHandle post(Callable&& callable, Ref<WaitableCounter> cancelCounter = {},
                                  DispatchTask::Place place = DispatchTask::Place::back) {
        Ref<DispatchTask> task = makeTask(std::forward<Callable>(callable), std::move(cancelCounter), place);
        TaskHandle handle(task);
        push(std::move(task));
        return handle;
    }

    /// The same without a handle: nobody can cancel it but by `cancelCounter`. A small callable needs no
    /// memory of its own.
    template <class Callable>
    void postAndForget(Callable&& callable) {
        using Function = std::decay_t<Callable>;
        if constexpr (TaskEntry::fits<Function> && std::is_invocable_v<Function&>) {
            if (acceptsTasks()) {
                taskQueue.push(std::forward<Callable>(callable));
                wakeHost();
            }
        } else {
            push(makeTask(std::forward<Callable>(callable)));
        }
    }
    template <class Callable>
    void postAndForget(Callable&& callable, Ref<WaitableCounter> cancelCounter,
                       DispatchTask::Place place = DispatchTask::Place::back) {
        push(makeTask(std::forward<Callable>(callable), std::move(cancelCounter), place));
    }

    /// Queues a task after `delayMs` milliseconds. Neither a cancelled task nor one whose dispatcher stops
    /// meanwhile is ever run.
    template <class Callable>
    [[nodiscard]] TaskHandle postDelayed(std::int64_t delayMs, Callable&& callable,
                                         Ref<WaitableCounter> cancelCounter = {},
                                         DispatchTask::Place place = DispatchTask::Place::back) {
        if (delayMs > 0 && !cancelCounter) {
            cancelCounter = Ref<WaitableCounter>::adopt(new WaitableCounter);  // somebody waits for it
        }
        Ref<DispatchTask> task = makeTask(std::forward<Callable>(callable), std::move(cancelCounter), place);
        TaskHandle handle(task);
        pushDelayed(std::move(task), delayMs);
        return handle;
    }

    /// Runs one call or task, waiting for it unless the dispatcher is hosted. False: there was none, or the
    /// dispatcher is stopping; then all that it had accepted has been run and it accepts no more. What a task
    /// raises goes on to the caller.  [the dispatcher's thread, blocks unless hosted]
    bool runOne();

    /// Asks the dispatcher to stop: what it has accepted is still run, tasks posted from now on are dropped.
    void requestStop();

    /// Waits until the dispatcher has stopped and its thread has ended; serves the calling thread's own calls
    /// meanwhile. False if the limit passes, or if it is a hosted one of another thread. On the dispatcher's
    /// own thread: stops it, and runs what is left. Raises std::system_error, resource deadlock would occur,
    /// when the dispatcher waits for a call that the calling thread runs at present.  [any, blocks]
    bool join(std::int64_t timeoutMs);

    [[nodiscard]] bool isOwnThread() const noexcept {
        return threadId.load(std::memory_order_relaxed) == currentThreadNumber();
    }
    [[nodiscard]] bool isHosted() const noexcept { return hosted; }
    [[nodiscard]] State currentState() const noexcept { return static_cast<State>(state.get()); }
    [[nodiscard]] const RootType& rootType() const noexcept { return root; }

    /// Set to 1 when the dispatcher is asked to stop, for whoever works on its behalf.
    [[nodiscard]] const Ref<WaitableCounter>& stopRequest() const noexcept { return stopAsked; }

    /// Delayed tasks that wait for their time, and the worker threads made for such so far.
    struct DelayCounts {
        std::size_t waiting = 0;
        std::size_t workers = 0;
    };
    [[nodiscard]] DelayCounts delayCounts();

protected:
    template <class T, class... Arguments>
    friend Ref<T> create(Arguments&&... arguments);

    Dispatcher(RootType rootType, bool isHosted, WakeCallback callback);
    ~Dispatcher() override;

    /// Starts the thread of a new dispatcher; its creator has the first use then.
    void startThread();

private:
    friend class DelayPool;
    friend class DispatcherRegistry;
    friend class DispatcherUse;

    static void threadEntry(void* dispatcher);

    [[nodiscard]] bool acceptsTasks() const;
    void push(Ref<DispatchTask> task);
    void pushDelayed(Ref<DispatchTask> task, std::int64_t delayMs);
    std::shared_ptr<DelayPool> delays();
    void dropDelays() noexcept;

    void addUse() noexcept { useCount.fetch_add(1); }
    void releaseUse();

    void begin();
    void waitUntilStarted() const;
    void wakeHost() noexcept;
    void waitUntilDone(PostedCall& call, Dispatcher* own) noexcept;
    bool runOneOrNothing() noexcept;
    std::uint32_t serveCalls();
    void runAndFinish(PostedCall* call);
    void runCall(PostedCall& call);
    bool runOneCall();
    void drain();
    bool waitUntilStopped(std::int64_t timeoutMs);
    void refuseDeadlock(const Dispatcher& own) const;
    void joinThread();

    mutable WaitableCounter state{starting};
    RingQueue<PostedCall> syncQueue;
    TaskQueue taskQueue;
    AdaptiveSpin callerSpin;  // of those who wait for their calls
    // Of the dispatcher's thread. One that begins sleeps first: who has begun it may be about to begin
    // others, and goes on sooner where it has to share its processor with this thread.
    AdaptiveSpin ownSpin{1};
    std::atomic<std::uint32_t> threadId{0};  // 0 until the thread has begun
    const RootType root;
    const bool hosted;
    const Ref<WaitableCounter> stopAsked = Ref<WaitableCounter>::adopt(new WaitableCounter);
    WaitableCounter stopped;
    const WakeCallback wakeCallback;
    std::atomic<std::uint32_t> useCount{0};
    PostedCall* runningCall = nullptr;  // the dispatcher's thread only, like the next one
    std::uint32_t runningCalls = 0;     // these are in the queue's count, too

    platform::Mutex threadMutex;  // for the rest
    platform::Thread thread;
    std::shared_ptr<DelayPool> delayPool;

    Dispatcher* previousRegistered = nullptr;  // under the registry's mutex
    Dispatcher* nextRegistered = nullptr;
    bool isRegistered = false;
};

/// Threads of dispatchers that have been started and have not left the library's code.  [any]
[[nodiscard]] WaitableCounter& liveThreadCount() noexcept;

}  // namespace korva::framework
