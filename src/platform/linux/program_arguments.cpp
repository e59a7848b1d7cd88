#include "platform/program_arguments.h"

namespace korva::platform {

std::vector<std::string> programArguments(int count, const char* const* given) {
    return {given, given + count};
}

}  // namespace korva::platform
