#include "platform/thread_locale.h"

namespace korva::platform {

SystemLocale::SystemLocale() noexcept = default;

SystemLocale::~SystemLocale() = default;

}  // namespace korva::platform
