// Whatever the audio thread runs lies in the code section that is kept in memory, and reaches nothing else.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/rtsafe/object_listing.h"

namespace korva::test {
namespace {

constexpr std::string_view section = "rt_code";

/// Objects that hold functions of the audio thread.
constexpr std::array<std::string_view, 15> realtimeObjects = {
    "channel_mixer.cpp.o",  "direct_copy.cpp.o",        "fold_plan.cpp.o",    "gain_ramp.cpp.o",
    "kernels.cpp.o",        "kernels_plain.cpp.o",      "kernels_sse2.cpp.o", "kernels_avx2.cpp.o",
    "kernels_avx512.cpp.o", "level_meter.cpp.o",        "rt_processor.cpp.o", "sample_tap.cpp.o",
    "stereo_shapes.cpp.o",  "dsp_engine_process.cpp.o", "realtime_face.cpp.o"};

constexpr std::array libraries = {KORVA_RT_LIBRARY, KORVA_ENGINE_LIBRARY, KORVA_APO_LIBRARY};

/// Functions in those objects that the owner calls, and no call of the audio thread.
constexpr std::array<std::string_view, 10> ownersFunctions = {"korva::rt::GainRampState::GainRampState(",
                                                              "korva::rt::MeterRelease::forSampleRate(",
                                                              "korva::rt::RtProcessor::RtProcessor(",
                                                              "korva::rt::RtProcessor::exchangeEngine(",
                                                              "korva::rt::RtProcessor::resetMeters(",
                                                              "korva::rt::supportedKernels(",
                                                              "korva::rt::findKernels(",
                                                              "korva::rt::(anonymous namespace)::supported(",
                                                              "korva::rt::(anonymous namespace)::choose(",
                                                              "_GLOBAL__sub_I_"};

/// All that real-time code may call outside its section: moves of memory and the monotonic clock.
const std::set<std::string> allowedOutside = {"memcpy", "memmove", "memset",
                                              "std::chrono::_V2::steady_clock::now()"};

std::vector<ObjectFunction> allFunctions() {
    std::vector<ObjectFunction> all;
    for (const char* library : libraries) {
        const std::vector<ObjectFunction> functions = functionsOf(library);
        all.insert(all.end(), functions.begin(), functions.end());
    }
    return all;
}

std::vector<ObjectReference> allReferences() {
    std::vector<ObjectReference> all;
    for (const char* library : libraries) {
        const std::vector<ObjectReference> references = referencesFrom(library, std::string(section));
        all.insert(all.end(), references.begin(), references.end());
    }
    return all;
}

bool isRealtimeObject(const std::string& object) {
    return std::find(realtimeObjects.begin(), realtimeObjects.end(), object) != realtimeObjects.end();
}

bool isOwners(const std::string& name) {
    return std::any_of(ownersFunctions.begin(), ownersFunctions.end(),
                       [&](std::string_view owners) { return name.starts_with(owners); });
}

TEST(CodeSection, HoldsEveryFunctionOfTheRealtimeSourcesButTheOwners) {
    for (const ObjectFunction& function : allFunctions()) {
        if (isRealtimeObject(function.object) && !isOwners(function.name)) {
            EXPECT_EQ(function.section, section) << function.name << " of " << function.object;
        }
    }
}

TEST(CodeSection, HoldsSomethingOfEachRealtimeSource) {
    std::set<std::string> objects;
    for (const ObjectFunction& function : allFunctions()) {
        if (function.section == section) {
            objects.insert(function.object);
        }
    }

    for (const std::string_view object : realtimeObjects) {
        EXPECT_TRUE(objects.contains(std::string(object))) << object;
    }
    EXPECT_EQ(objects.size(), realtimeObjects.size()) << "another source has real-time code: name it here";
}

TEST(CodeSection, HoldsNoFunctionOfTheOwner) {
    for (const ObjectFunction& function : allFunctions()) {
        if (isOwners(function.name)) {
            EXPECT_NE(function.section, section) << function.name;
        }
    }
}

TEST(CodeSection, HoldsTheCallAndItsStagesByName) {
    std::set<std::string> names;
    for (const ObjectFunction& function : allFunctions()) {
        if (function.section == section) {
            names.insert(function.name.substr(0, function.name.find('(')));
        }
    }

    for (const char* name :
         {"korva::rt::RtProcessor::Process", "korva::rt::RtProcessor::processBlock",
          "korva::rt::ChannelMixer", "korva::rt::LevelMeter", "korva::rt::GainRamp", "korva::rt::writeTap",
          "korva::rt::directCopy", "korva::rt::chosenKernels", "korva::engine::DspEngine::Process",
          "korva::engine::DspEngine::Capture", "korva::apo::RealtimeFace::APOProcess",
          "korva::apo::RealtimeFace::CalcInputFrames", "korva::apo::RealtimeFace::CalcOutputFrames"}) {
        EXPECT_TRUE(names.contains(name)) << name;
    }
}

TEST(CodeSection, CallsNoFunctionOutsideItselfButTheAllowed) {
    std::set<std::string> outside;
    for (const char* library : libraries) {
        for (const ObjectReference& undefined : undefinedSymbolsOf(library)) {
            outside.insert(undefined.symbol);
        }
    }
    for (const ObjectFunction& function : allFunctions()) {
        if (function.section == section) {
            outside.erase(function.name);
        } else {
            outside.insert(function.name);
        }
    }

    std::set<std::string> allowedSeen;
    for (const ObjectReference& reference : allReferences()) {
        if (allowedOutside.contains(reference.symbol)) {
            allowedSeen.insert(reference.symbol);
        } else {
            // A function of the same source may be named by its section and place.
            EXPECT_FALSE(outside.contains(reference.symbol) || reference.symbol.starts_with(".text"))
                << reference.symbol << " in " << reference.object;
        }
    }
    EXPECT_TRUE(allowedSeen.contains("std::chrono::_V2::steady_clock::now()")) << "no reference was read";
}

}  // namespace
}  // namespace korva::test
