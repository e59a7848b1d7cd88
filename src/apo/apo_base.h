// What the audio object's classes have in common: the whole of the audio engine's contract.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>

#include "apo/connection_checks.h"
#include "apo/core_thread.h"
#include "apo/realtime_face.h"
#include "framework/framework_scope.h"
#include "framework/server_lock.h"
#include "platform/mutex.h"
#include "platform/published/audio_objects.h"
#include "platform/reference_count.h"

namespace korva::apo {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// An audio object: thin methods before an `EffectCore`, which has all the state and a thread of its own. A
/// method crosses to that thread and waits for it; `APOProcess` alone runs where it is called. Without a core
/// (the system had no thread left) the object takes formats by its registration and can't be locked; of what
/// it is asked to process all the same it makes a copy.
///
/// One object may be part of another (aggregation): its faces then hand the outer object's `IUnknown` out,
/// and the inner one that its creator gets is this object's own.
///
/// Thread safety: methods may come from any threads at once but the core's, those of the real-time interface
/// from one audio thread. `APOProcess` doesn't run while a stream is locked or unlocked.
class ApoBase : public published::IAudioProcessingObject,
                public RealtimeFace,
                public published::IAudioProcessingObjectConfiguration,
                public published::IAudioSystemEffects3,
                public published::IAudioProcessingObjectNotifications {
public:
    ApoBase(const ApoBase&) = delete;
    ApoBase& operator=(const ApoBase&) = delete;

    // Of the face: the outer object's, if there is one.  [com]
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override;
    platform::ReferenceCount STDMETHODCALLTYPE Release() override;

    /// The object's own IUnknown, which counts its references. The last `Release` closes the core and waits
    /// until all threads of this object have ended.  [com]
    [[nodiscard]] IUnknown& inner() noexcept { return ownUnknown; }

    // IAudioProcessingObject.  [com, blocks]

    /// Waits until the core's thread has done what it was called for. Nothing is reset. S_OK.
    HRESULT STDMETHODCALLTYPE Reset() override;
    /// 0: nothing is buffered.
    HRESULT STDMETHODCALLTYPE GetLatency(published::HNSTIME* latency) override;
    HRESULT STDMETHODCALLTYPE GetRegistrationProperties(published::APO_REG_PROPERTIES** properties) override;
    /// See `EffectCore::initializeApo`. Without a core: E_POINTER for data of no size, E_INVALIDARG for a
    /// size without data, APOERR_ALREADY_INITIALIZED for a second time.
    HRESULT STDMETHODCALLTYPE Initialize(UINT32 dataSize, BYTE* data) override;
    /// See `engine::testFormat`; without a core, `testDefaultFormat`.
    HRESULT STDMETHODCALLTYPE IsInputFormatSupported(published::IAudioMediaType* opposite,
                                                     published::IAudioMediaType* requested,
                                                     published::IAudioMediaType** supported) override;
    HRESULT STDMETHODCALLTYPE IsOutputFormatSupported(published::IAudioMediaType* opposite,
                                                      published::IAudioMediaType* requested,
                                                      published::IAudioMediaType** supported) override;
    /// APOERR_NOT_INITIALIZED, since only `Initialize` without a core sets what this asks for. Hosts know it
    /// so, and go by the stream's format.
    HRESULT STDMETHODCALLTYPE GetInputChannelCount(UINT32* count) override;

    // IAudioProcessingObjectConfiguration.  [com, blocks]

    /// Checks the connections by the rules of `connection_checks.h`, in their order there, and the formats
    /// after the traits are read; the first rule that is broken gives the result. Then the core begins its
    /// stream. APOERR_APO_LOCKED if one is locked already, which stays so; E_FAIL without a core.
    HRESULT STDMETHODCALLTYPE LockForProcess(UINT32 inputCount, APO_CONNECTION_DESCRIPTOR** inputs,
                                             UINT32 outputCount,
                                             APO_CONNECTION_DESCRIPTOR** outputs) override;
    /// APOERR_ALREADY_UNLOCKED where there is no stream.
    HRESULT STDMETHODCALLTYPE UnlockForProcess() override;

    // IAudioSystemEffects3.  [com, blocks]

    /// See `EffectCore::getEffectsList`. E_FAIL without a core.
    HRESULT STDMETHODCALLTYPE GetEffectsList(LPGUID* effectIds, UINT* effectCount, HANDLE changed) override;
    /// None can be turned off and on. Null pointers are passed over. S_OK.
    HRESULT STDMETHODCALLTYPE GetControllableSystemEffectsList(published::AUDIO_SYSTEMEFFECT** effects,
                                                               UINT* effectCount, HANDLE changed) override;
    /// Changes nothing. S_OK.
    HRESULT STDMETHODCALLTYPE SetAudioSystemEffectState(GUID effectId,
                                                        published::AUDIO_SYSTEMEFFECT_STATE state) override;

    // IAudioProcessingObjectNotifications.  [com, blocks]

    /// See `EffectCore::getApoNotificationRegistrationInfo`. E_FAIL without a core.
    HRESULT STDMETHODCALLTYPE GetApoNotificationRegistrationInfo(
        published::APO_NOTIFICATION_DESCRIPTOR** descriptors, DWORD* count) override;
    void STDMETHODCALLTYPE HandleNotification(published::APO_NOTIFICATION* notification) override;

protected:
    /// Starts a core; what it gives may be empty.
    using CoreStarter = std::function<CoreThread()>;

    /// `properties` outlives the object. Raises what `startCore` does.
    ApoBase(const APO_REG_PROPERTIES& properties, IUnknown* outer, const CoreStarter& startCore);
    virtual ~ApoBase() = default;  // behind the methods in the table

    /// A class's own say in its connections, after all others. S_OK.
    virtual HRESULT CheckConnections(const Connections& connections);
    /// Makes a format right; see `correctFormat`.
    virtual HRESULT CorrectDefaultFormat(published::UNCOMPRESSEDAUDIOFORMAT& format, bool isOutput);

    /// The face of the class's own interface; none any more while the object goes.
    [[nodiscard]] virtual IUnknown* ownFace() noexcept { return nullptr; }

private:
    /// What holds the object, and what its creator has of an object that is a part of another one.
    class OwnUnknown final : public IUnknown {
    public:
        explicit OwnUnknown(ApoBase& object) noexcept : owner(object) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
        platform::ReferenceCount STDMETHODCALLTYPE AddRef() override;
        platform::ReferenceCount STDMETHODCALLTYPE Release() override;

    private:
        ApoBase& owner;
        std::atomic<std::uint32_t> count{0};
    };

    using FormatTest = HRESULT (ApoBase::*)(published::IAudioMediaType* opposite,
                                            published::IAudioMediaType* requested,
                                            published::IAudioMediaType** supported);

    [[nodiscard]] HRESULT queryFace(REFIID id, void** object);
    [[nodiscard]] void* faceOf(REFIID id) noexcept;

    [[nodiscard]] HRESULT fallbackInitialize(UINT32 dataSize, const BYTE* data) noexcept;
    [[nodiscard]] HRESULT testByRegistration(bool isOutput, published::IAudioMediaType* opposite,
                                             published::IAudioMediaType* requested,
                                             published::IAudioMediaType** supported);

    [[nodiscard]] std::unique_lock<platform::Mutex> coreTurn();
    [[nodiscard]] HRESULT baseLock(const Connections& connections, std::uint64_t& stream);
    [[nodiscard]] HRESULT checkAll(const Connections& connections);
    [[nodiscard]] HRESULT checkFormats(const Connections& connections);
    [[nodiscard]] bool isAccepted(FormatTest test, published::IAudioMediaType* opposite,
                                  published::IAudioMediaType* requested);
    [[nodiscard]] HRESULT takeLock(std::uint64_t& stream) noexcept;
    [[nodiscard]] HRESULT baseUnlock() noexcept;
    [[nodiscard]] bool isLocked() noexcept;
    [[nodiscard]] bool isCurrent(std::uint64_t stream) noexcept;

    // From the first to the last to go: the core's thread, the framework, the library.
    const framework::ServerLock serverLock;
    OwnUnknown ownUnknown{*this};
    IUnknown& identity;  ///< Counts the references: the own IUnknown, or the outer object's.
    framework::FrameworkScope framework{{.external = true}};

    const APO_REG_PROPERTIES& registrationProperties;
    std::atomic<bool> initialized{false};  ///< Without a core only.

    // Lock order: as they stand here.
    /// For the traits, while connections are checked. Recursive: a format that is asked about itself may come
    /// back.
    platform::RecursiveMutex processLock;
    /// Keeps the core's part of locks and unlocks in their order. Not taken on the core's own thread: who
    /// calls from there is called by the part that it would wait for.
    platform::Mutex streamLock;
    platform::Mutex stateLock;  ///< For the next two, and nothing besides is done under it.
    bool locked = false;
    std::uint64_t lastStream = 0;  ///< Number of the stream that was locked last.
    SharedTraits traits;

    const CoreThread core;
};

#pragma GCC diagnostic pop

}  // namespace korva::apo
