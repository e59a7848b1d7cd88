#include "korva/standard_streams.h"

#include "korva/errors.h"

namespace korva::tool {

void printOutput(std::string_view text) {
    if (const std::error_code error = platform::writeText(stdout, text)) {
        fail("cannot write to standard output: {}", error.message());
    }
}

void expectReaderOfOutput() {
    if (!platform::hasOutputReader()) {
        fail("cannot write to standard output: {}", make_error_code(std::errc::broken_pipe).message());
    }
}

}  // namespace korva::tool
