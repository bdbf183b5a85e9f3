#include "support/mail_options.h"

#include <stdexcept>
#include <string>

#include "platform/runtime/files.h"

namespace tenora::test {
namespace {

constexpr std::size_t kPageSize = 4096;
constexpr int kStoredPort = 2525;          // in the sample's only row of options
constexpr unsigned kSmtpSendBit = 1 << 2;  // the third column; booleans live in the null mask

unsigned Word(const std::string& bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8U;
}

}  // namespace

void SendMailTo(int port, const std::filesystem::path& database) {
  std::string bytes = ReadWholeFile(database);
  // Compressed text begins with FF FE.
  const std::size_t address = bytes.find(
      "\xFF\xFE"
      "127.0.0.1");
  if (address == std::string::npos) throw std::runtime_error("no options row in the sample");
  const std::size_t page = address / kPageSize * kPageSize;
  const std::size_t row = page + (Word(bytes, page + 14) & 0x1FFF);
  const std::string stored{static_cast<char>(kStoredPort & 0xFF),
                           static_cast<char>(kStoredPort >> 8)};
  const std::size_t at = bytes.find(stored, row);
  if (at == std::string::npos || at > address) throw std::runtime_error("no port in the row");
  bytes[at] = static_cast<char>(port & 0xFF);
  bytes[at + 1] = static_cast<char>(port >> 8);
  // The first row of a page ends where the page does, with the two bytes of its mask.
  char& mask = bytes[page + kPageSize - 2];
  mask = static_cast<char>(static_cast<unsigned char>(mask) | kSmtpSendBit);
  WriteWholeFile(database, bytes);
}

}  // namespace tenora::test
