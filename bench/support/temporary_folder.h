// A place for a benchmark's files.
#pragma once

#include <string>

namespace korva::bench {

/// A folder of its own, which goes with this object and all that is in it.
class TemporaryFolder {
public:
    /// Raises std::runtime_error where there can be none.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const { return path + "/" + name; }

private:
    std::string path;
};

}  // namespace korva::bench
