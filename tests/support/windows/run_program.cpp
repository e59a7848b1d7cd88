#include "tests/support/run_program.h"

#include <process.h>

namespace korva::test {

// The system joins the arguments with blanks between them, and the program takes them apart again.
int runProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> quoted;
    for (const std::string& argument : arguments) {
        quoted.push_back('"' + argument + '"');
    }
    std::vector<const char*> pointers{program.c_str()};
    for (const std::string& argument : quoted) {
        pointers.push_back(argument.c_str());
    }
    pointers.push_back(nullptr);
    return static_cast<int>(_spawnv(_P_WAIT, program.c_str(), pointers.data()));
}

}  // namespace korva::test
