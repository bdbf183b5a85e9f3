// How old the data of a branch on a server are.
#pragma once

#include <chrono>
#include <string>

#include "platform/runtime/date.h"

namespace tenora {

// "North: data of 08:00", of another day than today "North: data of 21 November 2026 08:00".
std::string DataAgeText(const std::string& branch, Date taken, Date now);

// Whether they are older than this.
bool IsOlder(Date taken, Date now, std::chrono::minutes age);

}  // namespace tenora
