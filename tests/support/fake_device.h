// An audio device that does what a test says.
#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "framework/object_class.h"
#include "framework/published_object.h"
#include "platform/published/device_interfaces.h"
#include "platform/unicode.h"

namespace korva::test {

/// Tells an identifier, and notes what it is asked to activate. Any thread may use it, one at a time.
class FakeDevice final : public framework::PublishedObject<FakeDevice, framework::ObjectBase, IMMDevice> {
public:
    /// One call of `Activate`.
    struct Activation {
        GUID interfaceId;
        DWORD classContext;
        VARTYPE parameterType;
        GUID parameter;
    };

    /// Without an identifier, `GetId` fails.
    explicit FakeDevice(std::optional<std::string> deviceId) : identifier(std::move(deviceId)) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD classContext, PROPVARIANT* parameters,
                                       void** object) override {
        ++activations;
        lastActivation = {id, classContext, parameters->vt, *parameters->puuid};
        // The caller has to go by the result alone.
        *object = activated;
        if (published::succeeded(activationResult) && activated != nullptr) {
            activated->AddRef();
        }
        return activationResult;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override {
        *id = nullptr;
        if (!identifier) {
            return published::unspecifiedFailure;
        }
        const platform::WideString text = platform::toWide(*identifier);
        const std::size_t bytes = (text.size() + 1) * sizeof(WCHAR);
        *id = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
        std::memcpy(*id, text.c_str(), bytes);
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override {
        *state = 1;
        return published::ok;
    }

    /// What `Activate` gives, whatever it is asked for.
    published::IAudioSystemEffectsPropertyStore* activated = nullptr;
    HRESULT activationResult = published::noInterface;

    int activations = 0;
    Activation lastActivation{};

private:
    std::optional<std::string> identifier;
};

}  // namespace korva::test
