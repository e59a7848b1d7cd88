// What tests of `korva monitor` start from: a registry with instances as audio objects show them.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/named_mutex.h"
#include "platform/registry.h"
#include "tests/cli/tool_test.h"
#include "tests/support/own_registry.h"

namespace korva::test {

/// Below HKEY_LOCAL_MACHINE.
inline constexpr const char* telemetryKey = "Software\\Kestrelwright";
inline constexpr const char* instancesKey = "Software\\Kestrelwright\\APO\\Instances";

/// "{6dcc1ac8-4a3c-4a98-a3a7-00000000000N}" with a digit N.
[[nodiscard]] std::string instanceName(int digit);

void setNumber(const platform::RegistryKey& key, std::string_view name, std::uint32_t number);
void setBytes(const platform::RegistryKey& key, std::string_view name, std::uint32_t type,
              std::span<const std::byte> bytes);
/// As objects write text: its bytes and a zero, as a string.
void setNarrow(const platform::RegistryKey& key, std::string_view name, const std::string& text);
void setLevels(const platform::RegistryKey& key, std::string_view name, const std::array<float, 8>& levels);
/// 0 for none.
[[nodiscard]] std::uint32_t numberOf(const platform::RegistryKey& key, std::string_view name);

/// Answers requests in a key as an object does whose stream is locked: only numbers that differ from the last
/// one, in their order. Each answer differs from the one before.
class AnsweringObject {
public:
    explicit AnsweringObject(platform::RegistryKey instance);
    ~AnsweringObject();
    AnsweringObject(const AnsweringObject&) = delete;
    AnsweringObject& operator=(const AnsweringObject&) = delete;

    /// How often levels were asked for, to measure or to stop.
    [[nodiscard]] int levelPulls() const { return pulls.load(); }

private:
    void answerAll();

    platform::RegistryKey key;
    std::array<std::uint32_t, 5> seen{};
    std::atomic<int> pulls{0};
    std::atomic<bool> isEnded{false};
    std::thread thread;
};

class MonitorTest : public ToolTest {
protected:
    /// Objects can show themselves.
    void makeTelemetry() const;
    /// An instance's key without values, open for all.
    [[nodiscard]] platform::RegistryKey makeKey(const std::string& name) const;
    /// The same with the mutex of a process that lives: this one.
    [[nodiscard]] platform::RegistryKey makeLive(const std::string& name);
    /// What an object has in its key that plays stereo.
    static void setTypicalValues(const platform::RegistryKey& key);
    /// Ends a live one as its object does.
    void end(const std::string& name);
    /// A key of a process that was killed.
    void makeStale(const std::string& name) const;
    [[nodiscard]] bool hasKey(const std::string& name) const;

    [[nodiscard]] Outcome monitor(std::vector<std::string> arguments) const;
    [[nodiscard]] Launch monitorLaunch(std::vector<std::string> arguments) const;
    /// The registry's file.
    [[nodiscard]] static std::string registryPath();

    const OwnRegistry registry;

private:
    std::vector<std::pair<std::string, platform::NamedMutex>> mutexes;
};

}  // namespace korva::test
