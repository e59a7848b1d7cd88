// A process of its own that uses the registry as its arguments say:
//     set KEY NAME COUNT [SIZE]   sets the value to the numbers from 0 to COUNT - 1, in SIZE bytes (4), with
//                                 a line on standard error for each that is written
//     number KEY NAME NUMBER      sets the value, of type REG_DWORD, to the number
//     get KEY NAME                prints the number
//     watch KEY NAME              says "armed" on standard error, and prints the number after the first
//                                 change
// DISK_ROOM in the environment: the process is killed when it writes more than so many bytes to the registry.
// KEY is a path below HKEY_LOCAL_MACHINE. The exit code is 0, or 1 after a line with the registry's result.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/wait_handles.h"
#include "tests/platform/linux/faulty_disk.h"

namespace korva::platform {
namespace {

using namespace registry_result;

int fail(RegistryResult result) {
    std::printf("%d\n", result);
    return 1;
}

int setNumbers(const RegistryKey& key, const std::string& name, int count, std::size_t size) {
    std::vector<std::byte> data(size);
    for (int i = 0; i < count; ++i) {
        std::memcpy(data.data(), &i, sizeof i);
        if (const auto result = key.setValue(name, registry_type::binary, data); result != success) {
            return fail(result);
        }
        std::fprintf(stderr, "%d\n", i);
    }
    return 0;
}

int setOneNumber(const RegistryKey& key, const std::string& name, std::uint32_t number) {
    const auto result = key.setValue(name, registry_type::dword, std::as_bytes(std::span(&number, 1)));
    return result == success ? 0 : fail(result);
}

int getNumber(const RegistryKey& key, const std::string& name) {
    RegistryValue value;
    if (const auto result = key.readValue(name, value); result != success) {
        return fail(result);
    }
    int number = 0;
    std::memcpy(&number, value.data.data(), sizeof number);
    std::printf("%d\n", number);
    return 0;
}

int watchNumber(const RegistryKey& key, const std::string& name) {
    RegistryWatch watch;
    if (const auto result = watch.arm(key); result != success) {
        return fail(result);
    }
    std::fprintf(stderr, "armed\n");
    const std::array handles{watch.handle()};
    waitForHandles(handles, waitForever);
    return getNumber(key, name);
}

int run(const std::vector<std::string>& words) {
    const std::string& command = words.at(1);
    const bool writes = command == "set" || command == "number";
    const auto access = writes ? RegistryAccess::readWrite : RegistryAccess::read;
    RegistryResult result = success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &result);
    RegistryKey key;
    if (result == success) {
        result = writes ? machine.create(words.at(2), access, key) : machine.open(words.at(2), access, key);
    }
    if (result != success) {
        return fail(result);
    }
    if (command == "set") {
        const std::size_t size = words.size() > 5 ? std::stoul(words[5]) : 4;
        return setNumbers(key, words.at(3), std::stoi(words.at(4)), size);
    }
    if (command == "number") {
        return setOneNumber(key, words.at(3), static_cast<std::uint32_t>(std::stoul(words.at(4))));
    }
    return command == "get" ? getNumber(key, words.at(3)) : watchNumber(key, words.at(3));
}

}  // namespace
}  // namespace korva::platform

int main(int count, char** arguments) {
    using korva::test::FaultyDisk;
    std::optional<FaultyDisk> disk;
    if (const char* const room = std::getenv("DISK_ROOM"); room != nullptr) {
        disk.emplace(FaultyDisk::Fault::killed, std::atoll(room));
    }
    return korva::platform::run({arguments, arguments + count});
}
