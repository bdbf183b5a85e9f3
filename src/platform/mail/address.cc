#include "platform/mail/address.h"

#include <algorithm>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

// The limits of the mail standards, in bytes.
constexpr std::size_t kMaxLocalPart = 64;
constexpr std::size_t kMaxDomain = 255;

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

RuntimeError BadAddress(std::string_view text, const char* reason) {
  std::string shown(text);
  std::replace_if(shown.begin(), shown.end(), IsControl, ' ');
  return RuntimeError(error_number::kInvalidProcedureCall,
                      "'" + shown + "' is not an e-mail address: " + reason);
}

void CheckAddress(std::string_view address, std::string_view text) {
  const std::size_t at = address.rfind('@');
  if (at == std::string_view::npos) throw BadAddress(text, "it has no @");
  const std::string_view local = address.substr(0, at);
  const std::string_view domain = address.substr(at + 1);
  if (local.empty() || domain.empty()) throw BadAddress(text, "a side of the @ is empty");
  if (local.size() > kMaxLocalPart || domain.size() > kMaxDomain) {
    throw BadAddress(text, "it is too long");
  }
  if (address.find_first_of(" <>()[]\\,;:\"") != std::string_view::npos ||
      local.find('@') != std::string_view::npos) {
    throw BadAddress(text, "it holds a character that addresses cannot have");
  }
  if (domain.front() == '.' || domain.back() == '.' || domain.find("..") != domain.npos) {
    throw BadAddress(text, "its domain has an empty part");
  }
  if (!IsValidUtf8(address)) throw BadAddress(text, "it is not valid text");
}

Address ParseOne(std::string_view text) {
  const std::size_t open = text.find('<');
  if (open == std::string_view::npos) {
    const std::string_view address = TrimBlanks(text);
    CheckAddress(address, text);
    return {"", std::string(address)};
  }
  const std::size_t close = text.find('>', open);
  if (close == std::string_view::npos || !TrimBlanks(text.substr(close + 1)).empty()) {
    throw BadAddress(text, "its angle brackets do not match");
  }
  std::string_view name = TrimBlanks(text.substr(0, open));
  if (name.size() >= 2 && name.front() == '"' && name.back() == '"') {
    name = name.substr(1, name.size() - 2);
  }
  const std::string_view address = TrimBlanks(text.substr(open + 1, close - open - 1));
  CheckAddress(address, text);
  return {std::string(name), std::string(address)};
}

}  // namespace

std::vector<Address> ParseAddresses(std::string_view text) {
  if (std::any_of(text.begin(), text.end(), IsControl)) {
    throw BadAddress(text, "it holds a line break or another control character");
  }
  std::vector<Address> addresses;
  for (const std::string& piece : Split(ReplaceAll(std::string(text), ",", ";"), ";")) {
    if (!TrimBlanks(piece).empty()) addresses.push_back(ParseOne(piece));
  }
  if (addresses.empty()) throw BadAddress(text, "it is empty");
  return addresses;
}

}  // namespace tenora::mail
