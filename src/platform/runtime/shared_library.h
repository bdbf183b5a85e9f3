#pragma once

#include <utility>

namespace tenora {

// A library that only some commands need, loaded at its first use, so that the others start without
// it. It stays loaded until the process ends.
class SharedLibrary {
 public:
  // Takes the name as the system's loader knows it ("libcups.so.2"). Raises error 53 with the
  // loader's reason where there is none.
  explicit SharedLibrary(const char* name);

  // Raises error 453 when the library has no such function.
  void* Find(const char* function) const;

 private:
  const char* name_;
  void* handle_;
};

// A function of such a library, of the type that the library's header declares.
template <typename Function>
class LibraryFunction {
 public:
  LibraryFunction(const SharedLibrary& library, const char* name)
      : function_(reinterpret_cast<Function*>(library.Find(name))) {}

  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    return function_(arguments...);
  }

 private:
  Function* function_;
};

}  // namespace tenora
