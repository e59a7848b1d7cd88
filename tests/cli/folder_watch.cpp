#include "tests/cli/folder_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace korva::test {

FolderWatch::FolderWatch(const std::string& folder) : watch(inotify_init1(IN_CLOEXEC)) {
    if (inotify_add_watch(watch, folder.c_str(), IN_CREATE) < 0) {
        throw std::runtime_error(folder + ": can't be watched");
    }
}

FolderWatch::~FolderWatch() {
    close(watch);
}

std::string FolderWatch::waitForName() {
    pollfd waiting = {watch, POLLIN, 0};
    alignas(inotify_event) std::array<char, sizeof(inotify_event) + 256> bytes;
    if (poll(&waiting, 1, 60'000) <= 0 || read(watch, bytes.data(), bytes.size()) <= 0) {
        return {};
    }
    return bytes.data() + offsetof(inotify_event, name);
}

}  // namespace korva::test
