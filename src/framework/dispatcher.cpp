#include "framework/dispatcher.h"

#include <array>
#include <cassert>
#include <system_error>

#include "framework/delay_pool.h"
#include "framework/dispatcher_registry.h"
#include "framework/wait_any.h"
#include "platform/com_apartment.h"

namespace korva::framework {

namespace {

// Owns one reference, without a destructor: whoever fills the slot empties it.
constinit thread_local Dispatcher* currentDispatcher = nullptr;

constinit WaitableCounter liveThreads;

void setCurrent(Ref<Dispatcher> dispatcher) noexcept {
    const Ref<Dispatcher> former = Ref<Dispatcher>::adopt(currentDispatcher);
    currentDispatcher = dispatcher.giveUp();
}

}  // namespace

WaitableCounter& liveThreadCount() noexcept {
    return liveThreads;
}

DispatcherUse::DispatcherUse(Ref<Dispatcher> used) noexcept : dispatcher(std::move(used)) {
    if (dispatcher) {
        dispatcher->addUse();
    }
}

DispatcherUse& DispatcherUse::operator=(DispatcherUse&& other) noexcept {
    DispatcherUse taken(std::move(other));
    std::swap(dispatcher, taken.dispatcher);
    return *this;
}

DispatcherUse::~DispatcherUse() {
    if (dispatcher) {
        dispatcher->releaseUse();
    }
}

DispatcherUse Dispatcher::start(RootType rootType) {
    DispatcherUse use(create<Dispatcher>(rootType, false, nullptr));
    use->startThread();
    return use;
}

Dispatcher* Dispatcher::current() noexcept {
    return currentDispatcher;
}

// Nobody may have to wait for the host's first `runOne`, the host least of all, so the dispatcher runs from
// the moment that it is the thread's.
DispatcherUse Dispatcher::hostOnThisThread(WakeCallback wakeCallback) {
    DispatcherUse use(create<Dispatcher>(RootType{}, true, std::move(wakeCallback)));
    dispatcherRegistry().add(*use);
    use->begin();
    setCurrent(use.ref());
    return use;
}

Dispatcher::Dispatcher(RootType rootType, bool isHosted, WakeCallback callback)
    : root(rootType), hosted(isHosted), wakeCallback(std::move(callback)) {}

Dispatcher::~Dispatcher() {
    // First of all, since the registry gives out references.
    dispatcherRegistry().remove(*this);
    dropDelays();
    // The thread itself lets go of its dispatcher last, and can't wait for its own end.
    if (thread.joinable() && !isOwnThread()) {
        thread.join();
    }
}

void Dispatcher::startThread() {
    dispatcherRegistry().add(*this);
    liveThreads.add(1);
    AddRef();
    try {
        const std::lock_guard guard(threadMutex);
        thread = platform::Thread(&threadEntry, this);
    } catch (...) {
        Release();
        liveThreads.subtract(1);
        requestStop();
        stopped.set(1);
        throw;
    }
}

void Dispatcher::threadEntry(void* dispatcher) {
    {
        const auto self = Ref<Dispatcher>::adopt(static_cast<Dispatcher*>(dispatcher));
        setCurrent(self);
        {
            const platform::ComApartment apartment;
            self->begin();
            while (self->runOneOrNothing()) {
            }
            self->dropDelays();
            self->stopped.set(1);
        }
        setCurrent(nullptr);
    }
    // The last act: whoever waits for this may take everything down but the code itself, which the thread
    // keeps loaded until it has left it.
    liveThreads.subtract(1);
}

void Dispatcher::begin() {
    threadId.store(currentThreadNumber());
    // A stop request may have come before.
    state.update([](std::uint32_t& now) { now = now == starting ? std::uint32_t{running} : now; });
}

void Dispatcher::waitUntilStarted() const {
    if (state.get() == starting) {
        std::uint32_t seen = starting;
        state.wait(seen);
    }
}

void Dispatcher::wakeHost() noexcept {
    if (hosted && wakeCallback) {
        wakeCallback(*this);
    }
}

bool Dispatcher::runSynchronously(PostedCall::Function function, void* argument) {
    waitUntilStarted();
    if (isOwnThread()) {
        function(argument);
        return true;
    }
    const Ref<Dispatcher> own = Ref<Dispatcher>::share(current());
    PostedCall call;
    call.function = function;
    call.argument = argument;
    call.caller = own.get();
    if (!syncQueue.push(&call).accepted) {
        return false;
    }
    wakeHost();
    waitUntilDone(call, own.get());
    if (call.exception) {
        std::rethrow_exception(call.exception);
    }
    return true;
}

// The caller serves its own queue until it is empty and takes the count of that moment for seen: what is
// pushed later changes it. The first count seen is 0, never the present one: a call that is there already
// would not be served, and its caller may be the thread that is waited for. Nothing may be raised while the
// other thread has the record.
void Dispatcher::waitUntilDone(PostedCall& call, Dispatcher* own) noexcept {
    const auto isDone = [&call] { return call.done.load(std::memory_order_acquire) != 0; };
    std::uint32_t ownSeen = 0;
    const auto isCalled = [own, &ownSeen] {
        return own != nullptr && own->syncQueue.count().get() != ownSeen;
    };
    while (!isDone()) {
        if (!callerSpin.until([&] { return isDone() || isCalled(); })) {
            std::array waits{WaitRegistration(syncQueue.count(), call.done),
                             WaitRegistration((own != nullptr ? own : this)->syncQueue.count(), ownSeen)};
            waitAny(std::span(waits).first(own != nullptr ? 2 : 1));
        }
        if (!isDone() && own != nullptr) {
            ownSeen = own->serveCalls();
        }
    }
}

// Runs the calls that others make to this thread. Gives the count of the moment when there were none left:
// read any later, it might contain a call that came meanwhile, and that call would pass for seen.
std::uint32_t Dispatcher::serveCalls() {
    assert(isOwnThread());
    auto next = syncQueue.pop();
    while (next.found) {
        runAndFinish(next.entry);
        next = syncQueue.pop();
    }
    return next.pending;
}

bool Dispatcher::runOneCall() {
    const auto next = syncQueue.pop();
    if (next.found) {
        runAndFinish(next.entry);
    }
    return next.found;
}

void Dispatcher::runAndFinish(PostedCall* call) {
    ++runningCalls;
    if (call != nullptr) {
        runCall(*call);
    }
    --runningCalls;
    syncQueue.finish();
}

void Dispatcher::runCall(PostedCall& call) {
    call.outer = std::exchange(runningCall, &call);
    try {
        call.function(call.argument);
    } catch (...) {
        call.exception = std::current_exception();
    }
    runningCall = call.outer;
    call.done.store(1, std::memory_order_release);  // the record is the caller's again
}

bool Dispatcher::runOne() {
    // A call may end the last use of a hosted one; a thread of ours keeps its own.
    const Ref<Dispatcher> kept = hosted ? Ref<Dispatcher>::share(this) : nullptr;
    if (state.get() == stopping) {
        drain();
        return false;
    }
    // From inside a call, that call is in the count.
    WaitableCounter& calls = syncQueue.count();
    const auto hasWork = [&] { return calls.get() != runningCalls || !taskQueue.isEmpty(); };
    if (!hosted && !ownSpin.until(hasWork)) {
        std::uint32_t callsSeen = runningCalls;
        std::uint32_t tasksSeen = 0;
        std::array waits{WaitRegistration(calls, callsSeen), WaitRegistration(taskQueue.count(), tasksSeen)};
        waitAny(waits);
    }
    return runOneCall() || taskQueue.runNext() || !hosted;
}

// What a task raises ends here where nobody is there to hear of it.
bool Dispatcher::runOneOrNothing() noexcept {
    try {
        return runOne();
    } catch (...) {
        return true;
    }
}

// The queues are closed before they are drained: what was accepted is run, and nothing is accepted that
// would not be. The counts say nothing here, as they contain an entry that runs at present.
void Dispatcher::drain() {
    syncQueue.close();
    taskQueue.close();
    while (runOneCall()) {
    }
    while (taskQueue.runNext()) {
    }
}

void Dispatcher::push(Ref<DispatchTask> task) {
    if (acceptsTasks()) {
        taskQueue.push(std::move(task));
        wakeHost();
    }
}

bool Dispatcher::acceptsTasks() const {
    waitUntilStarted();
    return state.get() != stopping;
}

void Dispatcher::pushDelayed(Ref<DispatchTask> task, std::int64_t delayMs) {
    if (delayMs <= 0) {
        push(std::move(task));
        return;
    }
    if (const std::shared_ptr<DelayPool> pool = delays()) {
        DelayPool::delay(pool, *this, std::move(task), delayMs);
    }
}

// Null once the dispatcher is stopping: nobody would end the threads of a pool made after the last look.
std::shared_ptr<DelayPool> Dispatcher::delays() {
    const std::lock_guard guard(threadMutex);
    if (state.get() == stopping) {
        return nullptr;
    }
    if (delayPool == nullptr) {
        delayPool = std::make_shared<DelayPool>();
    }
    return delayPool;
}

// The pool's destructor waits for its workers: not under the mutex.
void Dispatcher::dropDelays() noexcept {
    std::shared_ptr<DelayPool> dropped;
    const std::lock_guard guard(threadMutex);
    dropped.swap(delayPool);
}

Dispatcher::DelayCounts Dispatcher::delayCounts() {
    const std::lock_guard guard(threadMutex);
    return delayPool == nullptr ? DelayCounts{} : delayPool->counts();
}

void Dispatcher::requestStop() {
    state.set(stopping);
    stopAsked->set(1);
    if (!isOwnThread()) {
        syncQueue.push(nullptr);
        wakeHost();
    }
}

bool Dispatcher::join(std::int64_t timeoutMs) {
    if (!isOwnThread()) {
        if (hosted || !waitUntilStopped(timeoutMs)) {
            return false;
        }
        joinThread();
    } else if (stopped.get() == 0) {
        requestStop();
        while (runOneOrNothing()) {
        }
        dropDelays();
        // A thread of ours has stopped when it is through with what it runs at present: others wait for that.
        if (hosted) {
            stopped.set(1);
        }
    }
    dispatcherRegistry().remove(*this);
    return true;
}

bool Dispatcher::waitUntilStopped(std::int64_t timeoutMs) {
    const Ref<Dispatcher> own = Ref<Dispatcher>::share(current());
    std::uint32_t stopSeen = 0;
    if (!own) {
        return stopped.waitFor(stopSeen, timeoutMs);
    }
    if (timeoutMs == waitForever) {
        refuseDeadlock(*own);
    }
    const WaitLimit limit(timeoutMs);
    std::uint32_t ownSeen = 0;
    while (true) {
        std::array waits{WaitRegistration(stopped, stopSeen),
                         WaitRegistration(own->syncQueue.count(), ownSeen)};
        const int ended = waitAny(waits, limit);
        if (ended != 1) {
            return ended == 0;
        }
        ownSeen = own->serveCalls();
    }
}

// A call that runs here and was made by the dispatcher to be waited for: it waits for this very thread.
void Dispatcher::refuseDeadlock(const Dispatcher& own) const {
    for (const PostedCall* call = own.runningCall; call != nullptr; call = call->outer) {
        if (call->caller == this) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        }
    }
}

void Dispatcher::joinThread() {
    const std::lock_guard guard(threadMutex);
    if (thread.joinable()) {
        thread.join();
    }
}

void Dispatcher::releaseUse() {
    if (!isOwnThread()) {
        dropDelays();
    }
    // Others go on using it: only the last one waits for its end.
    if (useCount.fetch_sub(1) == 1) {
        requestStop();
        join(waitForever);
        if (hosted && currentDispatcher == this) {
            setCurrent(nullptr);
        }
    }
}

}  // namespace korva::framework
