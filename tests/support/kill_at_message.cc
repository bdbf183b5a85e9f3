// Preloaded into the built program: kills it at the message KILL_AT to or from a server of its own,
// be it of a database or of mail. A message counts three times: before it is sent, when it is sent,
// and when an answer is received.
#include <dlfcn.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdlib>

namespace {

void Count() {
  static int left = std::atoi(std::getenv("KILL_AT"));
  if (--left == 0) ::raise(SIGKILL);
}

template <typename Function>
Function* Original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" ssize_t send(int socket, const void* bytes, std::size_t count, int flags) {
  static auto* const original = Original<ssize_t(int, const void*, std::size_t, int)>("send");
  Count();
  const ssize_t sent = original(socket, bytes, count, flags);
  Count();
  return sent;
}

extern "C" ssize_t recv(int socket, void* bytes, std::size_t count, int flags) {
  static auto* const original = Original<ssize_t(int, void*, std::size_t, int)>("recv");
  const ssize_t received = original(socket, bytes, count, flags);
  if (received > 0) Count();
  return received;
}
