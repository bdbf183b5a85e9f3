// The letters of a run as a list for whoever takes them to the post.
#pragma once

#include <filesystem>
#include <string>

#include "letters/generate/run_log_format.h"
#include "rental/caches.h"

namespace tenora {

// What the list begins with, by which it is known again.
extern const std::string kPostListBegin;

// The list as CSV: UTF-8 with a byte order mark and CRLF, a header, and a line for each letter in
// the run's order: number, name, code, three address lines, e-mail address, file, result, reason. A
// cell that a spreadsheet would take for a formula begins with an apostrophe.
std::string PostList(const LoggedRun& run, const std::filesystem::path& data_folder,
                     const Caches& caches);

}  // namespace tenora
