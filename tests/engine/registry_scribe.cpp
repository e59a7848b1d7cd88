// Writes to the registry below HKEY_LOCAL_MACHINE what its standard input says, for a test that watches from
// another process. A line is an order, its parts separated by tabs; a line with the registry's result answers
// it. What an order changes that isn't there is not made but by `make`.
//
//     make    PATH                   a key
//     remove  PATH                   a key with all its values
//     set     PATH NAME TYPE HEX     a value; HEX are the digits of its bytes
//     delete  PATH NAME              a value
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace {

using namespace korva::platform;

std::vector<std::string> partsOf(const std::string& line) {
    std::vector<std::string> parts;
    std::istringstream stream(line);
    for (std::string part; std::getline(stream, part, '\t');) {
        parts.push_back(part);
    }
    parts.resize(5);
    return parts;
}

std::vector<std::byte> bytesOf(const std::string& digits) {
    std::vector<std::byte> bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        bytes.push_back(static_cast<std::byte>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    return bytes;
}

RegistryResult obey(const std::string& line) {
    const std::vector<std::string> parts = partsOf(line);
    const RegistryKey root = RegistryKey::root(RegistryRoot::localMachine);
    RegistryKey key;
    if (parts[0] == "make") {
        return root.create(parts[1], RegistryAccess::readWrite, key);
    }
    if (parts[0] == "remove") {
        return root.deleteTree(parts[1]);
    }
    const RegistryResult opened = root.open(parts[1], RegistryAccess::readWrite, key);
    if (opened != registry_result::success) {
        return opened;
    }
    return parts[0] == "set"
               ? key.setValue(parts[2], static_cast<std::uint32_t>(std::stoul(parts[3])), bytesOf(parts[4]))
               : key.deleteValue(parts[2]);
}

}  // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << obey(line) << std::endl;
    }
}
