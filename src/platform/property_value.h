// A variant value that frees what it owns.
#pragma once

#include "platform/published/property_types.h"

namespace korva::platform {

/// Owns a PROPVARIANT.
class PropertyValue {
public:
    PropertyValue() noexcept = default;
    ~PropertyValue() { PropVariantClear(&value); }
    PropertyValue(const PropertyValue&) = delete;
    PropertyValue& operator=(const PropertyValue&) = delete;

    /// For a call that gives a value: empty.
    [[nodiscard]] PROPVARIANT* out() noexcept {
        PropVariantClear(&value);
        return &value;
    }
    [[nodiscard]] const PROPVARIANT& get() const noexcept { return value; }
    const PROPVARIANT* operator->() const noexcept { return &value; }

private:
    PROPVARIANT value{};
};

}  // namespace korva::platform
