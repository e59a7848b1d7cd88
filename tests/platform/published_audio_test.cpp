// Devices, media types and notifications, as the audio engine has them.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/published/audio_interfaces.h"
#include "platform/published/audio_notifications.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/results.h"
#include "tests/platform/published_slots.h"

// Published interfaces have no destructor in their tables.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace korva::published {
namespace {

using test::expectSlots;
using test::Numbered;
using test::textOf;

TEST(PublishedAudio, HasItsPublishedIdentifiers) {
    EXPECT_EQ(textOf(iidOf<IAudioMediaType>), "4E997F73-B71F-4798-873B-ED7DFCF15B4D");
    EXPECT_EQ(textOf(iidOf<IMMEndpoint>), "1BE09788-6894-4089-8586-9A2A6C265AC5");
    EXPECT_EQ(textOf(iidOf<IMMDeviceCollection>), "0BD7A1BE-7A1A-44DB-8397-CC5392387B5E");
    EXPECT_EQ(textOf(iidOf<IMMDeviceEnumerator>), "A95664D2-9614-4F35-A746-DE8DB63617E6");
    EXPECT_EQ(textOf(iidOf<IAudioEndpointVolume>), "5CDF2C82-841E-4546-9722-0CF74078229A");
    EXPECT_EQ(textOf(iidOf<IAudioEndpointVolumeCallback>), "657804FA-D6AD-4496-8A60-352752AF4F89");
}

TEST(PublishedAudio, HasItsPublishedResults) {
    EXPECT_EQ(ok, 0);
    EXPECT_EQ(okButNo, 1);
    EXPECT_TRUE(succeeded(okButNo));
    EXPECT_EQ(static_cast<std::uint32_t>(formatNotSupported), 0x887D0003U);
    EXPECT_TRUE(failed(formatNotSupported));
}

class NumberedMediaType final : public Numbered<IAudioMediaType> {
public:
    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL*) override { return 3; }
    HRESULT STDMETHODCALLTYPE IsEqual(IAudioMediaType*, DWORD*) override { return 4; }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override {
        return reinterpret_cast<const WAVEFORMATEX*>(std::uintptr_t{5});
    }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT*) override { return 6; }
};

class NumberedEndpoint final : public Numbered<IMMEndpoint> {
public:
    HRESULT STDMETHODCALLTYPE GetDataFlow(EDataFlow*) override { return 3; }
};

class NumberedCollection final : public Numbered<IMMDeviceCollection> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(UINT*) override { return 3; }
    HRESULT STDMETHODCALLTYPE Item(UINT, IMMDevice**) override { return 4; }
};

class NumberedNotificationClient final : public Numbered<IMMNotificationClient> {
public:
    HRESULT STDMETHODCALLTYPE OnDeviceStateChanged(LPCWSTR, DWORD) override { return 3; }
    HRESULT STDMETHODCALLTYPE OnDeviceAdded(LPCWSTR) override { return 4; }
    HRESULT STDMETHODCALLTYPE OnDeviceRemoved(LPCWSTR) override { return 5; }
    HRESULT STDMETHODCALLTYPE OnDefaultDeviceChanged(EDataFlow, ERole, LPCWSTR) override { return 6; }
    HRESULT STDMETHODCALLTYPE OnPropertyValueChanged(LPCWSTR, const PROPERTYKEY) override { return 7; }
};

class NumberedEnumerator final : public Numbered<IMMDeviceEnumerator> {
    using Client = IMMNotificationClient;

public:
    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow, DWORD, IMMDeviceCollection**) override {
        return 3;
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow, ERole, IMMDevice**) override { return 4; }
    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR, IMMDevice**) override { return 5; }
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(Client*) override { return 6; }
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(Client*) override { return 7; }
};

class NumberedVolumeCallback final : public Numbered<IAudioEndpointVolumeCallback> {
public:
    HRESULT STDMETHODCALLTYPE OnNotify(AUDIO_VOLUME_NOTIFICATION_DATA*) override { return 3; }
};

