// The audio engine's published records that the real-time path and the stream lock read. No header of
// mingw-w64 has all of them, so they are declared here, once for both systems.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/published/base_types.h"

namespace korva::published {

struct IAudioMediaType;

/// How much of a connection's buffer counts. The engine may write any word here, so the type is fixed.
enum APO_BUFFER_FLAGS : std::uint32_t {
    BUFFER_INVALID = 0,  ///< Nothing in the buffer may be used.
    BUFFER_VALID = 1,    ///< The frames are sound.
    BUFFER_SILENT = 2    ///< The frames count as zeros, whatever the buffer holds.
};

/// One connection of one processing call.
struct APO_CONNECTION_PROPERTY {
    UINT_PTR pBuffer;           ///< Interleaved 32-bit floats; may be null.
    UINT32 u32ValidFrameCount;  ///< Frames in the buffer.
    APO_BUFFER_FLAGS u32BufferFlags;
    UINT32 u32Signature;  ///< 0x41435053, "ACPS".
};
static_assert(sizeof(APO_CONNECTION_PROPERTY) == 24);
static_assert(offsetof(APO_CONNECTION_PROPERTY, pBuffer) == 0);
static_assert(offsetof(APO_CONNECTION_PROPERTY, u32ValidFrameCount) == 8);
static_assert(offsetof(APO_CONNECTION_PROPERTY, u32BufferFlags) == 12);
static_assert(offsetof(APO_CONNECTION_PROPERTY, u32Signature) == 16);

/// Who allocates a connection's buffer.
enum APO_CONNECTION_BUFFER_TYPE : std::uint32_t {
    APO_CONNECTION_BUFFER_TYPE_ALLOCATED = 0,
    APO_CONNECTION_BUFFER_TYPE_EXTERNAL = 1,
    APO_CONNECTION_BUFFER_TYPE_DEPENDANT = 2
};

/// One connection as the stream lock announces it.
struct APO_CONNECTION_DESCRIPTOR {
    APO_CONNECTION_BUFFER_TYPE Type;
    UINT_PTR pBuffer;
    UINT32 u32MaxFrameCount;
    IAudioMediaType* pFormat;
    UINT32 u32Signature;  ///< 0x41434453, "ACDS".
};
static_assert(sizeof(APO_CONNECTION_DESCRIPTOR) == 40);
static_assert(offsetof(APO_CONNECTION_DESCRIPTOR, Type) == 0);
static_assert(offsetof(APO_CONNECTION_DESCRIPTOR, pBuffer) == 8);
static_assert(offsetof(APO_CONNECTION_DESCRIPTOR, u32MaxFrameCount) == 16);
static_assert(offsetof(APO_CONNECTION_DESCRIPTOR, pFormat) == 24);
static_assert(offsetof(APO_CONNECTION_DESCRIPTOR, u32Signature) == 32);

inline constexpr UINT32 connectionPropertySignature = 0x41435053;
inline constexpr UINT32 connectionDescriptorSignature = 0x41434453;

/// A stream format as a media type tells it.
struct UNCOMPRESSEDAUDIOFORMAT {
    GUID guidFormatType;              ///< Sample encoding.
    DWORD dwSamplesPerFrame;          ///< Channels.
    DWORD dwBytesPerSampleContainer;  ///< 4 for float.
    DWORD dwValidBitsPerSample;       ///< 32 for float.
    float fFramesPerSecond;           ///< Hz.
    DWORD dwChannelMask;              ///< Speaker bits; 0 when unknown.
};
static_assert(sizeof(UNCOMPRESSEDAUDIOFORMAT) == 36);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, guidFormatType) == 0);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, dwSamplesPerFrame) == 16);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, dwBytesPerSampleContainer) == 20);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, dwValidBitsPerSample) == 24);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, fFramesPerSecond) == 28);
static_assert(offsetof(UNCOMPRESSEDAUDIOFORMAT, dwChannelMask) == 32);

/// {00000003-0000-0010-8000-00AA00389B71}: the one encoding that is processed.
inline constexpr GUID ieeeFloatFormat = {
    0x00000003, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
/// {00000001-0000-0010-8000-00AA00389B71}
inline constexpr GUID pcmFormat = {
    0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

}  // namespace korva::published
