#include "korva/process/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <span>

#include "korva/errors.h"
#include "korva/interruption.h"

namespace korva::tool {
namespace {

std::string temporaryFolder() {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    if (error) {
        fail("the temporary folder is unusable: {}; set TMPDIR to one that can be written", error.message());
    }
    return folder.string();
}

void writeAll(int file, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            fail("cannot keep the input in the temporary folder '{}': {}", temporaryFolder(),
                 systemMessage(errno));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written < 0 ? 0 : written));
    }
}

/// Reads `source` to its end.
void copyWhole(const std::string& path, int source, int destination) {
    std::array<char, 1 << 16> block;
    while (true) {
        waitUntilReady(source, Direction::read);
        const ssize_t count = read(source, block.data(), block.size());
        if (count == 0) {
            return;
        }
        if (count > 0) {
            writeAll(destination, std::span(block).first(static_cast<std::size_t>(count)));
        } else if (errno != EINTR && errno != EAGAIN) {
            fail("cannot read '{}': {}", path, systemMessage(errno));
        }
    }
}

struct stat statusOf(int file) {
    struct stat status {};
    fstat(file, &status);
    return status;
}

/// Puts a copy that can seek in the place of `file`.
void spool(const std::string& path, int& file) {
    const int copy = openUnnamedFile();
    try {
        copyWhole(path, file, copy);
    } catch (...) {
        close(copy);
        throw;
    }
    close(file);
    file = copy;
}

void makeReadable(const std::string& path, int& file) {
    const mode_t mode = statusOf(file).st_mode;
    if (S_ISDIR(mode)) {
        fail("cannot read '{}': it is a folder", path);
    }
    if (!S_ISREG(mode)) {
        spool(path, file);
    }
    if (statusOf(file).st_size == 0) {
        fail("cannot read '{}': it is empty", path);
    }
    lseek(file, 0, SEEK_SET);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    // A pipe that nobody writes yet is waited for where a signal can end it, not here.
    : file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
    if (file < 0) {
        fail("cannot read '{}': {}", path, systemMessage(errno));
    }
    try {
        makeReadable(path, file);
    } catch (...) {
        close(file);
        throw;
    }
}

InputFile::~InputFile() {
    close(file);
}

int openUnnamedFile() {
    std::string name = temporaryFolder() + "/korva-XXXXXX";
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0) {
        fail("cannot write in the temporary folder '{}': {}; set TMPDIR to one that can be written",
             temporaryFolder(), systemMessage(errno));
    }
    unlink(name.c_str());
    return file;
}

}  // namespace korva::tool
