// The header on the file's first page. It starts with the bytes 00 01 00 00, the name of the format
// ("Standard Jet DB" or "Standard ACE DB") and its version. From byte 0x18 on, 126 (Jet 3) or 128
// bytes are masked with an RC4 key stream that is the same for every file; they hold the code page,
// the encryption key, the password and the creation date. docs/access-format.md has the table.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "platform/access/format/bytes.h"
#include "platform/access/schema.h"

namespace tenora::access {

struct FileHeader {
  Format format = Format::kJet4;
  std::uint8_t version = 1;     // 0 Jet 3, 1 Jet 4, 2 to 6 ACE of 2007 to 2019
  std::uint16_t code_page = 0;  // of Jet 3 text
  std::uint32_t sort_order = 0;
};

inline constexpr std::size_t kHeaderSize = 0x300;
inline constexpr std::size_t kVersionOffset = 0x14;
inline constexpr std::size_t kMaskedOffset = 0x18;
inline constexpr std::string_view kJetSignature{"\0\1\0\0Standard Jet DB\0", 20};
inline constexpr std::string_view kAceSignature{"\0\1\0\0Standard ACE DB\0", 20};

// Number of masked bytes from kMaskedOffset on.
constexpr std::size_t MaskedSize(std::uint8_t version) { return version == 0 ? 126 : 128; }

// Masks or unmasks in place.
void MaskHeader(std::span<std::byte> masked);

// `start` is the beginning of the file, up to kHeaderSize bytes. Raises 3343 for a file that is not
// a database of a known version, 3031 for one that is protected by a password or encrypted.
FileHeader ReadFileHeader(Bytes start, const std::filesystem::path& path);

}  // namespace tenora::access
