// Rolling back a change to a database that was interrupted, by the journal it left behind.
#pragma once

#include "platform/access/storage/file_storage.h"
#include "platform/access/storage/journal.h"

namespace tenora::access {

// Gives the pages of `journal` their old content and the database its old length, and syncs it.
// Raises StorageError.
void RollBack(const Journal& journal, StorageFile& database);

enum class Recovery {
  kDone,         // the journal is no longer needed
  kOverwritten,  // another program has written over part of the change, or it is another database's
  kDamaged,      // the journal is damaged, and nothing of a change is seen in the database
  kHalfWritten,  // the journal is damaged, and pages of the database may be half written
};

// Rolls back the change recorded in a journal file where it was interrupted; a change that never
// began, or a journal of another database, needs nothing. Nothing is written unless the result is
// kDone. Raises StorageError.
Recovery RollBackInterruptedChange(StorageFile& journal, StorageFile& database);

// Whether such a journal is no longer needed as it is, with nothing to be rolled back. Writes
// nothing. Raises StorageError.
bool IsUnneeded(StorageFile& journal, StorageFile& database);

}  // namespace tenora::access
