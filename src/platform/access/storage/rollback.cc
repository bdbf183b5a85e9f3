#include "platform/access/storage/rollback.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
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

// How a page of the database compares with a page of a journal that is not complete. Bytes that a
// power failure kept from the journal's file are 0 in it.
enum class PageFinding { kBefore, kLost, kWritten, kOther };

PageFinding ComparePage(const JournalPage& page, Bytes found) {
  if (std::ranges::equal(found, page.before)) return PageFinding::kBefore;
  bool lost = true, written = false;
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] == page.before[i] || page.before[i] == std::byte{0}) continue;
    lost = false;
    written = written || found[i] == page.after[i];
  }
  if (lost && !std::ranges::equal(found, page.after)) return PageFinding::kLost;
  return lost || (written && IsOldOrNew(page, found)) ? PageFinding::kWritten : PageFinding::kOther;
}

// Pages are written only after the journal is synced, so one that a crash kept from becoming
// complete was never needed: its end or its start is missing, or parts of it are 0. Any other has
// been damaged since. The database is then compared with every page in it that is legible.
Recovery DamagedJournal(StorageFile& journal, StorageFile& database) {
  constexpr std::size_t kPageSize = kJet4Layout.page_size;
  std::array<std::byte, kJournalHeader> header{};
  const std::size_t read = journal.Read(0, header);
  const std::uint64_t stated = JournalLength(Bytes(header).first(read));
  const std::uint64_t size = journal.Size(), pages = database.Size() / kPageSize;
  const bool cut = read < header.size() || header[0] == std::byte{0} || size < stated;
  if (stated != 0 && database.Size() > Load<std::uint64_t>(&header[24]))
    return Recovery::kHalfWritten;

  bool lost = cut, matched = stated != 0, other = false;
  std::vector<std::byte> record(JournalLength(kPageSize, 1) - kJournalHeader), found(kPageSize);
  std::uint64_t at = kJournalHeader;
  for (std::uint64_t i = 0; i < pages && journal.Read(at, record) == record.size(); ++i) {
    at += record.size();
    const JournalPage page = PageOfRecord(record);
    if (page.number >= pages) {
      other = true;
      continue;
    }
    database.Read(std::uint64_t{page.number} * kPageSize, found);
    switch (ComparePage(page, found)) {
      case PageFinding::kWritten:
        return Recovery::kHalfWritten;
      case PageFinding::kBefore:
        matched = true;
        break;
      case PageFinding::kLost:
        lost = true;
        break;
      case PageFinding::kOther:
        other = true;
        break;
    }
  }
  if (cut || (lost && !other)) return Recovery::kDone;
  return matched && other ? Recovery::kHalfWritten : Recovery::kDamaged;
}

struct Judgement {
  Recovery recovery;
  std::optional<Journal> change = {};  // to be rolled back first
};

Judgement Judge(StorageFile& journal, StorageFile& database) {
  const std::uint64_t length = CompleteLength(journal);
  // A change has no more pages than the database had before it, and the database is not shorter
  // than that until the change is rolled back.
  constexpr std::size_t kPageSize = kJet4Layout.page_size;
  if (length > JournalLength(kPageSize, database.Size() / kPageSize))
    return {Recovery::kOverwritten};
  Journal change;
  if (!DecodeJournal(ReadStart(journal, length), change))
    return {DamagedJournal(journal, database)};
  switch (Compare(change, database)) {
    case Finding::kUntouched:
    case Finding::kReplaced:
      return {Recovery::kDone};
    case Finding::kInterrupted:
      return {Recovery::kDone, std::move(change)};
    case Finding::kMixed:
      break;
  }
  return {Recovery::kOverwritten};
}

}  // namespace

void RollBack(const Journal& journal, StorageFile& database) {
  for (const JournalPage& page : journal.pages) {
    database.Write(std::uint64_t{page.number} * journal.page_size, page.before);
  }
  if (database.Size() > journal.old_length) database.Truncate(journal.old_length);
  database.Sync();
}

Recovery RollBackInterruptedChange(StorageFile& journal, StorageFile& database) {
  const Judgement judgement = Judge(journal, database);
  if (judgement.change) RollBack(*judgement.change, database);
  return judgement.recovery;
}

bool IsUnneeded(StorageFile& journal, StorageFile& database) {
  const Judgement judgement = Judge(journal, database);
  return judgement.recovery == Recovery::kDone && !judgement.change;
}

}  // namespace tenora::access
