#include "platform/runtime/shared_library.h"

#include <dlfcn.h>

#include <string>

#include "platform/runtime/error.h"

namespace tenora {

SharedLibrary::SharedLibrary(const char* name) : name_(name), handle_(::dlopen(name, RTLD_LAZY)) {
  if (handle_ == nullptr) {
    throw StandardError(error_number::kFileNotFound, ::dlerror());
  }
}

void* SharedLibrary::Find(const char* function) const {
  void* const found = ::dlsym(handle_, function);
  if (found == nullptr) {
    throw StandardError(error_number::kLibraryFunctionNotFound,
                        std::string(name_) + ": " + function);
  }
  return found;
}

}  // namespace tenora
