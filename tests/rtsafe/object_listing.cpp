#include "tests/rtsafe/object_listing.h"

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace korva::test {
namespace {

std::vector<std::string> linesOf(const std::string& options, const std::string& library) {
    const std::string command = KORVA_OBJDUMP " -C " + options + " '" + library + "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    if (pipe == nullptr) {
        throw std::runtime_error("can't run " + command);
    }
    std::string text;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe.get())) {
        text.append(part.data(), count);
    }
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Whether the line begins an object's listing; then `object` is its name.
bool namesObject(const std::string& line, std::string& object) {
    const std::size_t end = line.find(":     file format");
    if (end == std::string::npos) {
        return false;
    }
    object = line.substr(0, end);
    return true;
}

/// What follows the flags of a line in a symbol table: section, tab, size, perhaps a visibility, name.
struct Symbol {
    char kind;
    std::string section;
    std::string name;
};

bool readSymbol(const std::string& line, Symbol& symbol) {
    constexpr std::size_t flags = 17;  // after 16 digits and a blank
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos || tab < flags + 8) {
        return false;
    }
    symbol.kind = line[flags + 6];
    symbol.section = line.substr(flags + 8, tab - flags - 8);
    std::istringstream rest(line.substr(tab + 1));
    std::string size;
    rest >> size >> std::ws;
    std::getline(rest, symbol.name);
    constexpr const char hidden[] = ".hidden ";
    if (symbol.name.starts_with(hidden)) {
        symbol.name.erase(0, sizeof(hidden) - 1);
    }
    return true;
}

std::string withoutOffset(const std::string& target) {
    const std::size_t sign = target.find_last_of("+-");
    const bool offset = sign != std::string::npos && target.compare(sign + 1, 2, "0x") == 0;
    return offset ? target.substr(0, sign) : target;
}

}  // namespace

std::vector<ObjectFunction> functionsOf(const std::string& library) {
    std::vector<ObjectFunction> functions;
    std::string object;
    for (const std::string& line : linesOf("-t", library)) {
        Symbol symbol{};
        if (!namesObject(line, object) && readSymbol(line, symbol) && symbol.kind == 'F') {
            functions.push_back({object, symbol.section, symbol.name});
        }
    }
    return functions;
}

std::vector<ObjectReference> undefinedSymbolsOf(const std::string& library) {
    std::vector<ObjectReference> symbols;
    std::string object;
    for (const std::string& line : linesOf("-t", library)) {
        Symbol symbol{};
        if (!namesObject(line, object) && readSymbol(line, symbol) && symbol.section == "*UND*") {
            symbols.push_back({object, symbol.name});
        }
    }
    return symbols;
}

std::vector<ObjectReference> referencesFrom(const std::string& library, const std::string& section) {
    std::vector<ObjectReference> references;
    std::string object;
    bool inSection = false;
    for (const std::string& line : linesOf("-r -j " + section, library)) {
        if (namesObject(line, object)) {
            inSection = false;
        } else if (line.starts_with("RELOCATION RECORDS FOR")) {
            inSection = line.find("[" + section + "]") != std::string::npos;
        } else if (const std::size_t type = line.find(" R_X86_64_"); inSection && type != std::string::npos) {
            const std::size_t target = line.find_first_not_of(' ', line.find(' ', type + 1));
            references.push_back({object, withoutOffset(line.substr(target))});
        }
    }
    return references;
}

}  // namespace korva::test