class NumberedVolume final : public Numbered<IAudioEndpointVolume> {
    using Client = IAudioEndpointVolumeCallback;

public:
    HRESULT STDMETHODCALLTYPE RegisterControlChangeNotify(Client*) override { return 3; }
    HRESULT STDMETHODCALLTYPE UnregisterControlChangeNotify(Client*) override { return 4; }
    HRESULT STDMETHODCALLTYPE GetChannelCount(UINT*) override { return 5; }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevel(float, LPCGUID) override { return 6; }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevelScalar(float, LPCGUID) override { return 7; }
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevel(float*) override { return 8; }
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float*) override { return 9; }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevel(UINT, float, LPCGUID) override { return 10; }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevelScalar(UINT, float, LPCGUID) override { return 11; }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevel(UINT, float*) override { return 12; }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevelScalar(UINT, float*) override { return 13; }
    HRESULT STDMETHODCALLTYPE SetMute(BOOL, LPCGUID) override { return 14; }
    HRESULT STDMETHODCALLTYPE GetMute(BOOL*) override { return 15; }
    HRESULT STDMETHODCALLTYPE GetVolumeStepInfo(UINT*, UINT*) override { return 16; }
    HRESULT STDMETHODCALLTYPE VolumeStepUp(LPCGUID) override { return 17; }
    HRESULT STDMETHODCALLTYPE VolumeStepDown(LPCGUID) override { return 18; }
    HRESULT STDMETHODCALLTYPE QueryHardwareSupport(DWORD*) override { return 19; }
    HRESULT STDMETHODCALLTYPE GetVolumeRange(float*, float*, float*) override { return 20; }
};

TEST(PublishedAudio, HasItsMethodsInThePublishedOrder) {
    expectSlots<NumberedMediaType>(7);
    expectSlots<NumberedEndpoint>(4);
    expectSlots<NumberedCollection>(5);
    expectSlots<NumberedNotificationClient>(8);
    expectSlots<NumberedEnumerator>(8);
    expectSlots<NumberedVolumeCallback>(4);
    expectSlots<NumberedVolume>(21);
}

/// The bytes of a record whose every byte tells its place.
template <class Record>
Record countedRecord() {
    std::array<std::uint8_t, sizeof(Record)> bytes{};
    for (std::size_t offset = 0; offset < bytes.size(); ++offset) {
        bytes[offset] = static_cast<std::uint8_t>(offset);
    }
    Record record;
    std::memcpy(&record, bytes.data(), sizeof(record));
    return record;
}

/// The same bytes, from a place on, as a number.
template <class Number>
Number numberFrom(std::size_t offset) {
    std::array<std::uint8_t, sizeof(Number)> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(offset + i);
    }
    Number number;
    std::memcpy(&number, bytes.data(), sizeof(number));
    return number;
}

