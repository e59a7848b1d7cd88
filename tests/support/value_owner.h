// An object with one value.
#pragma once

#include "framework/active_object.h"

namespace korva::test {

/// The least that a value can live in.
template <class T>
class ValueOwner final : public framework::ObjectClass<ValueOwner<T>, framework::ActiveObject> {
public:
    framework::Observable<T> value{*this};
};

/// The same with two values.
template <class T>
class PairOwner final : public framework::ObjectClass<PairOwner<T>, framework::ActiveObject> {
public:
    framework::Observable<T> first{*this};
    framework::Observable<T> second{*this};
};

}  // namespace korva::test
