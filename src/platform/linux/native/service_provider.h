// IServiceProvider for Linux.
#pragma once

#include "native/unknown.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IServiceProvider : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id, void** object) = 0;
};

#pragma GCC diagnostic pop
