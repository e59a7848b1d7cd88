// The published interfaces of property stores.
#pragma once

#include <cstdint>

#include "native/property_interfaces.h"
#include "platform/published/property_types.h"
#include "platform/published/unknown.h"

namespace korva::published {

/// {886D8EEB-8CF2-4446-8D02-CDBA1DBDCF99}
template <>
inline constexpr GUID iidOf<IPropertyStore> = {
    0x886D8EEB, 0x8CF2, 0x4446, {0x8D, 0x02, 0xCD, 0xBA, 0x1D, 0xBD, 0xCF, 0x99}};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Which of an endpoint's three sets of effect properties.
enum AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE : std::uint32_t {
    AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_DEFAULT = 0,
    AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER = 1,
    AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_VOLATILE = 2
};

/// Who wants to hear of changes of a set. In no header of mingw-w64, like the next.
struct IAudioSystemEffectsPropertyChangeNotificationClient : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE OnPropertyChanged(AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE type,
                                                        PROPERTYKEY key) = 0;
};

/// {20049D40-56D5-400E-A2EF-385599FEED49}
template <>
inline constexpr GUID iidOf<IAudioSystemEffectsPropertyChangeNotificationClient> = {
    0x20049D40, 0x56D5, 0x400E, {0xA2, 0xEF, 0x38, 0x55, 0x99, 0xFE, 0xED, 0x49}};

/// The three sets of effect properties of an endpoint.
struct IAudioSystemEffectsPropertyStore : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD accessMode, IPropertyStore** store) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD accessMode, IPropertyStore** store) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenVolatilePropertyStore(DWORD accessMode, IPropertyStore** store) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResetUserPropertyStore() = 0;
    virtual HRESULT STDMETHODCALLTYPE ResetVolatilePropertyStore() = 0;
    virtual HRESULT STDMETHODCALLTYPE
    RegisterPropertyChangeNotification(IAudioSystemEffectsPropertyChangeNotificationClient* client) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    UnregisterPropertyChangeNotification(IAudioSystemEffectsPropertyChangeNotificationClient* client) = 0;
};

/// {302AE7F9-D7E0-43E4-971B-1F8293613D2A}
template <>
inline constexpr GUID iidOf<IAudioSystemEffectsPropertyStore> = {
    0x302AE7F9, 0xD7E0, 0x43E4, {0x97, 0x1B, 0x1F, 0x82, 0x93, 0x61, 0x3D, 0x2A}};

#pragma GCC diagnostic pop

}  // namespace korva::published
