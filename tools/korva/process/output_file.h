// An output that appears whole or not at all.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace korva::tool {

/// Takes the bytes into a hidden file in the output's folder, which takes the output's name at the end, or
/// goes without a trace. An output that is there and no regular file (a device, a pipe) gets the bytes at the
/// end, from a file without a name in the temporary folder. A link is followed, and stays.
class OutputFile {
public:
    /// Throws `ToolError` when `path` can't be written: a folder, read-only, in no folder.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Each of these remembers the first error, and gives less than asked or a negative number.
    std::size_t write(const void* bytes, std::size_t count);
    std::size_t read(void* bytes, std::size_t count);
    std::int64_t seek(std::int64_t offset, int whence);
    std::int64_t tell();
    std::int64_t size();

    /// Whether the bytes go where standard output goes.
    [[nodiscard]] bool goesToStandardOutput() const { return toStandardOutput; }

    /// Throws if anything failed so far.
    void check() const;

    /// Puts the output in its place. Throws if that fails, or if a signal came: then nothing has changed,
    /// except that a device or pipe may have got some of the bytes.  [blocks]
    void commit();

private:
    void openForExisting(const struct stat& existing);
    void takeOver(const struct stat& existing);
    void openForSpecial(const struct stat& existing);
    void createBeside(const std::string& output);
    void flush();
    void copyToSpecial();
    void noteError();
    [[noreturn]] void failBecause(int errorNumber) const;

    std::string path;       ///< As the user gave it.
    std::string target;     ///< What gets the temporary file's name; empty for a device or pipe.
    std::string temporary;  ///< Empty once there is none.
    bool toStandardOutput = false;
    std::FILE* file = nullptr;
    int firstError = 0;
};

}  // namespace korva::tool
