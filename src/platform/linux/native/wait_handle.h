// What the system can wait for: a descriptor, until it is readable.
#pragma once

namespace korva::platform {

using WaitHandle = int;

}  // namespace korva::platform
