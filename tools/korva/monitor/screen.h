// A terminal that is painted whole.
#pragma once

#include <memory>
#include <optional>

#include "korva/monitor/live_model.h"
#include "korva/monitor/picture.h"

namespace korva::tool {

/// The terminal of standard input and output while it lives; afterwards it is as it was, also when a signal
/// stops or kills this program for a fault of its own. One at a time.
class Screen {
public:
    /// Null where there is no such terminal, or none that can be painted.
    [[nodiscard]] static std::unique_ptr<Screen> open();

    Screen() = default;
    virtual ~Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    [[nodiscard]] virtual ScreenSize size() const = 0;
    /// Whether it shows more than ASCII.
    [[nodiscard]] virtual bool hasUnicode() const = 0;
    virtual void show(const Picture& picture) = 0;

    /// Waits for a key, for at most `limitMs`; nothing if none came, or the size changed. Throws
    /// `Interrupted`, and `ToolError` if the terminal is gone.  [blocks]
    [[nodiscard]] virtual std::optional<MonitorKey> waitForKey(int limitMs) = 0;
};

}  // namespace korva::tool
