#include "korva/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "korva/errors.h"
#include "korva/interruption.h"

namespace korva::tool {
namespace {

bool isStandardInput(const std::string& path) {
    return path == "-";
}

/// A descriptor that this object closes, unless it is standard input's.
class Source {
public:
    explicit Source(const std::string& path)
        // A pipe that nobody writes yet is waited for where a signal can end it, not here.
        : descriptor(isStandardInput(path)
                         ? STDIN_FILENO
                         : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
        if (descriptor < 0) {
            fail("cannot read '{}': {}", path, systemMessage(errno));
        }
    }
    ~Source() {
        if (descriptor != STDIN_FILENO) {
            close(descriptor);
        }
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    [[nodiscard]] bool isFolder() const {
        struct stat status {};
        return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    }

    const int descriptor;
};

/// As much as can be had at once; false at the end.
bool readMore(int source, const std::string& name, std::string& bytes) {
    std::array<char, 1 << 16> block;
    waitUntilReady(source, Direction::read);
    const ssize_t count = read(source, block.data(), block.size());
    if (count > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(count));
    } else if (count < 0 && errno != EINTR && errno != EAGAIN) {
        fail("cannot read '{}': {}", name, systemMessage(errno));
    }
    return count != 0;
}

}  // namespace

std::string readWholeFile(const std::string& path, std::size_t maxBytes) {
    const std::string name = inputName(path);
    const Source source(path);
    if (source.isFolder()) {
        fail("cannot read '{}': it is a folder", name);
    }
    std::string bytes;
    while (readMore(source.descriptor, name, bytes)) {
        if (bytes.size() > maxBytes) {
            fail("cannot read '{}': it is larger than {} MiB", name, maxBytes >> 20);
        }
    }
    if (bytes.empty()) {
        fail("cannot read '{}': it is empty", name);
    }
    return bytes;
}

std::string inputName(const std::string& path) {
    return isStandardInput(path) ? "standard input" : path;
}

}  // namespace korva::tool
