// What tests of `korva registry` start from that run on a registry which isn't theirs alone.
#pragma once

#include <string>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {

/// A key of the test's own below the user's root. It isn't there at first, and goes with all below it.
class OwnKeyTest : public RegistryToolTest {
protected:
    OwnKeyTest();
    ~OwnKeyTest() override;

    const std::string key;
};

}  // namespace korva::test
