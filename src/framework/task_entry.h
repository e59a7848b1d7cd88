// A callable in a place of fixed size.
#pragma once

#include <cstddef>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

namespace korva::framework {

/// Calls what a task was made of. A null function pointer raises what an empty `std::function` does.
template <class Function, class... Arguments>
void callTask(Function& function, Arguments&&... arguments) {
    if constexpr (std::is_pointer_v<Function>) {
        if (function == nullptr) {
            throw std::bad_function_call();
        }
    }
    function(std::forward<Arguments>(arguments)...);
}

/// Room for one callable, a cache line in all. It is empty or full; whoever stores in it, runs or drops it.
class TaskEntry {
public:
    static constexpr std::size_t room = 56;

    /// Whether a callable can lie in an entry, and be moved out of it without raising anything.
    template <class Function>
    static constexpr bool fits =
        sizeof(Function) <= room &&
        alignof(Function) <= alignof(void*) && std::is_nothrow_move_constructible_v<Function>;

    template <class Function>
    requires fits<Function>
    void store(Function&& function) noexcept {
        ::new (static_cast<void*>(storage)) Function(std::move(function));
        end = &endAs<Function>;
    }

    /// Empties the entry, then calls what was in it: the entry may be used anew meanwhile.
    void run() { end(storage, true); }
    /// Empties the entry.
    void drop() { end(storage, false); }

private:
    template <class Function>
    static void endAs(void* place, bool calls) {
        Function& stored = *std::launder(static_cast<Function*>(place));
        Function function(std::move(stored));
        stored.~Function();
        if (calls) {
            callTask(function);
        }
    }

    void (*end)(void* place, bool calls) = nullptr;
    alignas(void*) std::byte storage[room];
};

}  // namespace korva::framework
