#include "korva/process/linked_modules.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "korva/errors.h"

namespace korva::tool {
namespace {

namespace fs = std::filesystem;

fs::path makeFolder() {
    std::string name = (fs::temp_directory_path() / "korva-modules-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        fail("can't make the folder '{}': {}", name, systemMessage(errno));
    }
    return name;
}

}  // namespace

LinkedModules::LinkedModules(const fs::path& library, const fs::path& modules)
    : libraryName(library.filename()), folder(makeFolder()) {
    try {
        linkAll(library, modules);
    } catch (const fs::filesystem_error& error) {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        fail("can't link the modules in '{}' to '{}': {}", modules.string(), folder.string(),
             error.code().message());
    }
}

// A library of the same name among the modules isn't the one that is to be loaded.
void LinkedModules::linkAll(const fs::path& library, const fs::path& modules) const {
    fs::create_symlink(library, folder / libraryName);
    for (const fs::directory_entry& entry : fs::directory_iterator(modules)) {
        const fs::path name = entry.path().filename();
        if (name != libraryName) {
            fs::create_symlink(entry.path(), folder / name);
        }
    }
}

// Links only: what they lead to stays.
LinkedModules::~LinkedModules() {
    std::error_code error;
    fs::remove_all(folder, error);
    if (error) {
        printNotice(fmt::format("can't remove the folder '{}': {}", folder.string(), error.message()));
    }
}

}  // namespace korva::tool
