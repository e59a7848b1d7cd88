#include "bench/support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace korva::bench {

TemporaryFolder::TemporaryFolder()
    : path((std::filesystem::temp_directory_path() / "korva_bench_XXXXXX").string()) {
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no folder for a benchmark");
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

}  // namespace korva::bench
