// Reading and writing whole files, and paths as the system's texts write them. Every error names
// the path.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace tenora {

// A path with the backslashes of stored settings and message texts turned into the platform's
// separators, doubled ones folded.
std::filesystem::path NativePath(std::string_view path);

// Raises 53 (File not found), 70 (Permission denied) or 75 (Path/File access error), the last also
// for more than `most` bytes: a hostile file must not exhaust memory.
std::string ReadWholeFile(const std::filesystem::path& path,
                          std::size_t most = std::size_t{1} << 30);

// Writes the file whole or not at all: the text goes to a new file in the same folder, is synced
// and then renamed. Raises 61 (Disk full), 70, 75 or 76 (Path not found); the old file then
// stays.
void WriteWholeFile(const std::filesystem::path& path, std::string_view content);

// Whether a file is on the disk when the call returns, or only after the next SyncFiles.
enum class Durability { kSynced, kUntilSync };

// As WriteWholeFile, but never replaces a file: false when the name is taken, also by a file that
// another program creates at the same moment. With kUntilSync a power cut before the next SyncFiles
// may leave the file empty; the end of this process alone does not harm it.
bool WriteNewFile(const std::filesystem::path& path, std::string_view content,
                  Durability durability = Durability::kSynced);

// Gives a file another name in its file system; false, and nothing changed, where that name is
// taken. Raises the errors of FileError.
bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

// Flushes everything written so far to this folder's file system to disk: one wait for a group of
// files instead of one each. Raises the errors of FileError.
void SyncFiles(const std::filesystem::path& folder);

// The error for an errno value of a failed file operation on `path`.
class RuntimeError;
RuntimeError FileError(int errno_value, const std::filesystem::path& path);

}  // namespace tenora
