#include "platform/class_activation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>

#include "platform/counted_object.h"
#include "platform/published/class_factory.h"
#include "platform/registry.h"
#include "platform/unicode.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

constexpr CLSID servedClass = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0xAB}};
constexpr const char* servedText = "{11111111-2222-3333-4444-5555555555AB}";
constexpr CLSID otherClass = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0xAC}};
constexpr const char* otherText = "{11111111-2222-3333-4444-5555555555ac}";

class RegisteredClass : public testing::Test {
protected:
    static void registerClass(const std::string& classId, const std::string& library,
                              std::uint32_t type = registry_type::string) {
        RegistryKey key;
        const RegistryKey classes = RegistryKey::root(RegistryRoot::classesRoot);
        ASSERT_EQ(classes.create("CLSID\\" + classId + "\\InprocServer32", RegistryAccess::readWrite, key),
                  0);
        const WideString path = toWide(library);
        ASSERT_EQ(key.setValue("", type, std::as_bytes(std::span(path.c_str(), path.size() + 1))), 0);
    }

    static HRESULT create(const CLSID& classId, const IID& id = published::iidOf<IUnknown>) {
        void* object = nullptr;
        const HRESULT result = createObjectOfClass(classId, id, &object);
        EXPECT_EQ(object != nullptr, result == published::ok);
        const Reference<IUnknown> made(static_cast<IUnknown*>(object));
        return result;
    }

    const test::OwnRegistry registry;
};

TEST_F(RegisteredClass, GivesAnObject) {
    registerClass(servedText, KORVA_OBJECT_SERVER);
    EXPECT_EQ(create(servedClass), published::ok);
}

TEST_F(RegisteredClass, StaysLoaded) {
    registerClass(servedText, KORVA_OBJECT_SERVER);
    EXPECT_EQ(create(servedClass), published::ok);
    EXPECT_TRUE(test::isLoaded(KORVA_OBJECT_SERVER));
}

TEST_F(RegisteredClass, GivesTheFaceThatIsAskedFor) {
    registerClass(servedText, KORVA_OBJECT_SERVER);
    EXPECT_EQ(create(servedClass, published::iidOf<IClassFactory>), published::noInterface);
}

TEST_F(RegisteredClass, ThatItsLibraryDoesNotHaveIsTheLibrarysWord) {
    registerClass(otherText, KORVA_OBJECT_SERVER);
    EXPECT_EQ(create(otherClass), published::classNotAvailable);
}

TEST_F(RegisteredClass, WhoseLibraryIsNoneCountsAsNotRegistered) {
    for (const char* const library :
         {"", "object_server.so", "/nowhere/object_server.so", KORVA_NEEDED_LIBRARY}) {
        registerClass(servedText, library);
        EXPECT_EQ(create(servedClass), classNotRegistered) << library;
    }
    registerClass(servedText, KORVA_OBJECT_SERVER, registry_type::binary);
    EXPECT_EQ(create(servedClass), classNotRegistered);
}

}  // namespace
}  // namespace korva::platform
