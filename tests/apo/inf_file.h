// An INF file as Windows reads it: sections of lines, with the strings that they name put in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace korva::test {

/// A line that can't be read, or isn't what its section wants.
class InfError : public std::runtime_error {
public:
    InfError(std::size_t line, const std::string& expected)
        : std::runtime_error("line " + std::to_string(line) + ": expected " + expected) {}
};

/// `key = field, field`, or fields alone. Without quotes, comments, and the blanks around them.
struct InfLine {
    std::size_t number = 0;
    std::string key;
    std::vector<std::string> fields;

    /// A field; empty where the line has fewer.
    [[nodiscard]] std::string field(std::size_t index) const {
        return index < fields.size() ? fields[index] : std::string();
    }
};

/// A value of the registry that a line asks for.
struct InfRegistryValue {
    std::size_t line = 0;
    std::string root;
    std::string key;
    std::string name;
    std::uint32_t flags = 0;  ///< One of `inf_flag`.
    std::vector<std::string> values;

    /// What would be stored. Throws where the values aren't of the kind that the flags say.
    [[nodiscard]] platform::RegistryValue stored() const;
};

/// Writes values as an installation does, with `place` for the root that their lines leave open.
[[nodiscard]] platform::RegistryResult writeValues(const platform::RegistryKey& place,
                                                   const std::vector<InfRegistryValue>& values);

namespace inf_flag {
inline constexpr std::uint32_t text = 0;
inline constexpr std::uint32_t keyOnly = 0x10;
inline constexpr std::uint32_t texts = 0x10000;
inline constexpr std::uint32_t number = 0x10001;
inline constexpr std::uint32_t path = 0x20000;
}  // namespace inf_flag

/// Names are compared without regard to case: the same in small letters.
[[nodiscard]] std::string smallLetters(std::string_view name);

/// Stricter than Windows, which joins sections of one name and takes lone line feeds: what is no slip there
/// is one in files that a script makes.
class InfFile {
public:
    /// Reads ASCII, or UTF-16 that begins with its mark; each line ends in two characters. Throws InfError.
    explicit InfFile(std::string_view bytes);
    [[nodiscard]] static InfFile at(const std::string& path);

    [[nodiscard]] bool has(std::string_view section) const;
    /// Throws if there is none.
    [[nodiscard]] const std::vector<InfLine>& section(std::string_view name) const;
    /// As they are written, sorted.
    [[nodiscard]] std::vector<std::string> sectionNames() const;

    /// All fields of the lines of a section that have this key.
    [[nodiscard]] std::vector<std::string> fields(std::string_view name, std::string_view key) const;
    /// The first of them; empty without any.
    [[nodiscard]] std::string field(std::string_view section, std::string_view key) const;
    /// The lines of a section of registry values. Throws where one isn't any.
    [[nodiscard]] std::vector<InfRegistryValue> registryValues(std::string_view name) const;
    /// Those of all sections that the `AddReg` of a section names, in their order.
    [[nodiscard]] std::vector<InfRegistryValue> addedValues(std::string_view section) const;

    /// The keys of strings that no line names.
    [[nodiscard]] const std::set<std::string>& unusedStrings() const noexcept { return unused; }

private:
    struct Section {
        std::string name;
        std::vector<InfLine> lines;
    };

    void read(std::string_view text);
    void resolveStrings();
    [[nodiscard]] std::string resolved(const std::string& text, std::size_t line);

    std::map<std::string, Section> sections;     ///< By their names in small letters.
    std::map<std::string, std::string> strings;  ///< Likewise.
    std::set<std::string> unused;
};

}  // namespace korva::test
