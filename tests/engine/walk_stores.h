// A property store of someone else's, for a core to read.
#pragma once

#include "framework/object_base.h"
#include "framework/published_object.h"
#include "platform/property_key.h"
#include "platform/published/property_interfaces.h"
#include "platform/registry_values.h"
#include "tests/engine/walk_model.h"

namespace korva::test {

/// Has values as the registry has them.  [owner]
class WalkStore final : public framework::PublishedObject<WalkStore, framework::ObjectBase, IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        *value = PROPVARIANT{};
        const auto found = values.find(platform::KeyToText(key));
        return found == values.end() ? published::ok : platform::variantOf(found->second, *value);
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

    PropertyValues values;
};

}  // namespace korva::test
