#include "platform/access/format/file_header.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string>

namespace tenora::access {
namespace {

constexpr std::array<std::uint8_t, 4> kMaskKey{0xC7, 0xDA, 0x39, 0x6B};

constexpr std::uint8_t kVersionJet3 = 0;
constexpr std::uint8_t kVersionJet4 = 1;
constexpr std::uint8_t kNewestVersion = 6;

// From the start of the file.
constexpr std::size_t kSortOrderJet3 = 0x3A;
constexpr std::size_t kSortOrderJet4 = 0x6E;
constexpr std::size_t kCodePage = 0x3C;
constexpr std::size_t kEncodingKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kPasswordSizeJet3 = 20;
constexpr std::size_t kPasswordSizeJet4 = 40;
constexpr std::size_t kCreationDate = 0x72;

RuntimeError Locked(const std::filesystem::path& path, std::string_view reason) {
  std::string text = "Not a valid password. '" + path.string() + "' ";
  text.append(reason).append("; remove that in the program that created the file and try again.");
  return RuntimeError(engine_error::kNotAValidPassword, text, "DAO.Workspace");
}

// Jet 4 also masks the password with the integer part of the creation date.
std::uint32_t PasswordMask(const std::byte* header, std::uint8_t version) {
  if (version == kVersionJet3) return 0;
  const double created = Load<double>(header + kCreationDate);
  if (!(std::abs(created) < 2147483648.0)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(created));
}

bool HasPassword(const std::byte* header, std::uint8_t version) {
  const std::uint32_t mask = PasswordMask(header, version);
  const std::size_t size = version == kVersionJet3 ? kPasswordSizeJet3 : kPasswordSizeJet4;
  for (std::size_t i = 0; i < size; i += 4) {
    if ((Load32(header + kPassword + i) ^ mask) != 0) return true;
  }
  return false;
}

bool StartsWith(Bytes start, std::string_view signature) {
  return start.size() >= signature.size() &&
         std::memcmp(start.data(), signature.data(), signature.size()) == 0;
}

Format FormatOf(Bytes start, const std::filesystem::path& path) {
  const bool jet = StartsWith(start, kJetSignature);
  if (!jet && !StartsWith(start, kAceSignature)) {
    throw UnrecognizedFormat(path, start.empty()
                                       ? "The file is empty (zero bytes)"
                                       : "The file does not start with a database header");
  }
  if (start.size() < kHeaderSize) {
    throw UnrecognizedFormat(path, "The file is truncated at byte " + std::to_string(start.size()));
  }
  const std::uint8_t version = Load8(&start[kVersionOffset]);
  if (jet && version <= kVersionJet4) {
    return version == kVersionJet3 ? Format::kJet3 : Format::kJet4;
  }
  if (!jet && version > kVersionJet4 && version <= kNewestVersion) return Format::kAce;
  throw UnrecognizedFormat(
      path, "The format's version " + std::to_string(version) + " is not known, only 0 to 6 are");
}

}  // namespace

void MaskHeader(std::span<std::byte> masked) {
  std::array<std::uint8_t, 256> state;
  std::iota(state.begin(), state.end(), std::uint8_t{0});
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < state.size(); ++i) {
    j = static_cast<std::uint8_t>(j + state[i] + kMaskKey[i % kMaskKey.size()]);
    std::swap(state[i], state[j]);
  }
  std::uint8_t i = 0;
  j = 0;
  for (std::byte& b : masked) {
    i = static_cast<std::uint8_t>(i + 1);
    j = static_cast<std::uint8_t>(j + state[i]);
    std::swap(state[i], state[j]);
    b ^= std::byte{state[static_cast<std::uint8_t>(state[i] + state[j])]};
  }
}

FileHeader ReadFileHeader(Bytes start, const std::filesystem::path& path) {
  FileHeader header;
  header.format = FormatOf(start, path);
  header.version = Load8(&start[kVersionOffset]);
  std::array<std::byte, kHeaderSize> clear;
  std::copy_n(start.begin(), kHeaderSize, clear.begin());
  MaskHeader(std::span(clear).subspan(kMaskedOffset, MaskedSize(header.version)));
  header.code_page = Load16(&clear[kCodePage]);
  header.sort_order = header.version == kVersionJet3 ? Load16(&clear[kSortOrderJet3])
                                                     : Load32(&clear[kSortOrderJet4]);
  if (Load32(&clear[kEncodingKey]) != 0) {
    throw Locked(path, "is encoded or encrypted, which is not supported");
  }
  if (HasPassword(clear.data(), header.version)) {
    throw Locked(path, "is protected by a password, which is not supported");
  }
  return header;
}

}  // namespace tenora::access
