#include "tests/system/support/hosted_library.h"

#include <gtest/gtest.h>

namespace korva::test {
namespace {

const std::filesystem::path built = KORVA_LIBRARY;

}  // namespace

HostedLibrary::HostedLibrary()
    : file(home.putLibrary(built, built.stem().string())),
      library(file.string()),
      classObjectGetter(library.function<GetClassObject>("DllGetClassObject")),
      unloadTest(library.function<CanUnloadNow>("DllCanUnloadNow")) {}

HostedLibrary::~HostedLibrary() {
    EXPECT_EQ(canUnloadNow(), result::ok) << "somebody still holds something of the library";
    library.close();
    EXPECT_FALSE(isLoaded(file.string()));
}

void HostedLibrary::putModule(const std::filesystem::path& module, const std::string& name) const {
    static_cast<void>(home.putLibrary(module, name));
}

void HostedLibrary::putRecorders() const {
    for (const char* const name : {"TANMER64", "DRIVOL64", "PELLUX64"}) {
        putModule(KORVA_RECORDER_MODULE, name);
    }
}

ComPointer<IClassFactory> HostedLibrary::classObject(const ClassFacts& facts) const {
    ComPointer<IClassFactory> factory;
    EXPECT_EQ(getClassObject(facts.clsid, iid::classFactory, factory.receiveAny()), result::ok);
    return factory;
}

}  // namespace korva::test
