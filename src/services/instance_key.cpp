#include "services/instance_key.h"

#include <cstring>
#include <vector>

#include "platform/key_tree.h"
#include "platform/property_key.h"
#include "platform/tick_clock.h"

namespace korva::services {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryValue;
namespace registry_result = platform::registry_result;
namespace registry_type = platform::registry_type;

namespace {

template <class Number>
std::span<const std::byte> bytesOf(const Number& number) noexcept {
    return std::as_bytes(std::span(&number, 1));
}

}  // namespace

std::string instance_place::keyPath(std::string_view name) {
    return std::string(instances).append("\\").append(name);
}

std::string instance_place::mutexName(std::string_view name) {
    return std::string("Global\\").append(name);
}

// The mutex comes before the key and goes after it: a key without one is always a dead one's.
InstanceKey::InstanceKey(const GUID& guid) {
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
    RegistryKey base;
    if (machine.open(instance_place::base, RegistryAccess::read, base) != registry_result::success) {
        return;
    }
    const std::string name = platform::guidText(guid);
    instanceKeyPath = instance_place::keyPath(name);
    instanceMutex = platform::NamedMutex::create(instance_place::mutexName(name));
    if (!instanceMutex) {
        return;  // such a key would pass for a dead one's, and be swept away
    }
    // Whatever is refused, a link in its place for one, the instance goes without a key.
    (void)machine.create(instanceKeyPath, RegistryAccess::readWrite, instanceKey, nullptr,
                         platform::RegistrySharing::everyone);
}

InstanceKey::~InstanceKey() {
    remove();
}

RegistryResult InstanceKey::writeDword(std::string_view name, std::uint32_t value) {
    return write(name, registry_type::dword, bytesOf(value));
}

RegistryResult InstanceKey::writeQword(std::string_view name, std::uint64_t value) {
    return write(name, registry_type::qword, bytesOf(value));
}

RegistryResult InstanceKey::writeBlob(std::string_view name, std::span<const std::byte> data) {
    return write(name, registry_type::binary, data);
}

RegistryResult InstanceKey::writeString(std::string_view name, std::string_view text) {
    const std::string terminated(text);
    return write(name, registry_type::string, std::as_bytes(std::span(terminated.c_str(), text.size() + 1)));
}

RegistryResult InstanceKey::write(std::string_view name, std::uint32_t type,
                                  std::span<const std::byte> data) {
    if (!instanceKey) {
        return registry_result::success;
    }
    const RegistryResult result = instanceKey.setValue(name, type, data);
    if (result != registry_result::success) {
        return result;
    }
    const std::uint32_t writeTime = platform::tickClockMs();
    return instanceKey.setValue("WriteTime", registry_type::dword, bytesOf(writeTime));
}

std::optional<std::uint32_t> InstanceKey::readDword(std::string_view name) const {
    RegistryValue stored;
    std::uint32_t value = 0;
    if (instanceKey.readValue(name, stored) != registry_result::success ||
        stored.type != registry_type::dword || stored.data.size() != sizeof value) {
        return std::nullopt;
    }
    std::memcpy(&value, stored.data.data(), sizeof value);
    return value;
}

void InstanceKey::remove() {
    if (instanceKey) {
        instanceKey = RegistryKey();
        (void)platform::deleteKeyTree(RegistryKey::root(RegistryRoot::localMachine), instanceKeyPath);
    }
    instanceKeyPath.clear();
}

}  // namespace korva::services
