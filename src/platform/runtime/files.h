// Reading and writing whole files, and paths as the system's texts write them. Every error names
// the path.
#pragma once

#include <sys/types.h>

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
// and then takes the name. A file that was there keeps its mode; a link is replaced, not followed.
// Raises 61 (Disk full), 70, 75 or 76 (Path not found); the old file then stays.
void WriteWholeFile(const std::filesystem::path& path, std::string_view content);

// As WriteWholeFile; a new file is for its owner alone.
void WritePrivateFile(const std::filesystem::path& path, std::string_view content);

// Whether a file is on the disk when the call returns, or only after the next SyncFiles.
enum class Durability { kSynced, kUntilSync };

// As WriteWholeFile, but never replaces a file: false when the name is taken, also by a file that
// another program creates at the same moment. With kUntilSync a power cut before the next SyncFiles
// may leave the file empty; the end of this process alone does not harm it.
bool WriteNewFile(const std::filesystem::path& path, std::string_view content,
                  Durability durability = Durability::kSynced);

// Opens a log or lock, which is written in place, with the flags of open(2); its descriptor belongs
// to the caller. Whoever may write to the folder must not be able to lead the writing elsewhere: -1
// with errno ELOOP for a symbolic link, EMLINK for a file with a second name, EINVAL or ENXIO for a
// pipe or device, else as open(2). Never waits.
int OpenOwnFile(const std::filesystem::path& path, int flags, mode_t mode = 0);

// Whether this is a symbolic link that was made neither by the administrator nor by this user nor
// by whoever owns the folder it is in: such a link is no part of anybody's set-up.
bool IsForeignLink(const std::filesystem::path& path);

// Makes a folder, also those above it, unless it is there. Raises the errors of FileError, and 75
// for a foreign link in its place.
void MakeFolder(const std::filesystem::path& folder);

// Raises 76 (Path not found) with the folder's name where it is not there: it may be that of a
// server which is not connected, and a new one in its place would hide that.
void RequireFolder(const std::filesystem::path& folder);

// MakeFolder of a folder in one that is there. Raises as RequireFolder does for the latter.
void MakeSubfolder(const std::filesystem::path& folder);

// Gives a file another name in its file system; false, and nothing changed, where that name is
// taken. Raises the errors of FileError.
bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

// Flushes everything written so far to this folder's file system to disk: one wait for a group of
// files instead of one each. Raises the errors of FileError.
void SyncFiles(const std::filesystem::path& folder);

// Whether the folder is on another machine, as far as the system knows: what it says of syncing a
// whole file system then, and of names that are free, is not to be relied upon.
bool IsOnNetwork(const std::filesystem::path& folder);

// The error for an errno value of a failed file operation on `path`.
class RuntimeError;
RuntimeError FileError(int errno_value, const std::filesystem::path& path);

}  // namespace tenora
