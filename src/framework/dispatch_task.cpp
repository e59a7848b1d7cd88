#include "framework/dispatch_task.h"

#include "framework/wait_any.h"

namespace korva::framework {

namespace {

// Changes whenever a task is done that somebody may wait for. One for all tasks: few are ever waited for, and
// a task stays small.
constinit WaitableCounter doneBell;

}  // namespace

void DispatchTask::run() {
    // Set by a throwing callable too: somebody may wait for it. Only those with a handle can, and the first
    // handle was there before the task was queued, or was made by the callable.
    struct SetDone {
        DispatchTask& task;
        ~SetDone() {
            task.doneFlag.store(1, std::memory_order_release);
            if (task.handleCount.load(std::memory_order_relaxed) != 0) {
                doneBell.add(1);
            }
        }
    } setDone{*this};
    if (!isCancelled()) {
        call();
    }
}

bool DispatchTask::isCancelled() const noexcept {
    return sharedCancel ? sharedCancel->get() != 0 : cancelled.load(std::memory_order_acquire);
}

void DispatchTask::cancel() {
    if (sharedCancel) {
        sharedCancel->set(1);
    } else {
        cancelled.store(true, std::memory_order_release);
    }
}

void DispatchTask::dropHandle() {
    if (handleCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        cancel();
    }
}

TaskHandle::TaskHandle(Ref<DispatchTask> handled) noexcept : task(std::move(handled)) {
    if (task) {
        task->handleCount.fetch_add(1, std::memory_order_relaxed);
    }
}

TaskHandle::TaskHandle(const TaskHandle& other) noexcept : TaskHandle(other.task) {}

TaskHandle& TaskHandle::operator=(TaskHandle other) noexcept {
    std::swap(task, other.task);
    return *this;
}

TaskHandle::~TaskHandle() {
    if (task) {
        task->dropHandle();
    }
}

void TaskHandle::cancel() {
    if (task) {
        task->cancel();
    }
}

void TaskHandle::waitUntilDone() const {
    if (task) {
        WaitRegistration registration(doneBell, task->doneFlag);
        waitAny({&registration, 1});
    }
}

}  // namespace korva::framework
