#include "platform/server/digest.h"

#include <openssl/evp.h>

#include <array>

#include "platform/runtime/error.h"
#include "platform/runtime/shared_library.h"

namespace tenora::server {

std::string Sha256(std::string_view bytes) {
  static const SharedLibrary kLibrary("libcrypto.so.3");
  static const LibraryFunction<decltype(::EVP_Q_digest)> kDigest(kLibrary, "EVP_Q_digest");
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  std::size_t length = 0;
  if (kDigest(static_cast<OSSL_LIB_CTX*>(nullptr), "SHA256", static_cast<const char*>(nullptr),
              static_cast<const void*>(bytes.data()), bytes.size(), digest.data(), &length) != 1) {
    throw StandardError(error_number::kInvalidProcedureCall, "SHA-256");
  }
  return {reinterpret_cast<const char*>(digest.data()), length};
}

}  // namespace tenora::server
