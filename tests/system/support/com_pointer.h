// References as a host holds them.
#pragma once

#include <utility>

#include "platform/published/unknown.h"

namespace korva::test {

/// Holds one reference, or none.
template <class Interface>
class ComPointer {
public:
    ComPointer() noexcept = default;
    /// Takes the caller's reference over.
    explicit ComPointer(Interface* owned) noexcept : pointer(owned) {}
    ComPointer(ComPointer&& other) noexcept : pointer(std::exchange(other.pointer, nullptr)) {}
    ComPointer& operator=(ComPointer&& other) noexcept {
        std::swap(pointer, other.pointer);
        return *this;
    }
    ~ComPointer() { release(); }

    [[nodiscard]] Interface* get() const noexcept { return pointer; }
    Interface* operator->() const noexcept { return pointer; }
    Interface& operator*() const noexcept { return *pointer; }
    explicit operator bool() const noexcept { return pointer != nullptr; }

    /// Where a method puts another reference; the one at hand goes.
    [[nodiscard]] Interface** receive() {
        release();
        return &pointer;
    }
    [[nodiscard]] void** receiveAny() { return reinterpret_cast<void**>(receive()); }

    /// Gives what `Release` gave; 0 without a reference.
    ULONG release() {
        Interface* const held = std::exchange(pointer, nullptr);
        return held != nullptr ? held->Release() : 0;
    }

private:
    Interface* pointer = nullptr;
};

/// A face of an object; none if it has no such.
template <class Interface>
[[nodiscard]] ComPointer<Interface> query(IUnknown& object, REFIID id) {
    ComPointer<Interface> face;
    static_cast<void>(object.QueryInterface(id, face.receiveAny()));
    return face;
}

/// How many references a face says there are.
[[nodiscard]] inline ULONG referencesTo(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

}  // namespace korva::test
