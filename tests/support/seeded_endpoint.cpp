#include "tests/support/seeded_endpoint.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/endpoint_values.h"
#include "platform/new_guid.h"

namespace korva::test {
namespace {

using platform::RegistryKey;
using platform::RegistryRoot;

/// Raises `std::runtime_error` if the system has none to give.
GUID unusedGuid() {
    const GUID guid = platform::newGuid();
    if (guid == GUID{}) {
        throw std::runtime_error("no GUID for an endpoint");
    }
    return guid;
}

}  // namespace

SeededEndpoint::SeededEndpoint(EDataFlow flow, std::uint32_t state) : endpoint{flow, unusedGuid()} {
    EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                  .create(path(), platform::RegistryAccess::readWrite, opened),
              0);
    setNumber(platform::endpoint_value::state, state);
}

SeededEndpoint::~SeededEndpoint() {
    static_cast<void>(RegistryKey::root(RegistryRoot::localMachine).deleteTree(path()));
}

void SeededEndpoint::setNumber(std::string_view name, std::uint32_t number) const {
    const platform::RegistryValue value = platform::numberValue(number);
    EXPECT_EQ(opened.setValue(name, value.type, value.data), 0);
}

void SeededEndpoint::setVolume(float scalar) const {
    const platform::RegistryValue value = platform::volumeValue(scalar);
    EXPECT_EQ(opened.setValue(platform::endpoint_value::volume, value.type, value.data), 0);
}

void SeededEndpoint::remove() const {
    EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine).deleteTree(path()), 0);
}

}  // namespace korva::test
