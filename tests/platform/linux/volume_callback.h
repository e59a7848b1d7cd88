// Somebody who listens to a volume.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/published/device_interfaces.h"
#include "platform/published/results.h"
#include "platform/reference_count.h"

namespace korva::platform {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Notes what it is told, and then does what a test says. It is the test's own: references are only counted.
class VolumeCallback final : public IAudioEndpointVolumeCallback {
public:
    using Data = AUDIO_VOLUME_NOTIFICATION_DATA;

    explicit VolumeCallback(std::function<void()> action = nullptr) : then(std::move(action)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return published::noInterface;
    }
    ReferenceCount STDMETHODCALLTYPE AddRef() override { return ++references; }
    ReferenceCount STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE OnNotify(Data* data) override {
        {
            const std::lock_guard guard(mutex);
            notes.push_back(*data);
        }
        data->fMasterVolume = -1.0F;  // nobody else may see this
        if (then) {
            then();
        }
        ++calls;
        return published::ok;
    }

    [[nodiscard]] std::vector<Data> told() const {
        const std::lock_guard guard(mutex);
        return notes;
    }
    [[nodiscard]] bool wasTold(float scalar) const {
        const std::vector<Data> all = told();
        return !all.empty() && all.back().fMasterVolume == scalar;
    }

    std::atomic<ReferenceCount> references{1};
    std::atomic<int> calls{0};  ///< That have come to their end.

private:
    const std::function<void()> then;
    mutable std::mutex mutex;
    std::vector<Data> notes;
};

#pragma GCC diagnostic pop

}  // namespace korva::platform
