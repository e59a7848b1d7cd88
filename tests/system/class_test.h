// A test of each class in turn.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/system/support/hosted_library.h"
#include "tests/system/support/hosted_object.h"

namespace korva::test {

/// With the library and nothing else: its objects have no endpoint and no engine.
class ClassTest : public testing::TestWithParam<ClassFacts> {
protected:
    HostedLibrary library;
};

[[nodiscard]] inline std::string nameOfClass(const testing::TestParamInfo<ClassFacts>& info) {
    return info.param.name;
}

}  // namespace korva::test

/// Each claim of the suite holds for all classes.
#define KORVA_OF_EACH_CLASS(suite)                                                           \
    INSTANTIATE_TEST_SUITE_P(OfEachClass, suite, testing::ValuesIn(korva::test::allClasses), \
                             korva::test::nameOfClass)
