#include "korva/doctor/registry_check.h"

#include <fmt/core.h>

#include <filesystem>

#include "korva/doctor/command_word.h"
#include "korva/file_path.h"

namespace korva::tool {
namespace {

/// The journal beside the file grows to that before it is brought into the file: a thousand pages of 4 KiB.
constexpr std::uint64_t leastRoom = 4096 * 1024;

Finding fault(std::string what, std::string cause, std::string remedy) {
    return {Subject::registry, Severity::fault, std::move(what), std::move(cause), std::move(remedy)};
}

Finding missingFile(const std::string& place) {
    return fault(
        fmt::format("There is no registry '{}'.", place),
        "Nothing has been registered and no endpoint made for this user, or KORVA_REGISTRY names another "
        "file than the one that was used for it.",
        "korva register");
}

Finding damagedFile(const std::string& place, const std::string& damage) {
    return fault(
        fmt::format("The registry '{}' is damaged.", place),
        fmt::format("The check of the file says: {}.", damage),
        "Put a copy of the file in its place, or move it and the files beside it away and register and "
        "install anew.");
}

std::string folderOf(const std::string& place) {
    return textOfPath(pathOfText(place).parent_path());
}

}  // namespace

Findings registryFindings(const platform::RegistryHealth& health, const std::string& place) {
    if (!health.isThere) {
        return {missingFile(place)};
    }
    Findings findings;
    if (!health.damage.empty()) {
        findings.push_back(damagedFile(place, health.damage));
    }
    if (!health.isWritable) {
        findings.push_back(
            fault(fmt::format("The registry '{}' can't be written.", place),
                  "The file's rights, or its disk's, don't allow it to this user, so no object can "
                  "show itself and no preset be installed.",
                  "chmod u+rw " + commandWord(place)));
    }
    if (!health.isFolderWritable) {
        findings.push_back(
            fault(fmt::format("No file can be made beside the registry '{}'.", place),
                  "The folder's rights, or its disk's, don't allow it to this user, and the journal "
                  "and the sign for other processes lie there.",
                  "chmod u+rwx " + commandWord(folderOf(place))));
    }
    if (health.freeBytes < leastRoom) {
        findings.push_back(fault(fmt::format("The disk of the registry '{}' is nearly full.", place),
                                 fmt::format("{} bytes are free, and the journal of changes takes up to {}.",
                                             health.freeBytes, leastRoom),
                                 fmt::format("Make room on the disk of {}.", folderOf(place))));
    }
    return findings;
}

}  // namespace korva::tool
