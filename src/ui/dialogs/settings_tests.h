// Tests the entered settings. They block until a server answers or times out: call them off the
// main thread.
#pragma once

#include <string>

#include "platform/mail/smtp_client.h"

namespace tenora {

// The result and, on failure, what to do next.
struct TestResult {
  bool good = false;
  std::string text;
};

// Opens the database, a file by its path or a branch by its location, and counts its tenancies.
TestResult TestDatabase(const std::string& location);

// Connects and logs in; sends nothing. The password is not in the result.
TestResult TestMailServer(mail::Server server);

}  // namespace tenora
