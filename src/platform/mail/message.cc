#include "platform/mail/message.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <random>

#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

// An encoded word has at most 75 characters; "=?UTF-8?B?" and "?=" leave 63, which hold 45 bytes.
constexpr std::size_t kBytesPerEncodedWord = 45;
constexpr std::size_t kLongestPlainHeader = 60;

// Line breaks and other control characters as blanks, broken UTF-8 as U+FFFD.
std::string OneLine(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    AppendUtf8(result, c < 0x20 || c == 0x7F ? U' ' : c);
  }
  return result;
}

bool IsPlainAscii(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return text.find("=?") == std::string_view::npos;
}

std::string AddressText(const Address& address) {
  if (address.name.empty()) return address.address;
  std::string name = OneLine(address.name);
  if (IsPlainAscii(name) && name.size() <= kLongestPlainHeader) {
    name = '"' + ReplaceAll(ReplaceAll(std::move(name), "\\", "\\\\"), "\"", "\\\"") + '"';
  } else {
    name = EncodeHeaderText(name);
  }
  return name + " <" + address.address + ">";
}

std::string AddressList(const std::vector<Address>& addresses) {
  std::string list;
  for (const Address& address : addresses) {
    list += (list.empty() ? "" : ",\r\n ") + AddressText(address);
  }
  return list;
}

// The local time zone's offset from UTC at this local date, in minutes.
int OffsetFromUtc(const CalendarTime& local) {
  std::tm parts{};
  parts.tm_year = local.year - 1900;
  parts.tm_mon = local.month - 1;
  parts.tm_mday = local.day;
  parts.tm_hour = local.hour;
  parts.tm_min = local.minute;
  parts.tm_isdst = -1;
  std::mktime(&parts);
  return static_cast<int>(parts.tm_gmtoff / 60);
}

std::string DateText(Date date) {
  const int offset = OffsetFromUtc(date.Calendar());
  const int minutes = offset < 0 ? -offset : offset;
  std::array<char, 8> zone{};
  std::snprintf(zone.data(), zone.size(), "%c%02d%02d", offset < 0 ? '-' : '+', minutes / 60 % 100,
                minutes % 60);
  return FormatDate(date, "ddd, d mmm yyyy hh:nn:ss ") + zone.data();
}

std::string NewMessageId(const Address& from) {
  std::random_device random;
  std::array<char, 40> id{};
  std::snprintf(id.data(), id.size(), "%08x%08x%08x%08x", random(), random(), random(), random());
  std::string domain = from.address.substr(from.address.rfind('@') + 1);
  if (domain.empty() || !IsPlainAscii(domain)) domain = "localhost";
  return "<" + std::string(id.data()) + "@" + domain + ">";
}

}  // namespace

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string result;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = (group << 8) | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      const bool padding = i + k > bytes.size();
      result += padding ? '=' : kAlphabet[(group >> (18 - 6 * k)) & 63];
    }
  }
  return result;
}

std::string EncodeHeaderText(std::string_view text) {
  const std::string line = OneLine(text);
  if (IsPlainAscii(line) && line.size() <= kLongestPlainHeader) return line;
  std::string result;
  std::string_view rest = line;
  while (!rest.empty()) {
    // Encoded words must not split a character.
    std::string_view before = rest;
    std::size_t taken = 0;
    while (!rest.empty()) {
      std::string_view after = rest;
      TakeCodePoint(after);
      if (before.size() - after.size() > kBytesPerEncodedWord) break;
      rest = after;
      taken = before.size() - rest.size();
    }
    result += (result.empty() ? "" : "\r\n ");
    result += "=?UTF-8?B?" + Base64(before.substr(0, taken)) + "?=";
  }
  return result;
}

std::vector<std::string> HeaderLines(const Message& message) {
  return {"From: " + AddressText(message.from), "To: " + AddressList(message.to),
          "Subject: " + EncodeHeaderText(message.subject), "Date: " + DateText(message.date),
          "Message-ID: " + NewMessageId(message.from)};
}

}  // namespace tenora::mail
