// What the audio engine offers to the audio objects in it. In no header of mingw-w64, but for the first.
#pragma once

#include <cstdint>

#include "native/service_provider.h"
#include "platform/published/unknown.h"

namespace korva::published {

/// {6D5140C1-7436-11CE-8034-00AA006009FA}
template <>
inline constexpr GUID iidOf<IServiceProvider> = {
    0x6D5140C1, 0x7436, 0x11CE, {0x80, 0x34, 0x00, 0xAA, 0x00, 0x60, 0x09, 0xFA}};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

enum APO_LOG_LEVEL : std::uint32_t {
    APO_LOG_LEVEL_ALWAYS = 0,
    APO_LOG_LEVEL_CRITICAL = 1,
    APO_LOG_LEVEL_ERROR = 2,
    APO_LOG_LEVEL_WARNING = 3,
    APO_LOG_LEVEL_INFO = 4,
    APO_LOG_LEVEL_VERBOSE = 5
};

/// Takes lines for the system's trace.
struct IAudioProcessingObjectLoggingService : public IUnknown {
    virtual void STDMETHODCALLTYPE ApoLog(APO_LOG_LEVEL level, LPCWSTR format, ...) = 0;
};

/// {698F0107-1745-4708-95A5-D84478A62A65}
template <>
inline constexpr GUID iidOf<IAudioProcessingObjectLoggingService> = {
    0x698F0107, 0x1745, 0x4708, {0x95, 0xA5, 0xD8, 0x44, 0x78, 0xA6, 0x2A, 0x65}};

/// Names the work queue on whose threads an audio object may process.
struct IAudioProcessingObjectRTQueueService : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetRealTimeWorkQueue(DWORD* workQueueId) = 0;
};

/// {ACD65E2F-955B-4B57-B9BF-AC297BB752C9}
template <>
inline constexpr GUID iidOf<IAudioProcessingObjectRTQueueService> = {
    0xACD65E2F, 0x955B, 0x4B57, {0xB9, 0xBF, 0xAC, 0x29, 0x7B, 0xB7, 0x52, 0xC9}};

#pragma GCC diagnostic pop

/// {8B8008AF-09F9-456E-A173-BDB58499BCE7}: SID_AudioProcessingObjectLoggingService
inline constexpr GUID loggingServiceId = {
    0x8B8008AF, 0x09F9, 0x456E, {0xA1, 0x73, 0xBD, 0xB5, 0x84, 0x99, 0xBC, 0xE7}};

/// {458C1A1F-6899-4C12-99AC-E2E6AC253104}: SID_AudioProcessingObjectRTQueue
inline constexpr GUID workQueueServiceId = {
    0x458C1A1F, 0x6899, 0x4C12, {0x99, 0xAC, 0xE2, 0xE6, 0xAC, 0x25, 0x31, 0x04}};

}  // namespace korva::published
