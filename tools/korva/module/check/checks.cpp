#include "korva/module/check/checks.h"

#include <array>

namespace korva::tool {
namespace {

constexpr std::array checks = {
    Check{"load", "is a library that this system loads", Need::nothing, checkLoad},
    Check{"unload", "leaves nothing behind when it is unloaded", Need::library, checkUnload},
    Check{"exports", "has the functions that the host looks up", Need::library, checkExports},
    Check{"create", "makes instances, and copies what it keeps of the text", Need::library, checkCreate},
    Check{"table", "has a function at every entry of the table", Need::instance, checkTable},
    Check{"formats", "answers format tests and leaves sane records", Need::instance, checkFormats},
    Check{"pairs", "lives again and again, at any rate, and keeps nothing of it", Need::instance, checkPairs},
    Check{"parameters", "takes any parameter of any size while it processes", Need::instance,
          checkParameters},
    Check{"data", "counts the bytes that it gives, and gives what it serves only", Need::instance, checkData},
    Check{"cuts", "gives the same sound however it is cut into blocks", Need::instance, checkCuts},
    Check{"repeatable", "gives the same sound again after it was cleared", Need::instance, checkRepeatable},
    Check{"instances", "has instances that don't disturb each other", Need::instance, checkInstances},
    Check{"signals", "bears any sound, and is well again afterwards", Need::instance, checkSignals},
    Check{"bounds", "touches nothing outside the planes", Need::instance, checkBounds},
    Check{"unused-planes", "leaves planes silent that no side has a channel on", Need::instance,
          checkUnusedPlanes},
    Check{"realtime", "neither allocates nor locks nor calls the system on the audio thread", Need::instance,
          checkRealtime},
    Check{"speed", "is as fast with any sound", Need::instance, checkSpeed},
};

constexpr std::array<std::string_view, 2> foundations = {"load", "create"};

}  // namespace

std::span<const Check> allChecks() {
    return checks;
}

std::span<const std::string_view> neededChecks(Need need) {
    return std::span(foundations).first(static_cast<std::size_t>(need));
}

}  // namespace korva::tool
