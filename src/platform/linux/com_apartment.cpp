#include "platform/com_apartment.h"

namespace korva::platform {

ComApartment::ComApartment() noexcept = default;

ComApartment::~ComApartment() = default;

}  // namespace korva::platform
