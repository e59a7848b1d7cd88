// The object for an endpoint of the system's own sound service, which scripts/wine_with_sound provides.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/audio_devices.h"
#include "platform/com_apartment.h"
#include "platform/published/device_interfaces.h"
#include "platform/registry.h"
#include "platform/system_version.h"
#include "platform/unicode.h"
#include "tests/support/call_text.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/run_program.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/hosted_library.h"
#include "tests/system/support/hosted_object.h"
#include "tests/system/support/init_records.h"
#include "tests/system/windows/noted_devices.h"

namespace korva::test {
namespace {

constexpr const char* effect = "{5ab10000-0000-0000-0000-000000000001}";
constexpr const char* thirdEngine = "{C9F475BC-13E4-6150-AE88-790995AFC7C1}";
constexpr const char* modeSelection = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4";

/// The system's active outputs, as an audio engine has them.
struct RealOutputs {
    RealOutputs() {
        ComPointer<IMMDeviceEnumerator> enumerator;
        EXPECT_EQ(platform::createDeviceEnumerator(enumerator.receive()), result::ok);
        EXPECT_EQ(enumerator->EnumAudioEndpoints(eRender, published::deviceStateActive, all.receive()),
                  result::ok);
        UINT count = 0;
        EXPECT_EQ(all->GetCount(&count), result::ok);
        EXPECT_GE(count, 2u) << "is this run by scripts/wine_with_sound?";
        EXPECT_EQ(all->Item(count - 1, last.receive()), result::ok);
    }

    [[nodiscard]] std::string lastId() const {
        LPWSTR text = nullptr;
        EXPECT_EQ(last->GetId(&text), result::ok);
        const std::string id = platform::toUtf8(text);
        CoTaskMemFree(text);
        return id;
    }

    ComPointer<IMMDeviceCollection> all;
    ComPointer<IMMDevice> last;
};

/// The settings of an endpoint, written by the system's own program; removed at the end.
class Settings {
public:
    explicit Settings(const std::string& endpointId) : path("Software\\Veltrane\\APO\\" + endpointId) {
        set(std::string(effect) + ",0", "REG_DWORD", "1");
        set(std::string(effect) + ",1", "REG_DWORD", "0");
        set(std::string(effect) + ",2", "REG_SZ", thirdEngine);
        set(modeSelection, "REG_SZ", effect);
    }
    ~Settings() {
        EXPECT_EQ(platform::RegistryKey::root(platform::RegistryRoot::localMachine).deleteTree(path), 0);
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    void set(const std::string& name, const char* type, const char* data) const {
        EXPECT_EQ(
            runProgram("C:\\windows\\system32\\reg.exe", {"add", "HKLM\\" + path + "\\FxProperties\\User",
                                                          "/v", name, "/t", type, "/d", data, "/f"}),
            0);
    }

private:
    const std::string path;
};

/// A mode effect for the last output, with a module that records. The order of members is that of a host's
/// needs.
struct PlayedEndpoint {
    PlayedEndpoint() : settings(outputs.lastId()) {
        library.putRecorders();
        auto made = std::make_unique<HostedObject>(library, modeClass);
        ComPointer<IPropertyStore> properties;
        EXPECT_EQ(outputs.last->OpenPropertyStore(published::accessRead, properties.receive()), result::ok);
        auto record = secondRecord(properties.get(), properties.get(), outputs.all.get());
        EXPECT_EQ(initialize(*made->apo, record), result::ok);
        object = std::move(made);
    }

    [[nodiscard]] std::size_t count(std::string_view function) const {
        return callsOf(function, recording.calls()).size();
    }
    [[nodiscard]] bool wasTold(const std::string& call) const {
        const std::vector<std::string> calls = textsOf(callsOf("SetParameter", recording.calls()));
        return std::ranges::find(calls, call) != calls.end();
    }

    const platform::ComApartment apartment;
    const RealOutputs outputs;
    const NotedDevices noted;
    const Settings settings;
    const Recording recording;
    const HostedLibrary library;
    std::unique_ptr<HostedObject> object;
};

/// Plays on a thread of its own, as an audio engine does.
class Sound {
public:
    explicit Sound(HostedObject& object)
        : thread([this, &object] {
              const std::vector<float> samples(960, 0.25f);
              while (!ends) {
                  static_cast<void>(object.play(samples, 2, 2));
                  ++buffers;
              }
          }) {}
    ~Sound() {
        ends = true;
        thread.join();
    }
    Sound(const Sound&) = delete;
    Sound& operator=(const Sound&) = delete;

    std::atomic<int> buffers{0};

private:
    std::atomic<bool> ends{false};
    std::thread thread;
};

TEST(RealEndpoint, ItsSettingsChooseTheModule) {
    const PlayedEndpoint played;
    const std::vector<RecordedCall> created = callsOf("Create", played.recording.calls());
    ASSERT_EQ(created.size(), 1u);
    EXPECT_EQ(created.front().module, "PELLUX64");
}

TEST(RealEndpoint, APresetThatAnotherProgramWritesReachesTheModuleWhileSoundRuns) {
    PlayedEndpoint played;
    ASSERT_EQ(played.object->lock(floats(2)), result::ok);
    {
        const Sound sound(*played.object);
        ASSERT_TRUE(waitUntil([&] { return sound.buffers > 10; }));
        EXPECT_FALSE(played.wasTold("SetParameter #1 -1:-39 01"));
        // No position is overridden; the first parameter's byte, and no more.
        played.settings.set(std::string(effect) + ",3000", "REG_BINARY", "0000000001");
        EXPECT_TRUE(waitUntil([&] { return played.wasTold("SetParameter #1 -1:-39 01"); }));
    }
    EXPECT_EQ(played.object->unlock(), result::ok);
    EXPECT_EQ(played.count("Create"), 1u);
}

TEST(RealEndpoint, IsAskedForTheSystemsOwnSetsFromWindows11OnAndElseForNone) {
    const PlayedEndpoint played;
    const std::uint32_t build = platform::systemVersion().build;
    if (const char* const said = std::getenv("KORVA_WINDOWS_BUILD")) {
        ASSERT_EQ(std::to_string(build), said);
    }
    EXPECT_EQ(played.noted.setsAskedFor(), build >= 22000 ? 1 : 0);
    EXPECT_EQ(played.noted.otherActivations(), 1) << "the volume's";
    // The system has none, and ours serve.
    EXPECT_EQ(played.count("Create"), 1u);
}

}  // namespace
}  // namespace korva::test
