// What has listeners.
#pragma once

#include <cstdint>

#include "framework/listener_list.h"
#include "framework/observable_owner.h"

namespace korva::framework {

/// A part of an active object that others listen to: a value, or a collection's elements. It finds its owner
/// by its own place in it, since hundreds of them in one object shall stay small.
class ListenedTo {
public:
    ListenedTo(const ListenedTo&) = delete;
    ListenedTo& operator=(const ListenedTo&) = delete;

    /// The object that it is a part of.  [any]
    [[nodiscard]] ObservableOwner& owner() const noexcept {
        char* const place = const_cast<char*>(reinterpret_cast<const char*>(this));
        return *reinterpret_cast<ObservableOwner*>(place - placeInOwner);
    }

protected:
    explicit ListenedTo(ObservableOwner& owner) noexcept
        : placeInOwner(static_cast<std::int32_t>(reinterpret_cast<const char*>(this) -
                                                 reinterpret_cast<const char*>(&owner))) {}
    ~ListenedTo() = default;

    [[nodiscard]] SlotTable<PropagatorNode>& propagatorSlots() const noexcept {
        return owner().propagatorSlots;
    }
    [[nodiscard]] SlotTable<SubscriberNode>& subscriberSlots() const noexcept {
        return owner().subscriberSlots;
    }

    /// What listeners are given as the owner.
    [[nodiscard]] ActiveObject& ownerObject() const noexcept;

private:
    std::int32_t placeInOwner;
};

}  // namespace korva::framework
