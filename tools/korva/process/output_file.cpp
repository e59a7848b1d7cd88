#include "korva/process/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <random>
#include <span>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/process/input_file.h"

namespace korva::tool {
namespace {

constexpr std::size_t streamBuffer = 1 << 18;

/// What a chain of links ends at, there or not.
std::filesystem::path followLinks(std::filesystem::path path) {
    std::error_code error;
    for (int link = 0; link < 40 && std::filesystem::is_symlink(path, error); ++link) {
        const auto next = std::filesystem::read_symlink(path, error);
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
}

std::filesystem::path folderOf(const std::filesystem::path& path) {
    const auto folder = path.parent_path();
    return folder.empty() ? std::filesystem::path(".") : folder;
}

/// A name that nobody else takes, short whatever the output's name is.
std::string hiddenName() {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name = ".korva-";
    for (int letter = 0; letter < 12; ++letter) {
        name += letters[random() % letters.size()];
    }
    return name;
}

/// Opens as a write would, and changes nothing: the one way to learn whether it may.
int openingError(const std::string& path) {
    const int opened = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (opened < 0) {
        return errno;
    }
    close(opened);
    return 0;
}

/// Owner and permissions of the file that is about to be replaced. Only the system's administrator may give
/// files away; for others the owner changes to who wrote it.
void copyOwnership(int file, const struct stat& replaced) {
    if (fchown(file, replaced.st_uid, replaced.st_gid) != 0) {
        errno = 0;
    }
    fchmod(file, replaced.st_mode & 0777);
}

/// Whether a file is the one that standard output goes to, so that both would be mixed. Devices don't count:
/// what goes to one twice goes to the same place.
bool isStandardOutput(const struct stat& file) {
    struct stat output {};
    return !S_ISCHR(file.st_mode) && fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
           output.st_ino == file.st_ino;
}

class Descriptor {
public:
    explicit Descriptor(int opened) : descriptor(opened) {}
    ~Descriptor() {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int descriptor;
};

/// 0, or the error. Small pieces: a pipe that is ready takes one without waiting.
int writeInPieces(int destination, std::span<const char> bytes) {
    constexpr std::size_t piece = 4096;
    while (!bytes.empty()) {
        waitUntilReady(destination, Direction::write);
        const ssize_t written = write(destination, bytes.data(), std::min(piece, bytes.size()));
        if (written < 0 && errno != EINTR && errno != EAGAIN) {
            return errno;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written < 0 ? 0 : written));
    }
    return 0;
}

}  // namespace

OutputFile::OutputFile(const std::string& outputPath) : path(outputPath) {
    if (path.empty()) {
        fail("the output's name is empty");
    }
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        openForExisting(status);
    } else if (errno == ENOENT) {
        target = followLinks(path).string();
        createBeside(target);
    } else {
        failBecause(errno);
    }
    std::setvbuf(file, nullptr, _IOFBF, streamBuffer);
}

void OutputFile::openForExisting(const struct stat& existing) {
    if (S_ISDIR(existing.st_mode)) {
        fail("cannot write '{}': it is a folder; name a file in it", path);
    }
    toStandardOutput = isStandardOutput(existing);
    if (!toStandardOutput && S_ISREG(existing.st_mode)) {
        target = followLinks(path).string();
        takeOver(existing);
    } else {
        openForSpecial(existing);
    }
}

/// The temporary file in the place of one that exists.
void OutputFile::takeOver(const struct stat& existing) {
    if (const int error = openingError(target); error != 0) {
        failBecause(error);
    }
    createBeside(target);
    copyOwnership(fileno(file), existing);
}

/// Not opened yet: to open a pipe is to wait for its reader.
void OutputFile::openForSpecial(const struct stat& existing) {
    if (S_ISBLK(existing.st_mode)) {
        fail("cannot write '{}': it is a disk", path);
    }
    if (!toStandardOutput && access(path.c_str(), W_OK) != 0) {
        failBecause(errno);
    }
    file = fdopen(openUnnamedFile(), "w+");
    if (file == nullptr) {
        failBecause(errno);
    }
}

void OutputFile::createBeside(const std::string& output) {
    const std::filesystem::path folder = folderOf(output);
    int opened = -1;
    do {
        temporary = (folder / hiddenName()).string();
        // The mode of any new file: the user's mask takes away from it.
        opened = open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (opened < 0 && errno == EEXIST);
    if (opened < 0 && errno == ENOENT) {
        fail("cannot write '{}': there is no folder '{}'; create it first", path, folder.string());
    }
    if (opened < 0) {
        fail("cannot write '{}': no new file in the folder '{}': {}", path, folder.string(),
             systemMessage(errno));
    }
    file = fdopen(opened, "w+");
    if (file == nullptr) {
        const int error = errno;
        unlink(temporary.c_str());
        failBecause(error);
    }
}

OutputFile::~OutputFile() {
    if (file != nullptr) {
        std::fclose(file);
    }
    if (!temporary.empty()) {
        unlink(temporary.c_str());
    }
}

void OutputFile::noteError() {
    if (firstError == 0) {
        firstError = errno != 0 ? errno : EIO;
    }
}

std::size_t OutputFile::write(const void* bytes, std::size_t count) {
    const std::size_t written = std::fwrite(bytes, 1, count, file);
    if (written < count) {
        noteError();
    }
    return written;
}

std::size_t OutputFile::read(void* bytes, std::size_t count) {
    return std::fread(bytes, 1, count, file);
}

std::int64_t OutputFile::seek(std::int64_t offset, int whence) {
    if (fseeko(file, offset, whence) != 0) {
        noteError();
        return -1;
    }
    return tell();
}

std::int64_t OutputFile::tell() {
    return ftello(file);
}

std::int64_t OutputFile::size() {
    struct stat status {};
    if (std::fflush(file) != 0 || fstat(fileno(file), &status) != 0) {
        noteError();
        return -1;
    }
    return status.st_size;
}

void OutputFile::check() const {
    if (firstError != 0) {
        failBecause(firstError);
    }
}

void OutputFile::failBecause(int errorNumber) const {
    fail("cannot write '{}': {}", path, systemMessage(errorNumber));
}

/// On the disk, as far as the file system can tell: some errors show only here. A file system without this
/// says that it is invalid.
void OutputFile::flush() {
    if (std::fflush(file) != 0 || (fsync(fileno(file)) != 0 && errno != EINVAL && errno != EINTR)) {
        noteError();
    }
    check();
}

void OutputFile::commit() {
    flush();
    throwIfInterrupted();
    if (target.empty()) {
        copyToSpecial();
        return;
    }
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        failBecause(errno);
    }
    temporary.clear();
}

void OutputFile::copyToSpecial() {
    const Descriptor destination(toStandardOutput ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)
                                                  : open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (destination.descriptor < 0) {
        const int error = errno;
        throwIfInterrupted();  // opening a pipe waits for its reader
        failBecause(error);
    }
    if (std::fseek(file, 0, SEEK_SET) != 0) {
        failBecause(errno);
    }
    std::array<char, 1 << 16> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file)) {
        if (const int error = writeInPieces(destination.descriptor, std::span(block).first(count));
            error != 0) {
            failBecause(error);
        }
    }
    if (std::ferror(file) != 0) {
        failBecause(EIO);
    }
}

}  // namespace korva::tool
