#include "tests/support/own_endpoint.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "params/property_set_path.h"

namespace korva::test {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;

constexpr std::string_view endpoints = "Software\\Veltrane\\APO\\";

RegistryKey localMachine() {
    return RegistryKey::root(RegistryRoot::localMachine);
}

/// A registry's own key is nobody else's, so its path makes a name.
std::string nameOf(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '.');
    return "{0.0.0.00000000}.{" + path + "}";
}

}  // namespace

OwnEndpoint::OwnEndpoint() : registry(std::make_shared<OwnRegistry>()), identifier(nameOf(registry->key())) {}

OwnEndpoint::OwnEndpoint(const OwnEndpoint& first, const std::string& name)
    : registry(first.registry), identifier(nameOf(registry->key() + "\\" + name)) {}

OwnEndpoint::~OwnEndpoint() {
    static_cast<void>(localMachine().deleteTree(std::string(endpoints) + identifier));
}

std::string OwnEndpoint::setPath(std::string_view name) const {
    return params::propertySetPath(identifier, name);
}

RegistryKey OwnEndpoint::makeSet(std::string_view name) const {
    RegistryKey key;
    EXPECT_EQ(localMachine().create(setPath(name), RegistryAccess::readWrite, key), 0);
    return key;
}

void OwnEndpoint::deleteSet(std::string_view name) const {
    EXPECT_EQ(localMachine().deleteTree(setPath(name)), 0);
}

}  // namespace korva::test
