#include "platform/empty_keys.h"

#include <gtest/gtest.h>

#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using EmptyKeys = RegistryTest;

TEST_F(EmptyKeys, AreDeleted) {
    made("a\\b");
    EXPECT_EQ(deleteIfEmpty(key, "a\\b"), success);
    EXPECT_EQ(openResult("a\\b"), notFound);
    EXPECT_EQ(deleteIfEmpty(key, "a"), success);
    EXPECT_EQ(openResult("a"), notFound);
}

TEST_F(EmptyKeys, AreNotThoseWithAValueOrASubKey) {
    setNumber(made("valued"), "", 1);
    made("parent\\sub");

    EXPECT_EQ(deleteIfEmpty(key, "valued"), success);
    EXPECT_EQ(deleteIfEmpty(key, "parent"), success);

    EXPECT_EQ(keyNames(key).size(), 2U);
    EXPECT_EQ(valueNames(made("valued")).size(), 1U);
}

TEST_F(EmptyKeys, MayBeMissing) {
    EXPECT_EQ(deleteIfEmpty(key, "missing"), success);
    EXPECT_EQ(deleteIfEmpty(key, "missing\\below"), success);
}

TEST_F(EmptyKeys, GiveTheRegistrysRefusals) {
    makeLink(made("link"));
    EXPECT_EQ(deleteIfEmpty(key, "link"), isLink);
    EXPECT_EQ(deleteIfEmpty(RegistryKey(), "a"), invalidHandle);
    EXPECT_EQ(deleteIfEmpty(key, "\xFF"), invalidParameter);
}

}  // namespace
}  // namespace korva::platform
