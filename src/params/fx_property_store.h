// A property store over one key of the registry, for systems that have none of their own.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "framework/active_object.h"
#include "framework/published_object.h"
#include "framework/wiring.h"
#include "params/channel_messages.h"
#include "params/store_channel.h"
#include "params/value_bytes.h"
#include "platform/mutex.h"
#include "platform/published/property_interfaces.h"
#include "platform/registry.h"

namespace korva::params {

/// One set of an endpoint's properties. Some other program fills the key; this store reads it, and leaves it
/// alone unless its mode says otherwise: a value that is set goes to the peer of its channel, if there is
/// one, and to whoever listens.
///
/// The methods of IPropertyStore run on the caller's thread, except that signals are given on the owner's:
/// `SetValue` waits for that. They give 0x80070006 without a key and once the store is closed, then
/// 0x80004003 for a null pointer, and what the registry refuses by `hresultOf`.  [any, blocks]
class FxPropertyStore final
    : public framework::PublishedObject<FxPropertyStore, framework::ActiveObject, IPropertyStore>,
      public framework::Wiring<FxPropertyStore> {
public:
    /// What a store may do, as bits of its mode.
    struct Mode {
        static constexpr std::uint32_t reads = 4;
        static constexpr std::uint32_t persists = 8;  ///< What is set and deleted reaches the registry.
    };

    /// The store of an endpoint's set, which belongs to the calling thread. Null if there is no such key, if
    /// it is a link, or if a name holds a slash of either kind.  [any, blocks]
    [[nodiscard]] static framework::Ref<FxPropertyStore> Open(std::string_view endpointId,
                                                              std::string_view setName);

    /// A store over `key`, which is at `keyPath` and may be none.
    FxPropertyStore(platform::RegistryKey key, std::string keyPath, std::string endpointId,
                    std::string setName, std::uint32_t mode = Mode::reads);

    static void describeMembers(framework::ClassInfo& info);

    /// Adds the number of values to what `*count` holds.
    HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) override;
    /// The key that the name of the value at `index` stands for; 0x80070057 if for none, 0x80070103 past the
    /// last one. `*key` is as it was unless the result is 0.
    HRESULT STDMETHODCALLTYPE GetAt(DWORD index, PROPERTYKEY* key) override;
    /// Frees what `*value` held and puts a copy of the value there, which is the caller's (see `variantOf`).
    /// A missing value is 0x80070002.
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override;
    /// Tells of a value, or by VT_EMPTY of its end. 0x80004001 for a kind that is not kept.
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT value) override;
    /// Brings the key to the disk.
    HRESULT STDMETHODCALLTYPE Commit() override;

    /// Sends a value to the peer, and with `persist` stores it. Gives 0, or a result of the registry, 6
    /// without a key; 0x80004005, with nothing sent, for a kind that the registry doesn't keep.
    /// [any, blocks]
    platform::RegistryResult WriteValue(std::string_view valueName, const ValueBytes& value, bool persist);

    /// The peer that is told of changes, none at first. Another one is told of all values as it comes.
    framework::Observable<framework::Ref<StoreChannel>> attachedChannel{*this};
    /// Signals: the name of a value that was set or deleted, and then none.
    framework::Observable<std::string> valueWritten{*this};
    framework::Observable<std::string> valueDeleted{*this};

    const std::string keyPath;
    const platform::RegistryKey key;
    const std::uint32_t mode;
    const std::string endpointId;
    const std::string setName;

private:
    void onClose() override;

    [[nodiscard]] bool isOpen() const noexcept;
    [[nodiscard]] bool persists() const noexcept { return (mode & Mode::persists) != 0; }
    [[nodiscard]] StoreName storeName() const noexcept { return {endpointId, setName}; }

    HRESULT put(const std::string& valueName, const ValueBytes& value);
    HRESULT remove(const std::string& valueName);

    [[nodiscard]] framework::Ref<StoreChannel> currentChannel();
    void keepChannel(const framework::Ref<StoreChannel>& incoming);
    void SyncToChannel();
    void sendStoredValue(std::string_view valueName);

    // `attachedChannel`'s value, for all threads. Written by the owner's.
    platform::Mutex channelMutex;
    framework::Ref<StoreChannel> channel;
};

}  // namespace korva::params
