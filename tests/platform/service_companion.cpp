// A process of its own that uses what the system has for all processes. Each line of standard input is a
// command, and gets a line in answer:
//     hold NAME    holds a mutex, and no other one any more; "yes" if it does
//     asks NAME    "yes" if a mutex is held
//     tick         the tick clock's time
//     guid         a new GUID
#include <iostream>
#include <string>

#include "platform/named_mutex.h"
#include "platform/new_guid.h"
#include "platform/property_key.h"
#include "platform/tick_clock.h"

namespace korva::platform {
namespace {

std::string answerTo(const std::string& line, NamedMutex& held) {
    const std::size_t space = line.find(' ');
    const std::string command = line.substr(0, space);
    const std::string name = space == line.npos ? "" : line.substr(space + 1);
    if (command == "hold") {
        held = NamedMutex::create(name);
        return held ? "yes" : "no";
    }
    if (command == "asks") {
        return isMutexHeld(name) ? "yes" : "no";
    }
    if (command == "tick") {
        return std::to_string(tickClockMs());
    }
    return command == "guid" ? guidText(newGuid()) : "what?";
}

void answerAll() {
    NamedMutex held;
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << answerTo(line, held) << std::endl;
    }
}

}  // namespace
}  // namespace korva::platform

int main() {
    korva::platform::answerAll();
    return 0;
}
