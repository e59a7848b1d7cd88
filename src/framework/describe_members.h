// How a class tells what its members are.
#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "framework/class_info.h"
#include "framework/object_base.h"
#include "framework/observable.h"
#include "framework/observable_collection.h"

namespace korva::framework {

namespace detail {

/// A value that is a member of `Owner`.
template <class Owner, class T>
class ObservableMember final : public ValueMember<T> {
public:
    explicit ObservableMember(Observable<T> Owner::*described) noexcept : member(described) {}

    void reset(ObjectBase& object) const override { in(object).reset(); }
    void setByReference(ObjectBase& object, const T& value) const override { in(object).set(value); }
    void setByValue(ObjectBase& object, T value) const override { in(object).set(value); }
    const void* address(ObjectBase& object) const override { return &in(object).value(); }

private:
    Observable<T>& in(ObjectBase& object) const { return static_cast<Owner&>(object).*member; }

    Observable<T> Owner::*member;
};

/// A collection that `Owner` has a reference to; its default is to be empty.
template <class Owner>
class CollectionMember final : public MemberDescriptor {
public:
    explicit CollectionMember(Ref<ObservableCollection> Owner::*described) noexcept
        : MemberDescriptor(typeTag<ObservableCollection>()), member(described) {}

    void reset(ObjectBase& object) const override {
        if (ObservableCollection* const collection = in(object).get()) {
            collection->clear();
        }
    }
    const void* address(ObjectBase& object) const override { return in(object).get(); }

private:
    const Ref<ObservableCollection>& in(ObjectBase& object) const {
        return static_cast<Owner&>(object).*member;
    }

    Ref<ObservableCollection> Owner::*member;
};

}  // namespace detail

/// For `describeMembers` of a class: its member goes by `name`, which is a constant. With `resetsAtClose` it
/// goes back to its default, or is emptied, when its object closes.
enum class AtClose { keeps, resets };

template <class Owner, class T>
void describe(ClassInfo& info, std::string_view name, Observable<T> Owner::*member,
              AtClose atClose = AtClose::keeps) {
    auto described = std::make_shared<const detail::ObservableMember<Owner, T>>(member);
    info.observables.push_back(described);
    if (atClose == AtClose::resets) {
        info.resetAtClose.push_back(described);
    }
    info.observableOfName.emplace(name, std::move(described));
}

template <class Owner>
void describe(ClassInfo& info, std::string_view name, Ref<ObservableCollection> Owner::*member,
              AtClose atClose = AtClose::keeps) {
    auto described = std::make_shared<const detail::CollectionMember<Owner>>(member);
    info.collections.push_back(described);
    if (atClose == AtClose::resets) {
        info.resetCollectionsAtClose.push_back(described);
    }
    info.collectionOfName.emplace(name, std::move(described));
}

}  // namespace korva::framework
