#include <exception>

#include "korva/command_line.h"
#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/standard_streams.h"

namespace {

constexpr int failed = 2;
constexpr int endedBySignal = 128;  // plus the signal's number, as shells count

}  // namespace

int main(int argumentCount, char** arguments) {
    using namespace korva::tool;
    try {
        reserveStandardStreams();
        catchInterruptions();
        return runCommandLine(argumentCount, arguments);
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
