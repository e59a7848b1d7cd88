// The object's library, and the modules beside it.
#include <filesystem>

#include "tests/cli/doctor/linux/doctor_test.h"

namespace korva::test {
namespace {

namespace files = std::filesystem;

class DoctorLibrary : public DoctorTest {
protected:
    /// To less than is loaded of it.
    static void cutShort(const std::string& file) { writeBytes(file, readBytes(file).substr(0, 5000)); }
};

TEST_F(DoctorLibrary, ThatIsMissingIsAFault) {
    const Outcome outcome = run(launchOf({"doctor", "--library", path("none.so")}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("fault: There is no library '" + path("none.so") + "'."), std::string::npos)
        << outcome.output;
}

TEST_F(DoctorLibrary, ThatIsNoneOrHalfOfOneIsAFaultAndNoCrash) {
    cutShort(library);
    EXPECT_TRUE(findsOnly("library", {library, "can't be loaded", "cut short"}));
    writeBytes(library, "#!/bin/sh\n");
    EXPECT_TRUE(findsOnly("library", {library, "can't be loaded", "not a library"}));
}

TEST_F(DoctorLibrary, ThatLacksExportsTellsEach) {
    files::copy_file(KORVA_REFUSING_LIBRARY, library, files::copy_options::overwrite_existing);
    const Outcome outcome = doctor();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("fault: The library '" + library + "' "), std::string::npos)
        << outcome.output;
}

TEST_F(DoctorLibrary, AModuleThatAnEndpointNeedsAndThatIsMissingIsAFault) {
    files::remove(module);
    EXPECT_TRUE(findsOnly("modules", {"PELLUX64 is missing", module, "the mfx effect of \"Speakers\""}));
}

TEST_F(DoctorLibrary, AModuleThatNobodyNeedsIsARemark) {
    writeBytes(path("TANMER64.so"), "no library");
    EXPECT_TRUE(findsNothing());
    const Outcome outcome = doctor();
    EXPECT_NE(outcome.output.find("remark: The module TANMER64 can't be loaded."), std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find(": DRIVOL64.\n  cause: No endpoint needs"), std::string::npos)
        << outcome.output;
}

TEST_F(DoctorLibrary, AModuleThatLacksAFunctionTellsWhatThatCosts) {
    putModule("lacking_Process");
    EXPECT_TRUE(findsOnly("modules", {"lacks ZRDSPAPI_Process", "no sound reaches it"}));
    putModule("lacking_WakeUp");
    EXPECT_TRUE(findsOnly("modules", {"lacks ZRDSPAPI_WakeUp", "it never hears of clients"}));
    putModule("lacking_Create");
    EXPECT_TRUE(findsOnly("modules", {"lacks ZRDSPAPI_Create", "nothing of the module is used"}));
    files::copy_file(KORVA_LIBRARY, module, files::copy_options::overwrite_existing);
    EXPECT_TRUE(findsOnly("modules", {"lacks ZRDSPAPI_Create"}));
}

TEST_F(DoctorLibrary, AModuleThatCannotBeLoadedTellsTheLoadersReason) {
    putModule("needing_symbol");
    EXPECT_TRUE(findsOnly("modules", {"PELLUX64 can't be loaded", "undefined symbol"}));
    putModule("lacking_nothing");
    cutShort(module);
    EXPECT_TRUE(findsOnly("modules", {"PELLUX64 can't be loaded", "cut short"}));
    files::remove(module);
    files::create_directory(module);
    EXPECT_TRUE(findsOnly("modules", {"PELLUX64 can't be loaded", "it is a folder"}));
}

}  // namespace
}  // namespace korva::test
