// What a run makes of all its letters together: one PDF, and a list for the post.
#pragma once

#include "letters/generate/run_ledger.h"
#include "letters/generation.h"
#include "rental/session.h"

namespace tenora {

// Makes what the run was asked for, in place of what an earlier attempt has made. Errors become
// problems of the result; of a run that was stopped there is no PDF.
MergedFiles MergeFiles(const RunLedger& log, Session& session, GenerationObserver& observer,
                       bool stopped);

}  // namespace tenora
