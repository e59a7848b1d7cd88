// References by count, so that nobody counts by hand.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace korva::framework {

/// A counted reference to a `T` with `AddRef` and `Release`: an object of the framework, a counter, or a
/// published interface. Null or one reference. The reference itself is a plain value of one thread; the count
/// behind it keeps its own rules.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}

    /// Takes over the reference that the caller has: a creator's first one, or an out-parameter's.
    [[nodiscard]] static Ref adopt(T* object) noexcept {
        Ref ref;
        ref.object = object;
        return ref;
    }

    /// Adds a reference to an object that somebody else keeps alive meanwhile; null gives null.
    [[nodiscard]] static Ref share(T* object) {
        if (object != nullptr) {
            object->AddRef();
        }
        return adopt(object);
    }

    Ref(const Ref& other) : Ref(share(other.object)) {}
    Ref(Ref&& other) noexcept : object(std::exchange(other.object, nullptr)) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other) : Ref(share(other.get())) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
    noexcept : object(other.giveUp()) {}

    /// The new reference is in place before the old one goes: a destructor that looks here finds it.
    Ref& operator=(Ref other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    ~Ref() {
        if (object != nullptr) {
            object->Release();
        }
    }

    [[nodiscard]] T* get() const noexcept { return object; }
    T* operator->() const noexcept { return object; }
    T& operator*() const noexcept { return *object; }
    explicit operator bool() const noexcept { return object != nullptr; }

    /// Gives the reference itself to the caller, who has to release it.
    [[nodiscard]] T* giveUp() noexcept { return std::exchange(object, nullptr); }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object == b.object; }
    friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object == nullptr; }

private:
    T* object = nullptr;
};

/// A reference that also keeps an active object open: taking it is `AddRef` and `holdClose`, dropping it is
/// `close` and `Release`, so the object closes when the last of its holders is gone. Null or one share.
template <class T>
class Held {
public:
    Held() noexcept = default;
    Held(std::nullptr_t) noexcept {}

    /// Another holder beside those that the object has.
    explicit Held(Ref<T> reference) : object(std::move(reference)) {
        if (object) {
            object->holdClose();
        }
    }

    /// The creator's reference becomes the first holder: its drop is the one `close` that no hold answers.
    [[nodiscard]] static Held first(Ref<T> created) noexcept {
        Held held;
        held.object = std::move(created);
        return held;
    }

    Held(const Held& other) : Held(other.object) {}
    Held(Held&& other) noexcept = default;

    template <class U>
    requires std::is_convertible_v<U*, T*> Held(const Held<U>& other) : Held(Ref<T>(other.ref())) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> Held(Held<U>&& other)
    noexcept : object(other.giveUp()) {}

    Held& operator=(Held other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    ~Held() {
        if (object) {
            object->close();
        }
    }

    [[nodiscard]] T* get() const noexcept { return object.get(); }
    [[nodiscard]] const Ref<T>& ref() const noexcept { return object; }
    T* operator->() const noexcept { return object.get(); }
    T& operator*() const noexcept { return *object; }
    explicit operator bool() const noexcept { return static_cast<bool>(object); }

    /// Gives the share itself to the caller, who has to close and release it.
    [[nodiscard]] Ref<T> giveUp() noexcept { return std::move(object); }

    friend bool operator==(const Held& a, const Held& b) noexcept { return a.object == b.object; }
    friend bool operator==(const Held& a, std::nullptr_t) noexcept { return a.object == nullptr; }

private:
    Ref<T> object;
};

}  // namespace korva::framework
