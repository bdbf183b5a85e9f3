#include "platform/access/storage/journal.h"

#include <algorithm>
#include <string_view>

#include "platform/access/format/file_header.h"
#include "platform/access/format/layout.h"

namespace tenora::access {
namespace {

constexpr std::string_view kMagic = "Tenora journal 1";
constexpr std::size_t kChecksummedHeader = 56;
constexpr std::size_t kPageHead = 8;

// FNV-1a, 64 bits. Detects accidents, not malice: whoever can write the journal can write the
// database.
std::uint64_t Checksum(Bytes bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const std::byte b : bytes) {
    sum = (sum ^ std::to_integer<std::uint64_t>(b)) * 0x100000001B3;
  }
  return sum;
}

}  // namespace

std::uint64_t DatabaseIdentity(Bytes start) {
  return Checksum(start.first(std::min<std::size_t>(
      start.size(), kMaskedOffset + MaskedSize(Load8(&start[kVersionOffset])))));
}

std::uint64_t JournalLength(std::uint32_t page_size, std::uint64_t pages) {
  return kJournalHeader + pages * (kPageHead + 2 * std::uint64_t{page_size});
}

std::uint64_t JournalLength(Bytes header) {
  if (header.size() < kJournalHeader ||
      !std::ranges::equal(header.first(kMagic.size()), std::as_bytes(std::span(kMagic))) ||
      Load<std::uint64_t>(&header[kChecksummedHeader]) !=
          Checksum(header.first(kChecksummedHeader)) ||
      Load32(&header[16]) != kJet4Layout.page_size) {
    return 0;
  }
  return JournalLength(kJet4Layout.page_size, Load32(&header[20]));
}

std::vector<std::byte> EncodeJournal(const Journal& journal) {
  const std::size_t record = kPageHead + 2 * std::size_t{journal.page_size};
  std::vector<std::byte> bytes(kJournalHeader + journal.pages.size() * record);
  std::byte* at = bytes.data() + kJournalHeader;
  for (const JournalPage& page : journal.pages) {
    Store32(at, page.number);
    std::ranges::copy(page.before, at + kPageHead);
    std::ranges::copy(page.after, at + kPageHead + journal.page_size);
    at += record;
  }
  std::ranges::copy(std::as_bytes(std::span(kMagic)), bytes.begin());
  Store32(&bytes[16], journal.page_size);
  Store32(&bytes[20], static_cast<std::uint32_t>(journal.pages.size()));
  Store(&bytes[24], journal.old_length);
  Store(&bytes[32], journal.new_length);
  Store(&bytes[40], journal.identity);
  Store(&bytes[48], Checksum(Bytes(bytes).subspan(kJournalHeader)));
  Store(&bytes[kChecksummedHeader], Checksum(Bytes(bytes).first(kChecksummedHeader)));
  return bytes;
}

JournalPage PageOfRecord(Bytes record) {
  const std::size_t page_size = (record.size() - kPageHead) / 2;
  const Bytes before = record.subspan(kPageHead, page_size);
  const Bytes after = record.subspan(kPageHead + page_size, page_size);
  return {.number = Load32(record.data()),
          .before = {before.begin(), before.end()},
          .after = {after.begin(), after.end()}};
}

bool DecodeJournal(Bytes bytes, Journal& journal) {
  // Anything too short for a header has length 0 here.
  if (JournalLength(bytes) != bytes.size() || bytes.empty()) return false;
  journal.page_size = Load32(&bytes[16]);
  journal.old_length = Load<std::uint64_t>(&bytes[24]);
  journal.new_length = Load<std::uint64_t>(&bytes[32]);
  journal.identity = Load<std::uint64_t>(&bytes[40]);
  journal.pages.clear();
  if (journal.old_length > journal.new_length || journal.old_length % journal.page_size != 0 ||
      journal.new_length % journal.page_size != 0) {
    return false;
  }
  Bytes rest = bytes.subspan(kJournalHeader);
  const std::size_t record = kPageHead + 2 * std::size_t{journal.page_size};
  if (Load<std::uint64_t>(&bytes[48]) != Checksum(rest)) return false;
  for (; !rest.empty(); rest = rest.subspan(record)) {
    const JournalPage& page = journal.pages.emplace_back(PageOfRecord(rest.first(record)));
    if (page.number >= journal.old_length / journal.page_size) return false;
  }
  return true;
}

}  // namespace tenora::access
