// A stream's format as an object, which hosts and the audio object hand to each other.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/server_lock.h"
#include "platform/published/audio_interfaces.h"
#include "platform/reference_count.h"

namespace korva::engine {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// A copy of a wave format behind the published interface. It never changes.  [any]
class AudioMediaType : public published::IAudioMediaType {
public:
    /// What two formats have in common, as bits of the answer of `IsEqual`. Windows' own names for these
    /// stand for 4 and 2 in the first two places. That looks like a slip and is kept on purpose: callers know
    /// these numbers, and equal formats give all three either way.
    struct EqualPart {
        static constexpr DWORD data = 2;      ///< The numbers: channels, rates and widths.
        static constexpr DWORD type = 4;      ///< The encoding of the samples.
        static constexpr DWORD userData = 8;  ///< What follows the first 18 bytes, if anything.
        static constexpr DWORD all = data | type | userData;
    };

    /// A type of the format at `waveFormat`, of which `size` bytes may be read. Another rate than 0 takes the
    /// place of the format's own, which is whole. `*created` has the first reference, and is null unless the
    /// result is S_OK. E_INVALIDARG for a null pointer, for a format that is longer than `size` or, unless
    /// `skipCheck`, doesn't agree with itself (`isConsistent`), and for a rate that can't be one;
    /// E_OUTOFMEMORY.
    [[nodiscard]] static HRESULT Create(const WAVEFORMATEX* waveFormat, UINT32 size, float framesPerSecond,
                                        bool skipCheck, published::IAudioMediaType** created) noexcept;

    /// A type of a stream's format, told back as it is here. E_INVALIDARG where a wave format can't say it
    /// (`waveFormatOf`).
    [[nodiscard]] static HRESULT Create(const published::UNCOMPRESSEDAUDIOFORMAT& format,
                                        published::IAudioMediaType** created) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override;
    platform::ReferenceCount STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override;
    /// S_OK if `*flags` is `EqualPart::all`, else S_FALSE. E_POINTER for a null pointer, E_INVALIDARG for a
    /// type without a format; `*flags` is 0 then.
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType* other, DWORD* flags) override;
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override;
    /// Tells of a compressed format, too, what its wave format says.
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* format) override;

private:
    AudioMediaType(const WAVEFORMATEX& waveFormat, float framesPerSecond);
    virtual ~AudioMediaType() = default;  // behind the methods in the table

    [[nodiscard]] const WAVEFORMATEX& wave() const noexcept;
    [[nodiscard]] published::UNCOMPRESSEDAUDIOFORMAT uncompressed() const noexcept;

    const framework::ServerLock serverLock;  ///< A host may keep a type longer than the object that made it.
    std::atomic<std::uint32_t> referenceCount{0};
    const std::uint32_t isCompressed;     ///< 0 or 1.
    const std::vector<std::byte> format;  ///< A `WAVEFORMATEX` and what follows it.
    const float overrideFramesPerSecond;  ///< 0 for none.
};

#pragma GCC diagnostic pop

}  // namespace korva::engine
