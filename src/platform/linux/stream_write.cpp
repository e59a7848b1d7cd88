#include "platform/stream_write.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace korva::platform {
namespace {

/// While it lives, a write to a pipe that nobody reads fails and does no more: the signal that would end the
/// process stays away from this thread.
class NoPipeSignal {
public:
    NoPipeSignal() noexcept {
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        sigset_t waiting;
        sigpending(&waiting);
        wasWaiting = sigismember(&waiting, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipeSignal, &maskBefore);
    }
    ~NoPipeSignal() { pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr); }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

    /// Takes the signal that a write has brought about. One that somebody else sent is heard in the end.
    void takeSignal() const noexcept {
        const timespec noTime{};
        while (!wasWaiting && sigtimedwait(&pipeSignal, nullptr, &noTime) < 0 && errno == EINTR) {
        }
    }

private:
    sigset_t pipeSignal{};
    sigset_t maskBefore{};
    bool wasWaiting = false;
};

class DescriptorWriter final : public StreamWriter {
public:
    explicit DescriptorWriter(StreamHandle written) noexcept : stream(written) {
        if (stream >= 0) {
            fcntl(stream, F_SETFL, fcntl(stream, F_GETFL) | O_NONBLOCK);
        }
    }
    ~DescriptorWriter() override {
        if (stream >= 0) {
            close(stream);
        }
    }
    DescriptorWriter(const DescriptorWriter&) = delete;
    DescriptorWriter& operator=(const DescriptorWriter&) = delete;

    [[nodiscard]] bool isOpen() const noexcept override { return stream >= 0; }

    [[nodiscard]] StreamWrite write(std::span<const std::byte> data,
                                    std::span<const WaitHandle> stops) noexcept override {
        const NoPipeSignal guard;
        const int error = putAll(data, stops);
        if (error == EPIPE) {
            guard.takeSignal();
        }
        if (error != 0) {
            return {.error = static_cast<std::uint32_t>(error)};
        }
        return {.isDone = true, .byteCount = data.size()};
    }

private:
    /// Gives 0, or the error that ends it all.
    int putAll(std::span<const std::byte> rest, std::span<const WaitHandle> stops) const noexcept {
        int error = put(rest);
        // A stop counts only for what the stream still hasn't taken when it is looked at.
        while (error == 0 && !rest.empty()) {
            const int stopped = waitUntilWritable(stops);
            error = put(rest);
            if (error == 0 && !rest.empty()) {
                error = stopped;
            }
        }
        return error;
    }

    /// Writes what the stream takes at once, by the same results.
    int put(std::span<const std::byte>& rest) const noexcept {
        while (!rest.empty()) {
            const ssize_t count = ::write(stream, rest.data(), rest.size());
            if (count > 0) {
                rest = rest.subspan(static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                return count < 0 && errno != EAGAIN ? errno : 0;
            }
        }
        return 0;
    }

    /// Gives 0, ECANCELED if it was stopped, or why it can't wait.
    int waitUntilWritable(std::span<const WaitHandle> stops) const noexcept {
        std::array<pollfd, maxWaitHandles> polled;
        polled[0] = {.fd = stream, .events = POLLOUT, .revents = 0};
        for (std::size_t i = 0; i < stops.size(); ++i) {
            polled[i + 1] = {.fd = stops[i], .events = POLLIN, .revents = 0};
        }
        while (poll(polled.data(), stops.size() + 1, -1) < 0) {
            if (errno != EINTR) {
                return errno;
            }
        }
        for (std::size_t i = 1; i <= stops.size(); ++i) {
            if (polled[i].revents != 0) {
                return ECANCELED;
            }
        }
        return 0;
    }

    const StreamHandle stream;
};

}  // namespace

std::unique_ptr<StreamWriter> openStreamWriter(StreamHandle stream) {
    return std::make_unique<DescriptorWriter>(stream);
}

}  // namespace korva::platform
