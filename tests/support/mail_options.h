// Changes the outgoing-mail options of a copy of the sample database.
#pragma once

#include <filesystem>

namespace tenora::test {

// Sends by SMTP to this port of 127.0.0.1. The row is changed in place, byte for byte.
void SendMailTo(int port, const std::filesystem::path& database);

}  // namespace tenora::test
