// Each module with a fault fails the check that is meant to find it, and no other.
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "tests/cli/module_check_test.h"

namespace korva::test {
namespace {

/// A module with a fault, and what is said of it.
struct Fault {
    const char* module;
    const char* check;
    const char* result;
    const char* reason;
    bool needsTraps = false;  ///< Of the audio thread, which a tool with a sanitizer hasn't.
};

std::ostream& operator<<(std::ostream& stream, const Fault& fault) {
    return stream << fault.module;
}

class ModuleFault : public ModuleCheckTest, public testing::WithParamInterface<Fault> {};

constexpr Fault faults[] = {
    {"allocates", "realtime", "failed", "calls malloc in process", true},
    {"answers_anything", "data", "failed", "answers what nobody has ever defined"},
    {"calls_system", "realtime", "failed", "calls the system call sched_yield in process", true},
    {"changes_rounding", "signals", "failed", "other rules of arithmetic"},
    {"counts_blocks", "cuts", "failed",
     "blocks of 1 frame sound other than blocks of 512: frame 1 of plane 0"},
    {"crashes_at_load", "load", "crashed", "Segmentation fault at 0x0 in the library's own start"},
    {"crashes_at_unload", "load", "crashed", "Segmentation fault at 0x0 in the library's own end"},
    {"create_exits", "create", "crashed", "exit code 3 in ZRDSPAPI_Create"},
    {"create_fails", "create", "failed", "ZRDSPAPI_Create gives null for every document"},
    {"expects_terminator", "create", "failed",
     "touches memory past the end of the text of its document in ZRDSPAPI_Create"},
    {"forgets_nothing", "repeatable", "failed", "after ZRDSPAPI_Clear the same sound comes out differently"},
    {"hesitates", "speed", "warning", "denormals: a block takes"},
    {"insane_formats", "formats", "failed", "changes the format to one with 200 channels"},
    {"keeps_nan", "signals", "warning", "sound is spoiled after infinities until the next ZRDSPAPI_Clear"},
    {"keeps_text", "create", "failed",
     "touches the text of its document after ZRDSPAPI_Create has come back in ZRDSPAPI_Initialize"},
    {"lacks_entry", "table", "failed", "entry 5 of the table is empty"},
    {"leaks", "pairs", "failed", "more bytes of heap after each life of an instance"},
    {"leaks_descriptors", "pairs", "failed", "more descriptors after each life of an instance"},
    {"leaves_answers", "data", "failed", "says that it gave 4 bytes, and leaves byte 0 as it was"},
    {"locks", "realtime", "failed", "calls pthread_mutex_lock in process", true},
    {"locks_by_the_standard", "realtime", "failed", "calls mtx_lock in process", true},
    {"long_records", "create", "failed",
     "touches memory past the end of a format record in ZRDSPAPI_IsOutputFormatSupported"},
    {"makes_nan", "signals", "failed", "gives no number for silence: frame 0 of plane 0 is"},
    {"needing_library", "load", "failed",
     "can't be loaded: libkorva_somebody.so: cannot open shared object file"},
    {"needing_symbol", "load", "failed", "can't be loaded: undefined symbol: "},
    {"one_layout", "bounds", "crashed",
     "Segmentation fault at 0x0 in process (3 channels (0x7) at 48000 Hz after 2 channels (0x3) at 48000 Hz "
     "without another ZRDSPAPI_Initialize"},
    {"reads_before", "bounds", "failed", "touches memory before the begin of plane 0 in process"},
    {"reads_parameter", "parameters", "failed",
     "touches memory past the end of a parameter's bytes in ZRDSPAPI_SetParameter"},
    {"reads_past_record", "bounds", "failed",
     "touches memory past the end of the record of a block in process"},
    {"scribbler", "unused-planes", "failed", "at frame 0 of plane 2, on which no side has a channel"},
    {"shared_state", "instances", "failed", "another instance that plays in turns changes the sound"},
    {"slow", "speed", "failed", "denormals: a block takes"},
    {"starts_with_old_sound", "repeatable", "failed",
     "after another ZRDSPAPI_Initialize the same sound comes out differently"},
    {"stays_loaded", "unload", "failed", "stays in memory when it is unloaded"},
    {"throws", "create", "failed", "throws an exception in ZRDSPAPI_Initialize"},
    {"wrong_counts", "data", "failed", "says that it gave 4 bytes (bank -1, id -32, room for 0 bytes)"},
};

INSTANTIATE_TEST_SUITE_P(Of, ModuleFault, testing::ValuesIn(faults),
                         [](const auto& parameter) { return std::string(parameter.param.module); });

TEST_P(ModuleFault, IsFoundByItsCheckAndNoOther) {
    const Fault& fault = GetParam();
    const auto json = checkJson({faultyModule(fault.module), "--seed", "1", "--timeout", "60"});
    if (fault.needsTraps && resultOf(json, "realtime")["result"] == "skipped") {
        GTEST_SKIP() << "the tool has a sanitizer";
    }
    const auto result = resultOf(json, fault.check);
    EXPECT_EQ(result["result"], fault.result) << json;
    EXPECT_NE(result["reason"].get<std::string>().find(fault.reason), std::string::npos) << result;
    for (const auto& other : json["checks"]) {
        if (other["name"] != fault.check) {
            EXPECT_TRUE(isNoFault(other) || other["result"] == "skipped") << other;
        }
    }
}

class ModuleFaults : public ModuleCheckTest {};

/// Whether all of its checks passed, but for what can't be watched.
testing::AssertionResult hasNoFault(const nlohmann::json& json) {
    for (const auto& result : json["checks"]) {
        const bool isUnwatched = result["name"] == "realtime" && result["result"] == "skipped";
        if (!isNoFault(result) && !isUnwatched) {
            return testing::AssertionFailure() << result;
        }
    }
    return json["checks"].size() == 17 ? testing::AssertionSuccess() : testing::AssertionFailure() << json;
}

TEST_F(ModuleFaults, AnHonestModuleHasNone) {
    EXPECT_TRUE(hasNoFault(checkJson({faultyModule("honest"), "--timeout", "60"})));
}

TEST_F(ModuleFaults, TheEqualiserHasNone) {
    EXPECT_TRUE(hasNoFault(checkJson({equaliserModule, "--timeout", "60"})));
}

TEST_F(ModuleFaults, AModulesOwnThreadMayDoWhatItLikes) {
    EXPECT_TRUE(hasNoFault(checkJson({faultyModule("busy_thread"), "--timeout", "60"})));
}

TEST_F(ModuleFaults, AReadPastAPlaneIsSeenAndHeard) {
    const auto json = checkJson({faultyModule("reads_beyond"), "--only", "bounds,cuts"});
    EXPECT_NE(resultOf(json, "bounds")["reason"].get<std::string>().find(
                  "touches memory past the end of plane 0 in process"),
              std::string::npos)
        << json;
    EXPECT_EQ(resultOf(json, "cuts")["result"], "failed");
}

TEST_F(ModuleFaults, ACrashIsNamedWithItsPlaceAndOthersAreNotTried) {
    const auto json = checkJson({faultyModule("create_crashes")});
    const auto create = resultOf(json, "create");
    EXPECT_EQ(create["result"], "crashed");
    EXPECT_TRUE(
        create["reason"].get<std::string>().starts_with("Segmentation fault at 0x0 in ZRDSPAPI_Create"))
        << create;
    EXPECT_EQ(resultOf(json, "bounds")["result"], "skipped");
    EXPECT_EQ(resultOf(json, "bounds")["reason"], "needs the check create, which crashed");
}

TEST_F(ModuleFaults, WhatAModuleSaidBeforeItEndedTheProcessIsTold) {
    const auto json = checkJson({faultyModule("create_exits"), "--only", "create"});
    EXPECT_TRUE(resultOf(json, "create")["reason"].get<std::string>().ends_with(": no licence found"))
        << json;
}

TEST_F(ModuleFaults, AParameterThatTakesTheSettingsFromTheAudioThreadIsACrash) {
    const auto json = checkJson({faultyModule("unsafe_parameters"), "--only", "parameters"});
    const auto result = resultOf(json, "parameters");
    EXPECT_EQ(result["result"], "crashed");
    EXPECT_NE(result["reason"].get<std::string>().find("Segmentation fault at 0x0 in process"),
              std::string::npos)
        << result;
}

TEST_F(ModuleFaults, ModulesThatKeepWhatACallWasGivenAreFoundWhenTheyReadIt) {
    const auto parameter = checkJson({faultyModule("keeps_parameter"), "--only", "cuts"});
    EXPECT_TRUE(resultOf(parameter, "cuts")["reason"].get<std::string>().starts_with(
        "touches a parameter's bytes after ZRDSPAPI_SetParameter has come back in process"))
        << parameter;
    const auto format = checkJson({faultyModule("keeps_format"), "--only", "cuts"});
    EXPECT_TRUE(resultOf(format, "cuts")["reason"].get<std::string>().starts_with(
        "touches a format record after ZRDSPAPI_Initialize has come back in process"))
        << format;
}

TEST_F(ModuleFaults, AThreadThatOutlivesItsLibraryIsNamed) {
    const auto json = checkJson({faultyModule("leaves_thread"), "--only", "unload"});
    EXPECT_EQ(resultOf(json, "unload")["result"], "crashed") << json;
    EXPECT_NE(resultOf(json, "unload")["reason"].get<std::string>().find(" in a thread of its own"),
              std::string::npos)
        << json;
}

TEST_F(ModuleFaults, ATableThatIsNowhereIsACrashWhereItIsRead) {
    const auto json = checkJson({faultyModule("wild_table"), "--only", "table"});
    EXPECT_EQ(resultOf(json, "table")["reason"], "Segmentation fault at 0x40 (its table is read)") << json;
}

TEST_F(ModuleFaults, ACallThatHangsWhileSoundRunsIsNamed) {
    const auto json =
        checkJson({faultyModule("waits_for_sound"), "--only", "parameters", "--timeout", "0.5"});
    EXPECT_TRUE(resultOf(json, "parameters")["reason"].get<std::string>().starts_with(
        "did not come back within 0.5 s in ZRDSPAPI_SetParameter"))
        << json;
}

TEST_F(ModuleFaults, AModuleWithoutCreateIsNone) {
    const auto json = checkJson({faultyModule("lacks_create")});
    EXPECT_EQ(resultOf(json, "exports")["result"], "failed");
    EXPECT_TRUE(resultOf(json, "exports")["reason"].get<std::string>().starts_with(
        "lacks ZRDSPAPI_Create (nothing of the module is used)"));
    EXPECT_EQ(resultOf(json, "create")["reason"], "exports no ZRDSPAPI_Create");
}

TEST_F(ModuleFaults, AModuleWithoutProcessIsNotPlayed) {
    const auto json = checkJson({faultyModule("lacks_process")});
    EXPECT_EQ(resultOf(json, "exports")["result"], "failed");
    EXPECT_NE(resultOf(json, "exports")["reason"].get<std::string>().find(
                  "ZRDSPAPI_Free (its instances are never freed)"),
              std::string::npos);
    EXPECT_EQ(resultOf(json, "cuts")["result"], "skipped");
    EXPECT_EQ(resultOf(json, "cuts")["reason"], "no sound goes through a module without ZRDSPAPI_Process");
}

}  // namespace
}  // namespace korva::test
