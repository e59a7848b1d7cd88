// registry_writer PATH NAME NUMBER: writes a number below HKEY_LOCAL_MACHINE, for a test that watches from
// another process. Makes the key if it isn't there. Exit code 0 if it worked.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/registry.h"
#include "tests/support/registry_numbers.h"

int main(int argumentCount, char** arguments) {
    using namespace korva::platform;
    if (argumentCount != 4) {
        return 2;
    }
    const auto number = static_cast<std::uint32_t>(std::strtoul(arguments[3], nullptr, 10));
    RegistryKey key;
    const RegistryResult made =
        RegistryKey::root(RegistryRoot::localMachine).create(arguments[1], RegistryAccess::readWrite, key);
    return made == registry_result::success && korva::test::setNumber(key, arguments[2], number) ? 0 : 1;
}
