// Tries out what is entered in the settings. These take as long as a server lets them: call them
// off the window's thread.
#pragma once

#include <filesystem>
#include <string>

#include "platform/mail/smtp_client.h"

namespace tenora {

// What was found, and where it is bad what to do next.
struct TestResult {
  bool good = false;
  std::string text;
};

// Opens the database and counts its tenancies.
TestResult TestDatabase(const std::filesystem::path& path);

// Connects and logs in; sends nothing. The password is not in the result.
TestResult TestMailServer(mail::Server server);

}  // namespace tenora
