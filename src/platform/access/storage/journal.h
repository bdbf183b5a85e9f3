// The rollback journal of one change to a database: the pages it changes, with their old and their
// new content. It exists beside the database while the pages are written; as long as it is
// complete, the change can be rolled back. Bytes:
//
//    0  "Tenora journal 1"
//   16  page size (4), number of pages (4)
//   24  length of the database before (8) and after the change (8)
//   40  identity of the database (8)
//   48  checksum of all pages (8), checksum of the 56 bytes before it (8)
//   64  for each page: number (4), 0 (4), old content, new content
//
// Pages appended to the database are not recorded: rolling back truncates them. The new content
// shows, byte by byte, whether a page in the database was written by this change, completely or in
// part, or by another program since.
#pragma once

#include <vector>

#include "platform/access/format/bytes.h"

namespace tenora::access {

struct JournalPage {
  std::uint32_t number = 0;
  std::vector<std::byte> before;
  std::vector<std::byte> after;
};

struct Journal {
  std::uint32_t page_size = 0;
  std::uint64_t old_length = 0;  // of the database, in bytes
  std::uint64_t new_length = 0;
  std::uint64_t identity = 0;
  std::vector<JournalPage> pages;
};

inline constexpr std::size_t kJournalHeader = 64;

// A hash that distinguishes databases, over the part of the header that never changes: format,
// creation date and so on. `start` is the beginning of the database.
std::uint64_t DatabaseIdentity(Bytes start);

// The length in bytes of a journal with that many pages.
std::uint64_t JournalLength(std::uint32_t page_size, std::uint64_t pages);

// The same for the journal that starts with `header`; 0 if it does not start like a journal.
std::uint64_t JournalLength(Bytes header);

std::vector<std::byte> EncodeJournal(const Journal& journal);

// A page as the journal has it: the bytes from its number to the end of its new content.
JournalPage PageOfRecord(Bytes record);

// False for anything but a complete journal.
bool DecodeJournal(Bytes bytes, Journal& journal);

}  // namespace tenora::access
