#include "platform/deletion_notice.h"

namespace korva::platform {

bool tellsOfKeyDeletion() noexcept {
    return true;
}

}  // namespace korva::platform