template <class T>
std::uintptr_t addressOf(T* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

TEST(PublishedAudio, LaysAWaveFormatOutWithoutGaps) {
    static_assert(sizeof(WAVEFORMATEX) == 18);
    const auto wave = countedRecord<WAVEFORMATEX>();
    EXPECT_EQ(WORD{wave.wFormatTag}, numberFrom<WORD>(0));
    EXPECT_EQ(WORD{wave.nChannels}, numberFrom<WORD>(2));
    EXPECT_EQ(DWORD{wave.nSamplesPerSec}, numberFrom<DWORD>(4));
    EXPECT_EQ(DWORD{wave.nAvgBytesPerSec}, numberFrom<DWORD>(8));
    EXPECT_EQ(WORD{wave.nBlockAlign}, numberFrom<WORD>(12));
    EXPECT_EQ(WORD{wave.wBitsPerSample}, numberFrom<WORD>(14));
    EXPECT_EQ(WORD{wave.cbSize}, numberFrom<WORD>(16));
}

TEST(PublishedAudio, LaysAnExtensibleFormatOutWithoutGaps) {
    static_assert(sizeof(WAVEFORMATEXTENSIBLE) == 40);
    const auto wave = countedRecord<WAVEFORMATEXTENSIBLE>();
    EXPECT_EQ(WORD{wave.Format.cbSize}, numberFrom<WORD>(16));
    EXPECT_EQ(WORD{wave.Samples.wValidBitsPerSample}, numberFrom<WORD>(18));
    EXPECT_EQ(DWORD{wave.dwChannelMask}, numberFrom<DWORD>(20));
    const GUID subformat = wave.SubFormat;
    EXPECT_TRUE(subformat == numberFrom<GUID>(24));
}

TEST(PublishedAudio, NumbersWaveFormats) {
    EXPECT_EQ(WAVE_FORMAT_PCM, 1);
    EXPECT_EQ(WAVE_FORMAT_IEEE_FLOAT, 3);
    EXPECT_EQ(WAVE_FORMAT_EXTENSIBLE, 0xFFFE);
}

TEST(PublishedAudio, LaysANotificationOutAsTheAudioEngineDoes) {
    static_assert(sizeof(APO_NOTIFICATION) == 72);
    const auto told = countedRecord<APO_NOTIFICATION>();
    EXPECT_EQ(static_cast<std::uint32_t>(told.type), numberFrom<std::uint32_t>(0));

    const auto& volume = told.audioEndpointVolumeChange;
    EXPECT_EQ(addressOf(volume.endpoint), numberFrom<std::uintptr_t>(8));
    EXPECT_EQ(addressOf(volume.volume), numberFrom<std::uintptr_t>(16));

    const auto& property = told.audioEndpointPropertyChange;
    EXPECT_EQ(addressOf(property.endpoint), numberFrom<std::uintptr_t>(8));
    EXPECT_EQ(addressOf(property.propertyStore), numberFrom<std::uintptr_t>(16));
    EXPECT_TRUE(property.propertyKey.fmtid == numberFrom<GUID>(24));
    EXPECT_EQ(property.propertyKey.pid, numberFrom<DWORD>(40));

    const auto& effects = told.audioSystemEffectsPropertyChange;
    EXPECT_EQ(addressOf(effects.endpoint), numberFrom<std::uintptr_t>(8));
    EXPECT_TRUE(effects.propertyStoreContext == numberFrom<GUID>(16));
    EXPECT_EQ(static_cast<std::uint32_t>(effects.propertyStoreType), numberFrom<std::uint32_t>(32));
    EXPECT_EQ(addressOf(effects.propertyStore), numberFrom<std::uintptr_t>(40));
    EXPECT_TRUE(effects.propertyKey.fmtid == numberFrom<GUID>(48));
    EXPECT_EQ(effects.propertyKey.pid, numberFrom<DWORD>(64));
}

TEST(PublishedAudio, NumbersWhatNotificationsTellOf) {
    EXPECT_EQ(std::uint32_t{APO_NOTIFICATION_TYPE_NONE}, 0U);
    EXPECT_EQ(std::uint32_t{APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME}, 1U);
    EXPECT_EQ(std::uint32_t{APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE}, 2U);
    EXPECT_EQ(std::uint32_t{APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE}, 3U);
}

TEST(PublishedAudio, LaysAVolumeOutAsTheAudioEngineDoes) {
    static_assert(sizeof(AUDIO_VOLUME_NOTIFICATION_DATA) == 32);
    const auto volume = countedRecord<AUDIO_VOLUME_NOTIFICATION_DATA>();
    EXPECT_TRUE(volume.guidEventContext == numberFrom<GUID>(0));
    EXPECT_EQ(volume.bMuted, numberFrom<BOOL>(16));
    EXPECT_EQ(volume.fMasterVolume, numberFrom<float>(20));
    EXPECT_EQ(volume.nChannels, numberFrom<UINT>(24));
    EXPECT_EQ(volume.afChannelVolumes[0], numberFrom<float>(28));
}

TEST(PublishedAudio, NumbersDirectionsAndRolesOfDevices) {
    EXPECT_EQ(int{eRender}, 0);
    EXPECT_EQ(int{eCapture}, 1);
    EXPECT_EQ(int{eAll}, 2);
    EXPECT_EQ(int{eConsole}, 0);
    EXPECT_EQ(int{eMultimedia}, 1);
    EXPECT_EQ(int{eCommunications}, 2);
}

}  // namespace
}  // namespace korva::published
