#include "platform/runtime/version.h"

namespace tenora {

const char* const kVersion = TENORA_VERSION;
const char* const kVersionCaption = TENORA_CAPTION;

}  // namespace tenora
