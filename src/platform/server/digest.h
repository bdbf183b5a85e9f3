#pragma once

#include <string>
#include <string_view>

namespace tenora::server {

// SHA-256, 32 bytes. Raises 53 where OpenSSL's library is missing.
std::string Sha256(std::string_view bytes);

}  // namespace tenora::server
