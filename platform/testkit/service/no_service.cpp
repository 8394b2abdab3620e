#include "linked_service.h"

namespace vorl::testkit {

Platform::Respond linkedService() {
    return nullptr;
}

}  // namespace vorl::testkit
