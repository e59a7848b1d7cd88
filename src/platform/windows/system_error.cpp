#include "platform/windows/system_error.h"

#include <windows.h>

#include <array>
#include <string>

#include "platform/unicode.h"

namespace korva::platform {
namespace {

/// The standard library's own has messages in an encoding that lacks characters.
class SystemCategory final : public std::error_category {
public:
    [[nodiscard]] const char* name() const noexcept override { return "windows"; }
    [[nodiscard]] std::string message(int number) const override {
        std::array<WCHAR, 512> text;
        const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                            nullptr, static_cast<DWORD>(number), 0, text.data(),
                                            static_cast<DWORD>(text.size()), nullptr);
        WideView words(text.data(), length);
        // A sentence and a line's end.
        while (!words.empty() && (words.back() == L'\n' || words.back() == L'\r' || words.back() == L'.')) {
            words.remove_suffix(1);
        }
        return words.empty() ? "error " + std::to_string(number) : toUtf8(words);
    }
};

const SystemCategory systemCategory;

}  // namespace

std::error_code systemError(std::uint32_t number) {
    const auto value = static_cast<int>(number);
    const std::error_condition condition = std::system_category().default_error_condition(value);
    if (condition.category() == std::generic_category()) {
        return {condition.value(), std::generic_category()};
    }
    return {value, systemCategory};
}

std::error_code lastSystemError() {
    return systemError(GetLastError());
}

}  // namespace korva::platform
