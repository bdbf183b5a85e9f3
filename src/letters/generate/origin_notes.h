// For whom letters were that have been edited and saved in a folder which several recipients of one
// name share: no run has logged their content. One file of the data folder, "Namesakes.log", has a
// line for each such save; docs/generating.md describes it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tenora {

struct OriginNote {
  std::string file;  // below the data folder
  std::string letter_kind;
  std::string code;         // of a tenancy
  std::string fingerprint;  // of the content
};

// Oldest first; none where the file cannot be read. A damaged line is left out. Raises nothing.
std::vector<OriginNote> OriginNotesIn(const std::filesystem::path& data_folder);

// Adds a line. A note that cannot be written is left out. Raises nothing.
void AddOriginNote(const std::filesystem::path& data_folder, const OriginNote& note);

}  // namespace tenora
