// An input, opened so that a sound file's reader can go back and forth in it.
#pragma once

#include <string>

namespace korva::tool {

/// The descriptor of a file that is there, not empty and no folder. What can't seek, a pipe or a device, is
/// first read to its end into a file without a name in the temporary folder.  [blocks]
class InputFile {
public:
    /// Throws `ToolError` with what is wrong with `path`, `Interrupted` while it waits for a pipe.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    [[nodiscard]] int descriptor() const { return file; }

private:
    int file;
};

/// A new file in the temporary folder that has no name any more, so that nothing is left of it. Throws.
[[nodiscard]] int openUnnamedFile();

}  // namespace korva::tool
