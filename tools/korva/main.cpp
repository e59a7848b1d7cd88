#include <exception>

#include "korva/command_line.h"
#include "korva/command_table.h"
#include "korva/errors.h"
#include "platform/interruption.h"
#include "platform/program_arguments.h"
#include "platform/standard_streams.h"

namespace {

constexpr int failed = 2;
constexpr int endedBySignal = 128;  // plus the signal's number, as shells count

void prepare() {
    if (const std::error_code error = korva::platform::prepareStandardStreams()) {
        korva::tool::fail("cannot open /dev/null: {}", error.message());
    }
    korva::platform::catchInterruptions();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    using namespace korva::tool;
    try {
        prepare();
        return runCommandLine(korva::platform::programArguments(argumentCount, arguments), commandTable);
    } catch (const Interrupted& interrupted) {
        printError("interrupted");
        return endedBySignal + interrupted.signal;
    } catch (const std::bad_alloc&) {
        printError("out of memory");
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return failed;
}
