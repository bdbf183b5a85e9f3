// Several programs and one file: changes exclude one another, none is lost, conflicts give clear
// errors.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/access/check.h"
#include "platform/access/database_writer.h"
#include "platform/access/storage/exclusive_access.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::test {
namespace {

using access::JournalPath;
using access::WritableTable;
using access::WriteTransaction;

class SharingTheFile : public testing::Test {
 protected:
  SharingTheFile() { std::filesystem::copy_file(SampleDatabase(), path_); }

  std::string ErrorOfBegin() const {
    WriteTransaction::Options options;
    options.wait_for_lock = std::chrono::milliseconds(30);
    return ErrorOf([&] { WriteTransaction::Begin(path_, options); });
  }

  ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_ / "property.mdb";
};

TEST_F(SharingTheFile, AnotherProgramsOpenHandleIsNoObstacleButItsReadLockIs) {
  const int other = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(other, 0);
  EXPECT_EQ(ErrorOfBegin(), "");
  struct flock lock {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  lock.l_len = 100;
  ASSERT_EQ(::fcntl(other, F_OFD_SETLK, &lock), 0);
  EXPECT_THAT(ErrorOfBegin(), testing::StartsWith("3218 - Could not update; currently locked."));
  EXPECT_FALSE(std::filesystem::exists(JournalPath(path_)));
  ::close(other);
  EXPECT_EQ(ErrorOfBegin(), "");
}

TEST_F(SharingTheFile, AReadLockExcludesWritersButNotReaders) {
  const auto wait = std::chrono::milliseconds(30);
  const auto lock = access::ReadLock::Take(path_, wait);
  const auto second = access::ReadLock::Take(path_, wait);
  EXPECT_THAT(ErrorOfBegin(), testing::StartsWith("3218 - "));
}

TEST_F(SharingTheFile, ACheckWaitsForAWriter) {
  const auto check = [&] { access::CheckDatabase(path_, std::chrono::milliseconds(30)); };
  auto transaction = WriteTransaction::Begin(path_);
  EXPECT_THAT(ErrorOf(check), testing::StartsWith("3218 - "));
  transaction.reset();
  EXPECT_EQ(ErrorOf(check), "");
}

TEST_F(SharingTheFile, AConcurrentChangeByAnotherProgramIsNotOverwritten) {
  const auto transaction = WriteTransaction::Begin(path_);
  WritableTable& fields = transaction->Table("custom_fields");
  const auto row = fields.All().front();
  fields.Update(row, {{"value", std::string("ours")}});
  const int other = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  const char theirs = '!';
  const auto at = static_cast<off_t>(row.page) * 4096 + 4000;
  ASSERT_EQ(::pwrite(other, &theirs, 1, at), 1);
  ::close(other);
  const std::string before = ReadWholeFile(path_);
  EXPECT_EQ(NumberOf([&] { transaction->Commit(); }), 3197);
  EXPECT_EQ(ReadWholeFile(path_), before);
}

// Files that are not journals, are incomplete, or belong to another database: the database does not
// change and the journal is removed.
TEST_F(SharingTheFile, StaleAndHalfWrittenJournalsChangeNothing) {
  const std::string before = ReadWholeFile(path_);
  const auto* start = reinterpret_cast<const std::byte*>(before.data());
  access::Journal journal;
  journal.page_size = 4096;
  journal.old_length = journal.new_length = before.size();
  journal.identity = access::DatabaseIdentity({start, 0x300});
  journal.pages.push_back(
      {30, std::vector<std::byte>(4096, std::byte{1}), std::vector<std::byte>(4096, std::byte{2})});
  const auto replaced = access::EncodeJournal(journal);
  journal.identity ^= 1;
  const auto foreign = access::EncodeJournal(journal);
  const auto text = [](const std::vector<std::byte>& bytes, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), size);
  };
  const std::string cases[] = {"",
                               "x",
                               std::string(70, '\0'),
                               text(replaced, 64),
                               text(replaced, replaced.size() - 1),
                               text(replaced, replaced.size()),
                               text(foreign, foreign.size())};
  for (const std::string& content : cases) {
    WriteWholeFile(JournalPath(path_), content);
    access::DatabaseFile::Open(path_);
    EXPECT_EQ(ErrorOfBegin(), "");
    EXPECT_EQ(ReadWholeFile(path_), before);
    EXPECT_FALSE(std::filesystem::exists(JournalPath(path_)));
  }
}

