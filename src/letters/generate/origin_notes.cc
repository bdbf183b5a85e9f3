#include "letters/generate/origin_notes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "Namesakes.log";
constexpr std::size_t kLargest = std::size_t{64} << 20;
constexpr std::size_t kFields = 4;

bool FitsOnALine(std::string_view field) {
  return std::ranges::none_of(field, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

}  // namespace

std::vector<OriginNote> OriginNotesIn(const fs::path& data_folder) {
  std::vector<OriginNote> notes;
  try {
    for (const std::string& line : Split(ReadWholeFile(data_folder / kFileName, kLargest), "\n")) {
      std::vector<std::string> fields = Split(line, "\t");
      if (fields.size() != kFields) continue;
      notes.push_back({fields[0], fields[1], fields[2], fields[3]});
    }
  } catch (const RuntimeError&) {
    notes.clear();  // mostly because nothing was ever noted
  }
  return notes;
}

void AddOriginNote(const fs::path& data_folder, const OriginNote& note) {
  if (!FitsOnALine(note.file) || !FitsOnALine(note.code)) return;
  const int fd = OpenOwnFile(data_folder / kFileName, O_WRONLY | O_APPEND | O_CREAT, 0666);
  if (fd < 0) return;
  // The line break is in front: what a power cut has left of the last line stays apart.
  const std::string line =
      "\n" + note.file + "\t" + note.letter_kind + "\t" + note.code + "\t" + note.fingerprint;
  static_cast<void>(::write(fd, line.data(), line.size()));
  ::close(fd);
}

}  // namespace tenora
