#include "korva/monitor/screen.h"

namespace korva::tool {

std::unique_ptr<Screen> Screen::open() {
    return nullptr;
}

}  // namespace korva::tool
