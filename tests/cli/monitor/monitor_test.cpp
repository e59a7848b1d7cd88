#include "tests/cli/monitor/monitor_test.h"

#include <signal.h>

#include <chrono>
#include <cstring>
#include <utility>

namespace korva::test {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
namespace types = platform::registry_type;

RegistryKey machine() {
    return RegistryKey::root(RegistryRoot::localMachine);
}

std::string pathOf(const std::string& name) {
    return std::string(instancesKey) + "\\" + name;
}

constexpr std::array<const char*, 5> requestNames = {"CaptureDSPCycleCount", "CaptureDSPFrameCount",
                                                     "CaptureParamBytesSentByDSP",
                                                     "CaptureParamBytesReceivedByDSP", "CaptureLevelMeters"};
constexpr std::array<const char*, 4> answerNames = {"DSPCycleCount", "DSPFrameCount", "ParamBytesSentByDSP",
                                                    "ParamBytesReceivedByDSP"};

}  // namespace

std::string instanceName(int digit) {
    return "{6dcc1ac8-4a3c-4a98-a3a7-00000000000" + std::to_string(digit) + "}";
}

void setBytes(const RegistryKey& key, std::string_view name, std::uint32_t type,
              std::span<const std::byte> bytes) {
    ASSERT_EQ(key.setValue(name, type, bytes), 0);
}

void setNumber(const RegistryKey& key, std::string_view name, std::uint32_t number) {
    setBytes(key, name, types::dword, std::as_bytes(std::span(&number, 1)));
}

void setNarrow(const RegistryKey& key, std::string_view name, const std::string& text) {
    setBytes(key, name, types::string, std::as_bytes(std::span(text.c_str(), text.size() + 1)));
}

void setLevels(const RegistryKey& key, std::string_view name, const std::array<float, 8>& levels) {
    setBytes(key, name, types::binary, std::as_bytes(std::span(levels)));
}

std::uint32_t numberOf(const RegistryKey& key, std::string_view name) {
    platform::RegistryValue stored;
    std::uint32_t number = 0;
    if (key.readValue(name, stored) == 0 && stored.data.size() == sizeof(number)) {
        std::memcpy(&number, stored.data.data(), sizeof(number));
    }
    return number;
}

AnsweringObject::AnsweringObject(RegistryKey instance)
    : key(std::move(instance)), thread([this] {
          while (!isEnded.load()) {
              answerAll();
              std::this_thread::sleep_for(
                  std::chrono::milliseconds(1));  // no more often than an object looks
          }
      }) {}

AnsweringObject::~AnsweringObject() {
    isEnded.store(true);
    thread.join();
}

void AnsweringObject::answerAll() {
    for (std::size_t i = 0; i < requestNames.size(); ++i) {
        const std::uint32_t asked = numberOf(key, requestNames[i]);
        if (asked == std::exchange(seen[i], asked)) {
            continue;
        }
        if (i < answerNames.size()) {
            setNumber(key, answerNames[i], numberOf(key, answerNames[i]) + 7);
        } else {
            const int pull = pulls.fetch_add(1) + 1;
            setLevels(key, "InputLevelMeters", {0.5F, asked == 0 ? 0.0F : static_cast<float>(pull) * 0.001F});
        }
    }
}

void MonitorTest::makeTelemetry() const {
    RegistryKey key;
    ASSERT_EQ(machine().create(telemetryKey, RegistryAccess::readWrite, key), 0);
}

RegistryKey MonitorTest::makeKey(const std::string& name) const {
    RegistryKey key;
    EXPECT_EQ(machine().create(pathOf(name), RegistryAccess::readWrite, key), 0);
    return key;
}

RegistryKey MonitorTest::makeLive(const std::string& name) {
    mutexes.emplace_back(name, platform::NamedMutex::create("Global\\" + name));
    EXPECT_TRUE(mutexes.back().second);
    return makeKey(name);
}

void MonitorTest::setTypicalValues(const RegistryKey& key) {
    setNarrow(key, "APOTypeStr", "MFX");
    setNarrow(key, "EndpointIdStrW", "{0.0.0.00000000}.{e892327f-d50d-4004-bb6a-491ea775236e}");
    const std::uint64_t version = 0x0002000100020011;
    setBytes(key, "ModuleVersion", types::qword, std::as_bytes(std::span(&version, 1)));
    for (const char* const side : {"Input", "Output", "DSPInput", "DSPOutput"}) {
        setNumber(key, std::string(side) + "ChannelCount", 2);
    }
    for (const char* const side : {"In", "Out", "DSPIn", "DSPOut"}) {
        setNumber(key, std::string(side) + "ChannelMask", 3);
    }
    setNumber(key, "SampleRate", 48000);
    setNumber(key, "DSPModuleVersion", 0x00010002);
    setNumber(key, "PresetLoadCount", 3);
    setNumber(key, "BufferSizeMS", 10);
    setNumber(key, "CPUUsage", 34);
    setLevels(key, "InputLevelMeters", {0.5F, 0.25F});
    setLevels(key, "OutputLevelMeters", {0.1F, 0.05F});
}

void MonitorTest::end(const std::string& name) {
    ASSERT_EQ(machine().deleteTree(pathOf(name)), 0);
    std::erase_if(mutexes, [&](const auto& entry) { return entry.first == name; });
}

void MonitorTest::makeStale(const std::string& name) const {
    ChildProcess holder({.program = KORVA_MUTEX_HOLDER, .arguments = {"Global\\" + name}});
    ASSERT_TRUE(holder.waitForOutput("held\n"));
    setTypicalValues(makeKey(name));
    holder.send(SIGKILL);
    ASSERT_EQ(holder.wait().signal, SIGKILL);
}

bool MonitorTest::hasKey(const std::string& name) const {
    RegistryKey key;
    return machine().open(pathOf(name), RegistryAccess::read, key) == 0;
}

Launch MonitorTest::monitorLaunch(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "monitor");
    return tool(std::move(arguments));
}

Outcome MonitorTest::monitor(std::vector<std::string> arguments) const {
    return run(monitorLaunch(std::move(arguments)));
}

std::string MonitorTest::registryPath() {
    return platform::registryPlace();
}

}  // namespace korva::test
