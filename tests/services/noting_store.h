// A property store that notes what it is told.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "tests/support/shown_values.h"

namespace korva::test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Takes or refuses every value, and keeps none. A test's own; outlives whoever is given it.  [one thread at
/// a time]
class NotingStore final : public IPropertyStore {
public:
    /// The calls of `SetValue` since the last time: the first number of the GUID, the pid, and the value as
    /// `variantText` writes it.
    [[nodiscard]] std::vector<std::string> newNotes() { return std::exchange(notes, {}); }

    HRESULT answer = published::ok;       ///< Of `SetValue`.
    std::function<void()> onSet = [] {};  ///< Called by each `SetValue`, once it is noted.

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return published::noInterface;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT value) override {
        notes.push_back(std::to_string(key.fmtid.Data1) + "," + std::to_string(key.pid) + " " +
                        variantText(value));
        // A copy: the function may replace itself.
        const std::function<void()> told = onSet;
        told();
        return answer;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

private:
    std::vector<std::string> notes;
};

#pragma GCC diagnostic pop

}  // namespace korva::test
