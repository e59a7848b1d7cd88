// A host's own objects, which count who holds them.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>

#include "platform/published/results.h"
#include "platform/published/unknown.h"

namespace korva::test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Lives as long as the test says, and asserts at its end that all references were given back.  [any]
template <class Interface>
class OwnObject : public Interface {
public:
    OwnObject() = default;
    OwnObject(const OwnObject&) = delete;
    OwnObject& operator=(const OwnObject&) = delete;
    ~OwnObject() { EXPECT_EQ(references(), 0) << "somebody still holds a host's object"; }

    /// Of others than the test.
    [[nodiscard]] std::int64_t references() const noexcept { return count.load(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const bool isKnown = id == published::iidOf<IUnknown> || id == published::iidOf<Interface>;
        *object = isKnown ? static_cast<Interface*>(this) : nullptr;
        if (isKnown) {
            AddRef();
        }
        return isKnown ? published::ok : published::noInterface;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(count.fetch_add(1) + 2); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(count.fetch_sub(1)); }

private:
    std::atomic<std::int64_t> count{0};
};

#pragma GCC diagnostic pop

}  // namespace korva::test
