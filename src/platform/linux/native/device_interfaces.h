// Audio devices for Linux.
#pragma once

#include "native/property_interfaces.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IMMDevice : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD classContext, PROPVARIANT* parameters,
                                               void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD accessMode, IPropertyStore** store) = 0;
    /// The text is the caller's, to be freed with `CoTaskMemFree`.
    virtual HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetState(DWORD* state) = 0;
};

#pragma GCC diagnostic pop
