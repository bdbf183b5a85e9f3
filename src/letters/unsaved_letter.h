// A changed letter as it is kept while it is not saved, so that nothing that was typed is lost when
// the program ends without closing it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/runtime/date.h"

namespace tenora {

// How a file was found or left, to tell when another program changes it.
struct FileStamp {
  std::int64_t time = 0;  // of the last change, in the file system's own units
  std::uint64_t size = 0;

  bool operator==(const FileStamp&) const = default;
};

// None when the file cannot be examined.
std::optional<FileStamp> StampOf(const std::filesystem::path& path);

struct UnsavedLetter {
  // The members of the letter, see LetterMembers.
  std::string title, recipient, kind, tenant_code;
  std::int32_t receipt_number = 0;
  std::string path;                // empty: never saved
  std::optional<FileStamp> saved;  // the file when the letter was loaded or last saved
  std::string program_folder;      // of the program that kept it
  Date kept;
  std::string text;  // RTF
};

// The form in which it is kept: lines of a name, "=" and a value, an empty line and the text.
std::string WriteUnsavedLetter(const UnsavedLetter& letter);
// None for anything else.
std::optional<UnsavedLetter> ReadUnsavedLetter(std::string_view source);

}  // namespace tenora
