// What the process of a check tells the tool, in memory that both have.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "korva/module/check/verdict.h"

namespace korva::tool {

/// Written by the process of the check, also from a signal handler and by a thread that may neither allocate
/// nor call the system; read by the tool once that process has ended. All zero at first.
struct CheckReport {
    /// Leaves the outcome. The first one counts.  [any]
    void leave(Outcome verdict, std::string_view why) noexcept;

    std::atomic<bool> isTaken;  ///< Somebody leaves an outcome.
    std::atomic<bool> isLeft;   ///< And has.
    Outcome outcome;
    char reason[2048];  ///< Ends in a zero, as do the texts below.

    char situation[256];                 ///< What the check is at, as `noteSituation` was told.
    std::atomic<const char*> call;       ///< The module's function that the check is in. Constant text.
    std::atomic<const char*> otherCall;  ///< That which one of its other threads is in, or came to last.
    std::atomic<const char*> crashCall;  ///< The one that the thread that crashed was in.
    std::atomic<std::uintptr_t> crashAddress;  ///< Of an access that the memory doesn't bear.
    std::atomic<bool> hasCrashAddress;
};

/// Keeps a report for the time of a check, in memory that a fork has in common with this process.
class SharedReport {
public:
    SharedReport();
    ~SharedReport();
    SharedReport(const SharedReport&) = delete;
    SharedReport& operator=(const SharedReport&) = delete;

    CheckReport* operator->() const noexcept { return report; }
    CheckReport& operator*() const noexcept { return *report; }

private:
    CheckReport* report;
};

/// From now on the functions below write to `report`, and a signal of a crash is noted there before it ends
/// this process: the thread of a check calls it first.
void reportTo(CheckReport& report);

/// What the check tries next: the words that tell one try from another.  [any, rt]
void noteSituation(std::string_view situation) noexcept;

/// Says that this thread is in a function of the module while it lives. `name` is constant text.  [any, rt]
class NotedCall {
public:
    explicit NotedCall(const char* name) noexcept;
    ~NotedCall();
    NotedCall(const NotedCall&) = delete;
    NotedCall& operator=(const NotedCall&) = delete;
};

/// Leaves an outcome and ends the process of the check.  [any, rt]
[[noreturn]] void endCheck(Outcome outcome, std::string_view reason) noexcept;

/// Ends the process of the check as failed: this thread calls `function`, and may not.  [any, rt]
[[noreturn]] void failAtCall(const char* function) noexcept;

/// " in CALL (SITUATION)", as far as there are any, of the calling thread.
[[nodiscard]] std::string whereText();
/// The same of what a process left.
[[nodiscard]] std::string whereText(const CheckReport& report, const char* call);

/// Memory that the module may not touch, and what is said of a module that does. `what` is copied.  [any]
void forbidMemory(const void* begin, std::size_t bytes, std::string_view what);
void allowMemory(const void* begin) noexcept;

}  // namespace korva::tool
