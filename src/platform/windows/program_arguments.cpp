#include "platform/program_arguments.h"

#include <windows.h>
// After it, on whose types it builds.
#include <shellapi.h>

#include <memory>
#include <new>

#include "platform/unicode.h"

namespace korva::platform {

std::vector<std::string> programArguments(int /*count*/, const char* const* /*given*/) {
    int count = 0;
    const std::unique_ptr<WCHAR*, decltype(&LocalFree)> words(CommandLineToArgvW(GetCommandLineW(), &count),
                                                              &LocalFree);
    if (!words) {
        throw std::bad_alloc();
    }
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(toUtf8(words.get()[i]));
    }
    return arguments;
}

}  // namespace korva::platform
