#include "platform/stream_write.h"

#include <windows.h>

#include <algorithm>
#include <array>

namespace korva::platform {
namespace {

class HandleWriter final : public StreamWriter {
public:
    explicit HandleWriter(StreamHandle written) : stream(written) {}
    ~HandleWriter() override {
        if (isOpen()) {
            CloseHandle(stream);
        }
    }
    HandleWriter(const HandleWriter&) = delete;
    HandleWriter& operator=(const HandleWriter&) = delete;

    [[nodiscard]] bool isOpen() const noexcept override {
        return stream != nullptr && stream != INVALID_HANDLE_VALUE;
    }

    [[nodiscard]] StreamWrite write(std::span<const std::byte> data,
                                    std::span<const WaitHandle> stops) noexcept override {
        OVERLAPPED request{};
        request.hEvent = completion.handle();
        completion.reset();
        if (!WriteFile(stream, data.data(), static_cast<DWORD>(data.size()), nullptr, &request) &&
            GetLastError() != ERROR_IO_PENDING) {
            return {.error = GetLastError()};
        }
        return isCompletedBefore(stops) ? resultOf(request) : cancelled(request);
    }

private:
    /// False if one of the stops came first, or they can't be waited for.
    bool isCompletedBefore(std::span<const WaitHandle> stops) const noexcept {
        std::array<HANDLE, maxWaitHandles> handles;
        handles[0] = completion.handle();
        std::copy(stops.begin(), stops.end(), handles.begin() + 1);
        const auto count = static_cast<DWORD>(stops.size() + 1);
        return WaitForMultipleObjects(count, handles.data(), FALSE, INFINITE) == WAIT_OBJECT_0;
    }

    /// The system may write from `data` and to `request` until the write has ended, so nobody leaves before.
    StreamWrite cancelled(OVERLAPPED& request) const noexcept {
        const DWORD cancelError = CancelIoEx(stream, &request) ? DWORD{ERROR_SUCCESS} : GetLastError();
        WaitForSingleObject(completion.handle(), INFINITE);
        const StreamWrite ended = resultOf(request);
        return {.error = ended.isDone ? cancelError : ended.error};
    }

    StreamWrite resultOf(OVERLAPPED& request) const noexcept {
        DWORD byteCount = 0;
        if (!GetOverlappedResult(stream, &request, &byteCount, FALSE)) {
            return {.error = GetLastError()};
        }
        return {.isDone = true, .byteCount = byteCount};
    }

    const StreamHandle stream;
    Event completion;
};

}  // namespace

std::unique_ptr<StreamWriter> openStreamWriter(StreamHandle stream) {
    return std::make_unique<HandleWriter>(stream);
}

}  // namespace korva::platform
