#include "tests/apo/inf_faults.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace korva::test {
namespace {

/// Follows a file's references from its devices on, and keeps what was met.
class Reader {
public:
    explicit Reader(const InfFile& file) : inf(file) {}

    std::vector<std::string> faults() {
        for (const char* const name : {"Version", "Manufacturer", "Strings"}) {
            static_cast<void>(lines(name));
        }
        followManufacturers();
        followFiles();
        followSignatures();
        for (const std::string& name : inf.sectionNames()) {
            check(met.contains(smallLetters(name)), "nobody names the section " + name);
        }
        for (const std::string& name : inf.unusedStrings()) {
            check(false, "nobody names the string " + name);
        }
        return found;
    }

private:
    void check(bool holds, const std::string& fault) {
        if (!holds) {
            found.push_back(fault);
        }
    }

    const std::vector<InfLine>& lines(const std::string& name) {
        static const std::vector<InfLine> none;
        check(inf.has(name), "no section " + name);
        met.insert(smallLetters(name));
        return inf.has(name) ? inf.section(name) : none;
    }

    void followManufacturers() {
        for (const InfLine& line : lines("Manufacturer")) {
            check(line.fields.size() > 1, "a manufacturer without a system");
            for (std::size_t i = 1; i < line.fields.size(); ++i) {
                for (const InfLine& device : lines(line.fields[0] + "." + line.fields[i])) {
                    check(device.fields.size() == 2, "a device without an identifier");
                    followInstallation(device.field(0));
                }
            }
        }
    }

    void followInstallation(const std::string& name) {
        for (const InfLine& line : lines(name)) {
            check(line.key == "CopyFiles" || line.key == "AddReg", "no such directive: " + line.key);
            for (const std::string& section : line.fields) {
                if (line.key == "CopyFiles") {
                    copied.insert(section);
                    for (const InfLine& file : lines(section)) {
                        files.insert(file.field(0));
                    }
                }
            }
        }
        followValues(name);
        if (inf.has(name + ".Services")) {
            static_cast<void>(lines(name + ".Services"));
        }
        followThird(name + ".Components", "AddComponent");
        for (const std::string& section : followThird(name + ".Interfaces", "AddInterface")) {
            followValues(section);
        }
    }

    /// The sections that the directives of an optional section name in their third field.
    std::set<std::string> followThird(const std::string& name, std::string_view directive) {
        std::set<std::string> named;
        if (inf.has(name)) {
            for (const InfLine& line : lines(name)) {
                check(line.key == directive, "no such directive: " + line.key);
                static_cast<void>(lines(line.field(2)));
                named.insert(line.field(2));
            }
        }
        return named;
    }

    void followValues(const std::string& name) {
        if (!inf.has(name)) {
            return;
        }
        std::set<std::string> places;
        for (const std::string& section : inf.fields(name, "AddReg")) {
            static_cast<void>(lines(section));
            if (inf.has(section + ".security")) {
                static_cast<void>(lines(section + ".security"));
            }
            for (const InfRegistryValue& value : valuesIn(section)) {
                const std::string place = smallLetters(value.root + "\\" + value.key + " @" + value.name);
                check(places.insert(place).second, "twice: " + place);
            }
        }
    }

    std::vector<InfRegistryValue> valuesIn(const std::string& section) {
        try {
            return inf.has(section) ? inf.registryValues(section) : std::vector<InfRegistryValue>();
        } catch (const InfError& error) {
            check(false, error.what());
            return {};
        }
    }

    void followFiles() {
        if (copied.empty()) {
            return;
        }
        for (const std::string& section : copied) {
            check(!inf.has("DestinationDirs") || !inf.fields("DestinationDirs", section).empty(),
                  "no folder for " + section);
        }
        static_cast<void>(lines("DestinationDirs"));
        std::set<std::string> disks;
        for (const InfLine& line : lines("SourceDisksNames")) {
            disks.insert(line.key);
        }
        std::set<std::string> sources;
        for (const InfLine& line : lines("SourceDisksFiles")) {
            check(disks.contains(line.field(0)), "no disk for " + line.key);
            sources.insert(line.key);
        }
        check(sources == files, "other files are on the disk than are copied");
    }

    void followSignatures() {
        if (inf.has("SignatureAttributes")) {
            for (const InfLine& line : lines("SignatureAttributes")) {
                static_cast<void>(lines(line.field(0)));
                check(files.contains(line.key), "a signature of a file that isn't copied: " + line.key);
            }
        }
    }

    const InfFile& inf;
    std::vector<std::string> found;
    std::set<std::string> met;
    std::set<std::string> copied;
    std::set<std::string> files;
};

}  // namespace

std::vector<std::string> faultsOf(const InfFile& inf) {
    return Reader(inf).faults();
}

}  // namespace korva::test
