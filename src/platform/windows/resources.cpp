#include "platform/resources.h"

#include <windows.h>

#include "platform/windows/own_library.h"

namespace korva::platform {

std::optional<std::string_view> textResource(std::uint16_t number) noexcept {
    HMODULE const module = ownModule();
    HRSRC const found = FindResourceW(module, MAKEINTRESOURCEW(number), L"REGISTRY");
    HGLOBAL const loaded = found == nullptr ? nullptr : LoadResource(module, found);
    const void* const text = loaded == nullptr ? nullptr : LockResource(loaded);
    if (text == nullptr) {
        return std::nullopt;
    }
    // It has no terminator.
    return std::string_view(static_cast<const char*>(text), SizeofResource(module, found));
}

}  // namespace korva::platform