// A journal that no crash leaves like this has been damaged since. What is legible of it decides.
TEST_F(SharingTheFile, ADamagedJournalIsKeptAndNamed) {
  const std::string before = ReadWholeFile(path_);
  std::string after = before;
  for (const std::size_t page : {30, 31}) after.replace(page * 4096 + 100, 8, "changed!");
  const auto page = [](const std::string& content, std::size_t number) {
    const auto* start = reinterpret_cast<const std::byte*>(content.data()) + number * 4096;
    return std::vector<std::byte>(start, start + 4096);
  };
  access::Journal journal;
  journal.page_size = 4096;
  journal.old_length = journal.new_length = before.size();
  journal.identity =
      access::DatabaseIdentity({reinterpret_cast<const std::byte*>(before.data()), 0x300});
  for (const std::uint32_t number : {30, 31})
    journal.pages.push_back({number, page(before, number), page(after, number)});
  const auto bytes = access::EncodeJournal(journal);
  const std::string whole(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  constexpr std::size_t kFirst = 64, kSecond = kFirst + 8200;
  const auto flip = [&](std::size_t at) {
    std::string damaged = whole;
    damaged[at] ^= 0x55;
    return damaged;
  };
  std::string zeroed = whole;
  zeroed.replace(kSecond, 4096, 4096, '\0');
  const std::string half = before.substr(0, 31 * 4096) + after.substr(31 * 4096);
  enum Result { kDiscarded, kAside, kRefused };
  const struct {
    const char* name;
    std::string journal, database;
    Result result;
  } cases[] = {
      {"header, nothing written", flip(20), before, kAside},
      {"header, one page written", flip(20), half, kRefused},
      {"signature, one page written", flip(0), half, kRefused},
      {"new content, nothing written", flip(kFirst + 8 + 4096 + 50), before, kAside},
      {"old content, nothing written", flip(kFirst + 8 + 50), before, kRefused},
      {"old content, both written", flip(kFirst + 8 + 50), after, kRefused},
      {"page number", flip(kFirst + 2), before, kRefused},
      {"longer", whole + "x", half, kRefused},
      {"pages appended", flip(kFirst + 8 + 4096 + 50), before + std::string(4096, 'a'), kRefused},
      {"somebody else's file", "Notes of the office\n" + std::string(9000, 'n'), before, kAside},
      {"lost in a power failure", zeroed, before, kDiscarded},
      {"cut short", whole.substr(0, whole.size() - 9), before, kDiscarded},
      {"cut short, one page written", whole.substr(0, kSecond), after, kRefused},
  };
  for (const auto& c : cases) {
    const std::string kept = JournalPath(path_).string() + ".damaged";
    WriteWholeFile(kept, "of an earlier time");
    WriteWholeFile(path_, c.database);
    WriteWholeFile(JournalPath(path_), c.journal);
    const std::string error = ErrorOfBegin();
    EXPECT_EQ(error.starts_with("3049 - The journal "), c.result != kDiscarded) << c.name << error;
    EXPECT_EQ(error.find(kept + "(1)'") != std::string::npos, c.result == kAside) << c.name;
    EXPECT_EQ(ErrorOfBegin() == "", c.result != kRefused) << c.name;
    EXPECT_EQ(std::filesystem::exists(JournalPath(path_)), c.result == kRefused) << c.name;
    if (c.result == kAside) {
      EXPECT_EQ(ReadWholeFile(kept + "(1)"), c.journal) << c.name;
    }
    EXPECT_EQ(ReadWholeFile(kept), "of an earlier time");
    EXPECT_EQ(ReadWholeFile(path_), c.database) << c.name;
    std::filesystem::remove(kept + "(1)");
  }
}

// Whoever may write to the folder must not get the journal written into, or read as, another file.
TEST_F(SharingTheFile, AJournalThatIsALinkIsNamedAndLeftAlone) {
  const auto victim = scratch_ / "victim";
  const auto journal = JournalPath(path_);
  const std::string before = ReadWholeFile(path_);
  const struct {
    bool symbolic;
    const char* content;
    const char* error;
  } cases[] = {{true, "", "it is a symbolic link, which is not followed here"},
               {true, "precious", "it is a symbolic link, which is not followed here"},
               {false, "precious", "the file has a second name, a hard link"}};
  for (const auto& planted : cases) {
    SCOPED_TRACE(planted.error);
    WriteWholeFile(victim, planted.content);
    planted.symbolic ? std::filesystem::create_symlink(victim, journal)
                     : std::filesystem::create_hard_link(victim, journal);
    EXPECT_THAT(ErrorOfBegin(), testing::AllOf(testing::HasSubstr(journal.string()),
                                               testing::HasSubstr(planted.error)));
    EXPECT_EQ(ReadWholeFile(victim), planted.content);
    EXPECT_EQ(ReadWholeFile(path_), before);
    std::filesystem::remove(journal);
  }
  // A link to the database itself is the administrator's.
  std::filesystem::create_directory(scratch_ / "shared");
  std::filesystem::rename(path_, scratch_ / "shared/property.mdb");
  std::filesystem::create_symlink("shared/property.mdb", path_);
  EXPECT_EQ(ErrorOfBegin(), "");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(SharingTheFile, AnInterruptedChangeOverwrittenByAnotherProgramIsReported) {
  std::string content = ReadWholeFile(path_);
  const auto page = [&](std::size_t number) {
    const auto* start = reinterpret_cast<const std::byte*>(content.data()) + number * 4096;
    return std::vector<std::byte>(start, start + 4096);
  };
  access::Journal journal;
  journal.page_size = 4096;
  journal.old_length = journal.new_length = content.size();
  journal.identity =
      access::DatabaseIdentity({reinterpret_cast<const std::byte*>(content.data()), 0x300});
  // Page 30 has the content that the change wrote, page 31 content that it did not.
  journal.pages.push_back({30, std::vector<std::byte>(4096), page(30)});
  journal.pages.push_back(
      {31, std::vector<std::byte>(4096, std::byte{1}), std::vector<std::byte>(4096, std::byte{2})});
  const auto bytes = access::EncodeJournal(journal);
  WriteWholeFile(JournalPath(path_), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  EXPECT_THAT(ErrorOfBegin(), testing::StartsWith("3049 - A change to "));
  EXPECT_EQ(ReadWholeFile(path_), content);
  // Pages that another program has appended since must not be cut off with the change.
  journal.pages.pop_back();
  const auto shorter = access::EncodeJournal(journal);
  WriteWholeFile(JournalPath(path_),
                 {reinterpret_cast<const char*>(shorter.data()), shorter.size()});
  const std::string longer = content + std::string(4096, 'x');
  WriteWholeFile(path_, longer);
  EXPECT_THAT(ErrorOfBegin(), testing::StartsWith("3049 - A change to "));
  EXPECT_EQ(ReadWholeFile(path_), longer);
  // The same in a database with fewer pages than the journal.
  WriteWholeFile(JournalPath(path_), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  WriteWholeFile(path_, content.substr(0, 4096));
  EXPECT_THAT(ErrorOfBegin(), testing::StartsWith("3049 - A change to "));
  EXPECT_EQ(ReadWholeFile(path_), content.substr(0, 4096));
  EXPECT_TRUE(std::filesystem::exists(JournalPath(path_)));
}

// In a process without superuser rights, since file modes do not stop the superuser.
TEST_F(SharingTheFile, AReadOnlyFileOrFolderRaisesAnErrorAndNothingChanges) {
  const std::string before = ReadWholeFile(path_);
  for (const bool folder : {false, true}) {
    ASSERT_EQ(::chmod(path_.c_str(), folder ? 0666 : 0444), 0);
    ASSERT_EQ(::chmod(scratch_.path().c_str(), folder ? 0555 : 0777), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
      ::_exit(ErrorOfBegin().starts_with("3027 - Cannot update.") ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << (folder ? "folder" : "file");
  }
  ASSERT_EQ(::chmod(scratch_.path().c_str(), 0777), 0);
  EXPECT_EQ(ReadWholeFile(path_), before);
  EXPECT_FALSE(std::filesystem::exists(JournalPath(path_)));
}

// Nor is a reader told that it cannot update; and a journal that it cannot remove is no obstacle
// unless the database needs it.
TEST_F(SharingTheFile, AReaderWithoutRightsToWriteReadsWhatItCan) {
  const std::string content = ReadWholeFile(path_);
  const auto* start = reinterpret_cast<const std::byte*>(content.data());
  access::Journal journal;
  journal.page_size = 4096;
  journal.old_length = journal.new_length = content.size();
  journal.identity = access::DatabaseIdentity({start, 0x300});
  const std::vector<std::byte> page(start + 30 * 4096, start + 31 * 4096);
  const auto bytes = [&](std::vector<std::byte> before, std::vector<std::byte> after) {
    journal.pages = {{30, std::move(before), std::move(after)}};
    const auto encoded = access::EncodeJournal(journal);
    return std::string(reinterpret_cast<const char*>(encoded.data()), encoded.size());
  };
  const std::vector<std::byte> other(4096, std::byte{1});
  const std::string written = bytes(other, page), unwritten = bytes(page, other);
  const struct {
    const char* name;
    mode_t mode;
    std::string journal;
    const char* error;  // a part of the reader's
  } cases[] = {
      {"unreadable", 0, "", "permission to view"},
      {"interrupted", 0444, written, "interrupted"},
      {"damaged", 0444, "Notes of the office\n" + std::string(9000, 'n'), "interrupted"},
      {"garbage", 0444, "garbage!", ""},
      {"cut short", 0444, unwritten.substr(0, 5000), ""},
      {"not begun", 0444, unwritten, ""},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(::chmod(scratch_.path().c_str(), 0755), 0);
    WriteWholeFile(JournalPath(path_), c.journal);
    ASSERT_EQ(::chmod(JournalPath(path_).c_str(), 0444), 0);
    ASSERT_EQ(::chmod(path_.c_str(), c.mode), 0);
    ASSERT_EQ(::chmod(scratch_.path().c_str(), 0555), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
      const std::string locking =
          ErrorOf([&] { access::ReadLock::Take(path_, std::chrono::milliseconds(0)); });
      const std::string opening = ErrorOf([&] { access::DatabaseFile::Open(path_); });
      const bool refused = *c.error != '\0';
      bool right = true;
      for (const std::string& said : {locking, opening})
        right = right && said.starts_with("3051 - ") == refused && said.empty() != refused &&
                said.find(c.error) != std::string::npos;
      ::_exit(right ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << c.name;
    ASSERT_EQ(::chmod(scratch_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(JournalPath(path_).c_str(), 0644), 0);
    EXPECT_EQ(ReadWholeFile(JournalPath(path_)), c.journal) << c.name;
  }
}

}  // namespace
}  // namespace tenora::test
