#include "platform/mail/address.h"

#include <unicode/uidna.h>

#include <algorithm>
#include <memory>

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

// An internationalised domain in its ASCII form ("xn--…").
std::string AsciiDomain(std::string_view domain, std::string_view text) {
  if (std::none_of(domain.begin(), domain.end(), [](char c) { return (c & 0x80) != 0; })) {
    return std::string(domain);
  }
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, decltype(&uidna_close)> names(
      uidna_openUTS46(UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI, &error), uidna_close);
  std::string ascii(kMaxDomain, '\0');
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const int32_t length =
      uidna_nameToASCII_UTF8(names.get(), domain.data(), static_cast<int32_t>(domain.size()),
                             ascii.data(), static_cast<int32_t>(ascii.size()), &info, &error);
  if (U_FAILURE(error) || info.errors != 0) throw BadAddress(text, "its domain is no name");
  ascii.resize(static_cast<std::size_t>(length));
  return ascii;
}

std::string ReadAddress(std::string_view written, std::string_view text) {
  const std::string_view address = TrimBlanks(written);
  CheckAddress(address, text);
  const std::size_t domain = address.rfind('@') + 1;
  return std::string(address.substr(0, domain)) + AsciiDomain(address.substr(domain), text);
}

std::string ReadName(std::string_view name, std::string_view text) {
  name = TrimBlanks(name);
  if (name.size() < 2 || name.front() != '"' || name.back() != '"') {
    if (name.find_first_of("<>") != name.npos) throw BadAddress(text, "it is more than one");
    return std::string(name);
  }
  std::string plain;
  for (std::size_t i = 1; i + 1 < name.size(); ++i) {
    if (name[i] == '\\' && i + 2 < name.size()) ++i;
    plain += name[i];
  }
  return plain;
}

Address ParseOne(std::string_view text) {
  const std::size_t open = text.rfind('<');
  if (open == std::string_view::npos) return {"", ReadAddress(text, text)};
  const std::size_t close = text.find('>', open);
  if (close == std::string_view::npos || !TrimBlanks(text.substr(close + 1)).empty()) {
    throw BadAddress(text, "its angle brackets do not match");
  }
  return {ReadName(text.substr(0, open), text),
          ReadAddress(text.substr(open + 1, close - open - 1), text)};
}

// The pieces between ";" and ",", those inside double quotes excepted.
std::vector<std::string_view> SplitList(std::string_view text) {
  std::vector<std::string_view> pieces;
  bool quoted = false;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\' && quoted)
      ++at;
    else if (text[at] == '"')
      quoted = !quoted;
    else if (!quoted && (text[at] == ';' || text[at] == ',')) {
      pieces.push_back(text.substr(begin, at - begin));
      begin = at + 1;
    }
  }
  pieces.push_back(text.substr(begin));
  return pieces;
}

}  // namespace

std::vector<Address> ParseAddresses(std::string_view text) {
  if (std::any_of(text.begin(), text.end(), IsControl)) {
    throw BadAddress(text, "it holds a line break or another control character");
  }
  std::vector<Address> addresses;
  // Pasted from a web page, an address has no-break spaces around it.
  const std::string plain = ReplaceAll(std::string(text), "\xC2\xA0", " ");
  for (const std::string_view piece : SplitList(plain)) {
    if (!TrimBlanks(piece).empty()) addresses.push_back(ParseOne(piece));
  }
  if (addresses.empty()) throw BadAddress(text, "it is empty");
  return addresses;
}

}  // namespace tenora::mail
