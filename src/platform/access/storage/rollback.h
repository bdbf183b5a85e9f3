// Rolling back a change to a database that was interrupted, by the journal it left behind.
#pragma once

#include "platform/access/storage/file_storage.h"
#include "platform/access/storage/journal.h"

namespace tenora::access {

// Gives the pages of `journal` their old content and the database its old length, and syncs it.
// Raises StorageError.
void RollBack(const Journal& journal, StorageFile& database);

// Rolls back the change recorded in a journal file where it was interrupted; a change that never
// began, or a journal of another database, needs nothing. True: the journal is no longer needed.
// False, with nothing written: it can be another database's by its size, or another program has
// written over part of the change. Raises StorageError.
bool RollBackInterruptedChange(StorageFile& journal, StorageFile& database);

}  // namespace tenora::access
