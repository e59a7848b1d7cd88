// The registry between processes.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "platform/registry.h"
#include "platform/wait_handles.h"
#include "tests/platform/linux/raw_file.h"
#include "tests/support/child_process.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using test::ChildProcess;
using test::Launch;

class RegistryProcesses : public testing::Test {
protected:
    RegistryProcesses() {
        EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                      .open(registry.key(), RegistryAccess::readWrite, key),
                  success);
    }

    [[nodiscard]] Launch childThat(const std::string& command, std::vector<std::string> more,
                                   const std::string& below = "") const {
        more.insert(more.begin(), {command, registry.key() + below});
        return {.program = KORVA_REGISTRY_CHILD, .arguments = std::move(more)};
    }

    [[nodiscard]] RegistryKey newKey(const std::string& name) const {
        RegistryKey made;
        EXPECT_EQ(key.create(name, RegistryAccess::readWrite, made), success);
        return made;
    }

    test::OwnRegistry registry;
    RegistryKey key;
};

RegistryResult set(const RegistryKey& key, const std::string& name, int number) {
    return key.setValue(name, registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

/// -1 for none.
int numberIn(const RegistryKey& key, const std::string& name) {
    RegistryValue value;
    int number = -1;
    if (key.readValue(name, value) == success) {
        std::memcpy(&number, value.data.data(), sizeof number);
    }
    return number;
}

/// The last whole line of numbers that a process wrote; -1 for none.
int lastNumber(const std::string& lines) {
    const std::size_t end = lines.rfind('\n');
    if (end == std::string::npos) {
        return -1;
    }
    const std::size_t before = end == 0 ? end : lines.rfind('\n', end - 1);
    return std::stoi(lines.substr(before == std::string::npos ? 0 : before + 1));
}

TEST_F(RegistryProcesses, SeeEachOthersWrites) {
    ASSERT_EQ(set(key, "ours", 41), success);
    EXPECT_EQ(test::run(childThat("get", {"OURS"})).output, "41\n");

    EXPECT_EQ(test::run(childThat("set", {"theirs", "8"})).exitCode, 0);
    EXPECT_EQ(numberIn(key, "THEIRS"), 7);
}

TEST_F(RegistryProcesses, HearEachOthersWrites) {
    ChildProcess watcher(childThat("watch", {"x"}));
    ASSERT_TRUE(watcher.waitForError("armed\n"));
    ASSERT_EQ(set(key, "x", 17), success);
    EXPECT_EQ(watcher.wait().output, "17\n");

    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    ChildProcess writer(childThat("set", {"x", "6"}));
    const std::array handles{watch.handle()};
    EXPECT_EQ(waitForHandles(handles, 20'000), 0);
    EXPECT_EQ(writer.wait().exitCode, 0);
    EXPECT_EQ(numberIn(key, "x"), 5);
}

TEST_F(RegistryProcesses, MakeOneFileTogether) {
    for (int round = 0; round < 5; ++round) {
        const test::OwnRegistry fresh;
        const std::string path = registryPlace() + "-together/registry";
        std::vector<std::unique_ptr<ChildProcess>> all;
        for (int i = 0; i < 6; ++i) {
            Launch launch = childThat("get", {"x"});
            launch.environment["KORVA_REGISTRY"] = path;
            all.push_back(std::make_unique<ChildProcess>(launch));
        }
        for (const auto& one : all) {
            EXPECT_EQ(one->wait().output, "2\n");
        }
    }
}

TEST_F(RegistryProcesses, LoseNothingAndMissNothingWhileOneIsKilledAgainAndAgain) {
    constexpr int last = 1999;
    std::vector<std::unique_ptr<ChildProcess>> writers;
    std::vector<RegistryKey> keys;
    RegistryWatch watch;
    for (const char* name : {"a", "b", "c", "d"}) {
        keys.push_back(newKey(name));
        writers.push_back(std::make_unique<ChildProcess>(
            childThat("set", {"x", std::to_string(last + 1)}, std::string("\\") + name)));
    }
    // What it said it had written has to be there.
    int killed = 0;
    std::jthread killer([&](const std::stop_token& stop) {
        for (; killed < 10 || !stop.stop_requested(); ++killed) {
            const std::string name = "killed " + std::to_string(killed);
            ChildProcess victim(childThat("set", {name, "1000000"}));
            EXPECT_TRUE(victim.waitForError("20\n"));
            victim.send(SIGKILL);
            EXPECT_GE(numberIn(key, name), lastNumber(victim.wait().error));
        }
    });

    // The keys of the killed ones are not watched: their changes would wake this one when the others' don't.
    const std::array handles{watch.handle()};
    const auto arm = [&](const RegistryKey& one) { EXPECT_EQ(watch.arm(one), success); };
    const auto isDone = [](const RegistryKey& one) { return numberIn(one, "x") == last; };
    bool isTold = true;
    do {
        std::for_each(keys.begin(), keys.end(), arm);
        if (std::all_of(keys.begin(), keys.end(), isDone)) {
            break;
        }
        isTold = waitForHandles(handles, 20'000) == 0;
        watch.take();
    } while (isTold);
    EXPECT_TRUE(isTold);
    for (const auto& writer : writers) {
        const test::Outcome outcome = writer->wait();
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_EQ(lastNumber(outcome.error), last);
    }
    killer.request_stop();
    killer.join();
    EXPECT_GE(killed, 10);
    EXPECT_EQ(test::integrityOf(registryPlace()), "ok");
}

}  // namespace
}  // namespace korva::platform
