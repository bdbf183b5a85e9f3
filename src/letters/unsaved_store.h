// The folder in which a user's programs keep their unsaved letters. Each program has a session, a
// folder in it with a file for each letter and a lock that the system releases when the program
// ends, however it ends: what is in a session without its lock was left behind. Only the user can
// enter the folder, and no link in it is followed.
#pragma once

#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "letters/unsaved_letter.h"

namespace tenora {

class UnsavedStore {
 public:
  // The folder is made when something is first kept.
  explicit UnsavedStore(std::filesystem::path folder) : folder_(std::move(folder)) {}
  // What is still kept stays for the next program.
  ~UnsavedStore();
  UnsavedStore(const UnsavedStore&) = delete;
  UnsavedStore& operator=(const UnsavedStore&) = delete;

  // Keeps the letter, in place of what was kept under this number; it is on the disk when the call
  // returns. Raises the errors of WriteWholeFile, and 75 (Path/File access error) where the folder
  // is not this user's alone; what was kept before then stays.
  void Keep(int number, const UnsavedLetter& letter);
  void Drop(int number) noexcept;

  struct Left {
    UnsavedLetter letter;
    std::filesystem::path file;
  };
  // What ended programs of this program folder have left, newest first. Other programs do not find
  // it as long as this one runs. Raises nothing: what cannot be read is passed over and stays.
  std::vector<Left> FindLeft(std::string_view program_folder);
  void Discard(const Left& left) noexcept;

 private:
  // A session that this program holds the lock of.
  struct Session {
    std::filesystem::path folder;
    int lock = -1;
  };

  void BeginSession();
  // Removes the session if it has no letters; true then.
  static bool EndIfEmpty(const Session& session) noexcept;
  std::filesystem::path FileOf(int number) const;

  std::filesystem::path folder_;
  Session own_;
  std::vector<Session> taken_over_;
};

}  // namespace tenora
