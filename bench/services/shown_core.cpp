#include "bench/services/shown_core.h"

#include <cstddef>
#include <span>
#include <stdexcept>

#include "platform/tick_clock.h"
#include "services/instance_key.h"
#include "tests/support/engines.h"

namespace korva::bench {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
using platform::RegistryValue;
namespace registry_type = platform::registry_type;

namespace {

constexpr std::size_t nameCapacity = 1000;

void require(bool holds, const char* otherwise) {
    if (!holds) {
        throw std::runtime_error(otherwise);
    }
}

RegistryKey keyOfTheOnlyInstance() {
    RegistryKey instances;
    RegistryKey key;
    std::string name;
    require(RegistryKey::root(RegistryRoot::localMachine)
                        .open(services::instance_place::instances, RegistryAccess::read, instances) == 0 &&
                instances.keyName(0, name) == 0 && instances.open(name, RegistryAccess::readWrite, key) == 0,
            "the core shows nothing of itself");
    return key;
}

void writeNumber(const RegistryKey& key, std::string_view name, std::uint32_t number) {
    require(key.setValue(name, registry_type::dword, std::as_bytes(std::span(&number, 1))) == 0,
            "a number can't be written");
}

bool isShown(std::string_view name) {
    return name != "WriteTime" && !name.starts_with("Capture");
}

}  // namespace

ShownCore::ShownCore(const char* moduleFile)
    : ground(test::thirdEngine, moduleFile, true), rig(ground), key(keyOfTheOnlyInstance()) {
    rig.on([this] {
        rig.begin();
        rig.lock();
    });
}

void askForEverything(const RegistryKey& key, std::uint32_t number) {
    for (const std::string_view name : requestNames) {
        writeNumber(key, name, number);
    }
}

void writeShown(const RegistryKey& key, std::string_view name, const RegistryValue& value) {
    require(key.setValue(name, value.type, value.data) == 0, "a value can't be written");
    writeNumber(key, "WriteTime", platform::tickClockMs());
}

std::vector<NamedValue> shownValues(const RegistryKey& key) {
    std::vector<NamedValue> values;
    std::string name;
    for (std::uint32_t index = 0; key.valueName(index, nameCapacity, name) == 0; ++index) {
        RegistryValue value;
        if (isShown(name) && key.readValue(name, value) == 0) {
            values.push_back({name, std::move(value)});
        }
    }
    return values;
}

}  // namespace korva::bench
