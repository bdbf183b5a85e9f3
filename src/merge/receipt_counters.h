// Who issues the receipt numbers of a branch's buildings: its file, or the server that they were
// handed over to. A file that has handed them over is marked, and issues none until it has them
// back.
#pragma once

#include <string>

#include "data/database.h"
#include "platform/query/engine.h"
#include "platform/runtime/date.h"
#include "platform/server/running_numbers.h"

namespace tenora {

// The custom field of a building that holds the last number issued.
inline constexpr const char* kCounterField = "NxtReceipt";

// " where parenttype=202 and …": the row of a building's counter.
std::string CounterCondition(const std::string& building);

// A counter's number, 0 for a text that is not a number. Raises 6 (Overflow) beyond
// 9007199254740991.
std::int64_t StoredNumber(const std::string& text);

// Raises 70 (Permission denied) for an open file that has handed its numbers over. Within a
// transaction no hand-over can come between this and the commit.
void RequireIssuedByFile(Database& database);

// Whether the file is marked.
bool HasHandedOver(query::EngineDatabase& file);

enum class HandOver { kDone, kAlready };

// These may be cut short at any moment: then nobody issues numbers, or who did before, and calling
// the same function again ends it. Raise ServerError, what changing the file raises, and 70 for a
// file whose numbers another server issues, or that is an older copy; back, also for a file that
// has not handed over the numbers that the server issues. `file` is the branch's, whose
// server::ImportTransaction the caller holds in another connection.
HandOver HandOverToServer(query::EngineDatabase& file, server::RunningNumbers& numbers);
HandOver HandBackToFile(query::EngineDatabase& file, server::RunningNumbers& numbers, Date today);

}  // namespace tenora
