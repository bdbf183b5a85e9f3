// The journal of one change to a database: the pages it changes, as they were and as they shall be.
// It lies beside the database while the pages are written; while it is whole, the change can be
// taken back. Bytes:
//
//    0  "Tenora journal 1"
//   16  page size (4), number of pages (4)
//   24  length of the database before (8) and after (8)
//   40  identity of the database (8)
//   48  checksum of all pages (8), checksum of the 56 bytes before it (8)
//   64  for each page: number (4), 0 (4), the page before, the page after
//
// Pages added at the end of the database have no image: taking back cuts them off. The images after
// are there to tell, byte by byte, whether a page found in the database is one that this change
// has written, wholly or in part, or that another program has written since.
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

// What tells databases apart: made of the header's format, creation date and the rest that never
// changes. `start` is the beginning of the database.
std::uint64_t DatabaseIdentity(Bytes start);

// The length in bytes of a journal of so many pages.
std::uint64_t JournalLength(std::uint32_t page_size, std::uint64_t pages);

// The same for the journal that starts with `header`; 0 for something else.
std::uint64_t JournalLength(Bytes header);

std::vector<std::byte> EncodeJournal(const Journal& journal);

// False for what is not a whole journal: half-written, damaged or something else.
bool DecodeJournal(Bytes bytes, Journal& journal);

}  // namespace tenora::access
