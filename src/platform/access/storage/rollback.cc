#include "platform/access/storage/rollback.h"

#include <array>
#include <vector>

#include "platform/access/format/file_header.h"
#include "platform/access/format/layout.h"

namespace tenora::access {
namespace {

// The length that the journal's header gives, if the file has exactly that length; otherwise 0.
std::uint64_t CompleteLength(StorageFile& journal) {
  std::array<std::byte, kJournalHeader> header{};
  const std::uint64_t length = JournalLength(Bytes(header).first(journal.Read(0, header)));
  return length == journal.Size() ? length : 0;
}

std::vector<std::byte> ReadStart(StorageFile& file, std::uint64_t length) {
  std::vector<std::byte> bytes(length);
  bytes.resize(file.Read(0, bytes));
  return bytes;
}

enum class Finding {
  kUntouched,    // the database is as it was before the change
  kInterrupted,  // every byte is the old one or the new one
  kReplaced,  // nothing of the change is there, and the database is a different one or has changed
  kMixed,     // another program has written over part of the change
};

bool IsOldOrNew(const JournalPage& page, Bytes found) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] != page.before[i] && found[i] != page.after[i]) return false;
  }
  return true;
}

Finding Compare(const Journal& journal, StorageFile& database) {
  std::array<std::byte, kHeaderSize> start{};
  if (database.Read(0, start) < start.size()) return Finding::kReplaced;
  if (DatabaseIdentity(start) != journal.identity) return Finding::kReplaced;
  const std::uint64_t size = database.Size();
  bool possible = size >= journal.old_length && size <= journal.new_length;
  bool untouched = size == journal.old_length, written = false;
  std::vector<std::byte> found(journal.page_size);
  for (const JournalPage& page : journal.pages) {
    const std::size_t count = database.Read(std::uint64_t{page.number} * journal.page_size, found);
    possible = possible && count == found.size() && IsOldOrNew(page, found);
    untouched = untouched && found == page.before;
    written = written || (found == page.after && found != page.before);
  }
  if (untouched) return Finding::kUntouched;
  if (possible) return Finding::kInterrupted;
  return written ? Finding::kMixed : Finding::kReplaced;
}

}  // namespace

void RollBack(const Journal& journal, StorageFile& database) {
  for (const JournalPage& page : journal.pages) {
    database.Write(std::uint64_t{page.number} * journal.page_size, page.before);
  }
  if (database.Size() > journal.old_length) database.Truncate(journal.old_length);
  database.Sync();
}

bool RollBackInterruptedChange(StorageFile& journal, StorageFile& database) {
  const std::uint64_t length = CompleteLength(journal);
  // A change has no more pages than the database had before it, and the database is not shorter
  // than that until the change is rolled back.
  constexpr std::size_t kPageSize = kJet4Layout.page_size;
  if (length > JournalLength(kPageSize, database.Size() / kPageSize)) return false;
  Journal change;
  // Pages are written only after the journal is synced, so an incomplete one was never needed.
  if (!DecodeJournal(ReadStart(journal, length), change)) return true;
  switch (Compare(change, database)) {
    case Finding::kUntouched:
    case Finding::kReplaced:
      return true;
    case Finding::kInterrupted:
      RollBack(change, database);
      return true;
    case Finding::kMixed:
      return false;
  }
  return false;
}

}  // namespace tenora::access
