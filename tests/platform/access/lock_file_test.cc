// The database engine's lock file. What other programs do is done here with plain system calls and
// the byte ranges of the public descriptions, such as 2000A601 to 2000A701 for a change of page 83
// by the first user.
#include "platform/access/storage/lock_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <future>
#include <numeric>

#include "platform/access/database_writer.h"
#include "platform/access/storage/exclusive_access.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::test {
namespace {

using access::LockFile;
using access::LockFilePath;
using access::WriteTransaction;
using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::StartsWith;

// Another program's open lock file.
class OtherProgram {
 public:
  explicit OtherProgram(const std::filesystem::path& path)
      : fd_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {}
  ~OtherProgram() { ::close(fd_); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  bool Lock(short type, std::uint64_t first, std::uint64_t last) const {
    struct flock lock = Range(type, first, last);
    return ::fcntl(fd_, F_OFD_SETLK, &lock) == 0;
  }
  // "2000a601-2000a701", "" for none.
  std::string LockFound(std::uint64_t first, std::uint64_t last) const {
    struct flock lock = Range(F_WRLCK, first, last);
    if (::fcntl(fd_, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return "";
    char text[64];
    std::snprintf(text, sizeof text, "%s%lx-%lx", lock.l_type == F_RDLCK ? "shared " : "",
                  static_cast<unsigned long>(lock.l_start),
                  static_cast<unsigned long>(lock.l_start + lock.l_len - 1));
    return text;
  }

 private:
  static struct flock Range(short type, std::uint64_t first, std::uint64_t last) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(first);
    lock.l_len = static_cast<off_t>(last - first + 1);
    return lock;
  }

  int fd_;
};

std::string Entry(std::string computer, std::string user) {
  computer.resize(32);
  user.resize(32);
  return computer + user;
}

class SharingTheLockFile : public testing::Test {
 protected:
  SharingTheLockFile() { std::filesystem::copy_file(SampleDatabase(), path_); }

  // Changes one row; "" or the error.
  std::string ErrorOfChange(milliseconds wait = milliseconds(20)) const {
    return ErrorOf([&] {
      WriteTransaction::Options options;
      options.wait_for_lock = wait;
      const auto transaction = WriteTransaction::Begin(path_, options);
      access::WritableTable& fields = transaction->Table("custom_fields");
      const auto row = fields.All().front();
      const Value old = fields.Read(row).back();
      fields.Update(row, {{"value", old == Value(std::string("b")) ? std::string("a") : "b"}});
      transaction->Commit();
    });
  }

  // The same in a process without superuser rights, which file modes do not stop.
  bool ChangeFails(const std::string& start_of_error) const {
    const pid_t child = ::fork();
    if (child == 0) {
      if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
      const std::string error = ErrorOfChange();
      ::_exit(error.starts_with(start_of_error) && error.empty() == start_of_error.empty() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
  }

  ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_ / "property.mdb";
  std::filesystem::path lock_path_ = scratch_ / "property.ldb";
  access::DiskStorage disk_;
};

TEST_F(SharingTheLockFile, OnlyLocksOnWhatIsChangedAreInTheWay) {
  WriteWholeFile(lock_path_, Entry("", "") + Entry("OFFICE-PC", "Admin"));
  const OtherProgram other(lock_path_);
  ASSERT_TRUE(other.Lock(F_WRLCK, 0x10000002, 0x10000002));
  const auto page = WriteTransaction::Begin(path_)->Table("custom_fields").All().front().page;
  const std::string content = ReadWholeFile(path_);
  std::uint32_t table = 0;
  content.copy(reinterpret_cast<char*>(&table), 4, page * 4096 + 4);
  const std::uint64_t p = page * 512, t = table * 512;
  const char* const page_error =
      "3260 - Could not update; currently locked by user 'Admin' on machine 'OFFICE-PC'.";
  const char* const table_error =
      "3261 - Table 'custom_fields' is exclusively locked by user 'Admin' on machine 'OFFICE-PC'.";
  const struct {
    const char* name;
    short type;
    std::uint64_t first, last;
    const char* error;
  } cases[] = {
      {"the page, being changed", F_WRLCK, 0x20000001 + p, 0x20000102 + p, page_error},
      {"the page, being read", F_RDLCK, 0x20000002 + p, 0x20000002 + p, page_error},
      {"the page before", F_WRLCK, 0x1FFFFE01 + p, 0x1FFFFF02 + p, ""},
      {"the page after", F_WRLCK, 0x20000201 + p, 0x20000302 + p, ""},
      {"the table, open", F_RDLCK, 0x40000002 + t, 0x40000002 + t, ""},
      {"the table, open for writing", F_RDLCK, 0x50000002 + t, 0x50000002 + t, ""},
      {"the table, denied to readers", F_WRLCK, 0x40000001 + t, 0x40000102 + t, table_error},
      {"the table, denied to writers", F_RDLCK, 0x60000002 + t, 0x60000002 + t, table_error},
      {"another table", F_WRLCK, 0x40000201 + t, 0x40000302 + t, ""},
      {"the page, by somebody unknown", F_WRLCK, 0x20000001 + p, 0x200001FF + p,
       "3218 - Could not update; currently locked by another program."},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(other.Lock(c.type, c.first, c.last)) << c.name;
    const std::string before = ReadWholeFile(path_);
    const std::string error = ErrorOfChange();
    EXPECT_THAT(error, StartsWith(c.error)) << c.name;
    EXPECT_EQ(error.empty(), *c.error == '\0') << c.name << error;
    EXPECT_EQ(ReadWholeFile(path_) == before, *c.error != '\0') << c.name;
    EXPECT_FALSE(std::filesystem::exists(access::JournalPath(path_)));
    ASSERT_TRUE(other.Lock(F_UNLCK, c.first, c.last));
  }
  EXPECT_TRUE(std::filesystem::exists(lock_path_)) << "another program is in it";
}

TEST_F(SharingTheLockFile, AChangeWaitsUntilALockIsFree) {
  auto other = std::make_unique<OtherProgram>(lock_path_);
  ASSERT_TRUE(other->Lock(F_WRLCK, 0x20000001, 0x2FFFFFFF));
  auto change = std::async(std::launch::async, [&] { return ErrorOfChange(milliseconds(60000)); });
  other.reset();
  EXPECT_EQ(change.get(), "");
}

TEST_F(SharingTheLockFile, OtherProgramsSeeOurLocks) {
  const OtherProgram first(lock_path_);
  ASSERT_TRUE(first.Lock(F_WRLCK, 0x10000001, 0x10000001));
  auto lock = LockFile::Enter(disk_, path_, milliseconds(20));
  EXPECT_EQ(first.LockFound(0x10000002, 0x100000FF), "10000002-10000002");
  EXPECT_EQ(first.LockFound(0x20000000, 0x6FFFFFFF), "");
  lock->LockForChange({83}, {{100, "tenant"}}, milliseconds(20));
  EXPECT_EQ(first.LockFound(0x20000000, 0x2FFFFFFF), "2000a601-2000a702");
  EXPECT_EQ(first.LockFound(0x40000000, 0x4FFFFFFF), "shared 4000c802-4000c802");
  EXPECT_EQ(first.LockFound(0x50000000, 0x6FFFFFFF), "shared 5000c802-5000c802");
  // Of very many pages neighbours share a lock, and very many gaps are locked too.
  std::vector<std::uint32_t> pages(30000);
  std::iota(pages.begin(), pages.end(), 200);
  lock->LockForChange(pages, {}, milliseconds(20));
  EXPECT_EQ(first.LockFound(0x20019000, 0x2FFFFFFF), "20019001-20ebef02");
  for (std::uint32_t& page : pages) page = 2 * page + 60000;
  lock->LockForChange(pages, {}, milliseconds(20));
  EXPECT_EQ(first.LockFound(0x21D7E000, 0x2FFFFFFF), "21d7e001-23ac9d02");
  const std::string entries = ReadWholeFile(lock_path_);
  ASSERT_EQ(entries.size(), 128U);
  char host[256] = {};
  ::gethostname(host, sizeof host - 1);
  EXPECT_STREQ(entries.c_str() + 64, std::string(host).substr(0, 31).c_str());
  EXPECT_NE(entries[96], '\0') << "the user's name";
  lock.reset();
  EXPECT_EQ(first.LockFound(0x10000001, 0x6FFFFFFF), "");
  EXPECT_TRUE(std::filesystem::exists(lock_path_));
}

TEST_F(SharingTheLockFile, IsMadeByWritersJoinedByReadersAndRemovedByTheLast) {
  const struct {
    const char* database;
    const char* there;  // in the folder before
    const char* used;
  } names[] = {{"property.mdb", "", "property.ldb"},
               {"x.accdb", "", "x.laccdb"},
               {"A.ACCDE", "", "A.laccdb"},
               {"without", "", "without.ldb"},
               {"property.mdb", "PROPERTY.LDB", "PROPERTY.LDB"}};
  for (const auto& name : names) {
    const ScratchFolder folder;
    WriteWholeFile(folder / name.database, "");
    if (*name.there != '\0') WriteWholeFile(folder / name.there, Entry("GONE", "Admin"));
    auto lock = LockFile::Enter(disk_, folder / name.database, milliseconds(20));
    EXPECT_TRUE(std::filesystem::exists(folder / name.used)) << name.used;
    lock.reset();
    EXPECT_FALSE(std::filesystem::exists(folder / name.used)) << name.used;
  }
  // A reader makes none.
  auto reader = access::DatabaseFile::Open(path_);
  EXPECT_FALSE(std::filesystem::exists(lock_path_));
  // It joins one; the writer leaves first.
  auto writer = WriteTransaction::Begin(path_);
  reader = access::DatabaseFile::Open(path_);
  writer.reset();
  EXPECT_EQ(OtherProgram(lock_path_).LockFound(0x10000001, 0x100000FF), "10000002-10000002");
  EXPECT_EQ(ErrorOfChange(), "") << "somebody who only reads is not in the way";
  reader.reset();
  EXPECT_FALSE(std::filesystem::exists(lock_path_));
  // One that a crash left does no harm, whoever removes it, and is found through a link.
  std::filesystem::create_symlink("property.mdb", scratch_ / "link.mdb");
  for (const char* name : {"property.mdb", "link.mdb"}) {
    WriteWholeFile(lock_path_, Entry("GONE", "Admin").substr(0, 40));
    EXPECT_NE(LockFile::JoinOthers(disk_, scratch_ / name), nullptr);
    EXPECT_FALSE(std::filesystem::exists(lock_path_));
  }
}

TEST_F(SharingTheLockFile, WhatIsNoLockFileIsLeftAlone) {
  const auto victim = scratch_ / "victim";
  for (const bool symbolic : {true, false}) {
    WriteWholeFile(victim, "precious");
    symbolic ? std::filesystem::create_symlink(victim, lock_path_)
             : std::filesystem::create_hard_link(victim, lock_path_);
    EXPECT_EQ(ErrorOf([&] { access::DatabaseFile::Open(path_); }), "");
    EXPECT_THAT(ErrorOfChange(), HasSubstr(lock_path_.string()));
    EXPECT_EQ(ReadWholeFile(victim), "precious");
    std::filesystem::remove(lock_path_);
  }
  // The names in it are anybody's bytes.
  WriteWholeFile(lock_path_, Entry("\x1b[2J\xFC\xFF", std::string(32, 'x')));
  const OtherProgram other(lock_path_);
  ASSERT_TRUE(other.Lock(F_WRLCK, 0x10000001, 0x10000001));
  const auto page = WriteTransaction::Begin(path_)->Table("custom_fields").All().front().page;
  const std::uint64_t start = 0x20000001 + page * 512;
  ASSERT_TRUE(other.Lock(F_WRLCK, start, start + 0x100));
  EXPECT_THAT(ErrorOfChange(),
              HasSubstr("'" + std::string(32, 'x') + "' on machine '?[2J\u00FC\u00FF'."));
}

TEST_F(SharingTheLockFile, OneThatMayNotBeWrittenIsLookedAt) {
  ASSERT_EQ(::chmod(scratch_.path().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);
  WriteWholeFile(lock_path_, Entry("OFFICE-PC", "Admin"));
  ASSERT_EQ(::chmod(lock_path_.c_str(), 0444), 0);
  EXPECT_TRUE(ChangeFails(""));
  const OtherProgram other(lock_path_);
  ASSERT_TRUE(other.Lock(F_WRLCK, 0x10000001, 0x10000001));
  const auto page = WriteTransaction::Begin(path_)->Table("custom_fields").All().front().page;
  const std::uint64_t start = 0x20000001 + page * 512;
  ASSERT_TRUE(other.Lock(F_WRLCK, start, start + 0x100));
  EXPECT_TRUE(ChangeFails("3260 - "));
  ASSERT_EQ(::chmod(lock_path_.c_str(), 0400), 0);
  EXPECT_TRUE(ChangeFails("3050 - Could not lock file."));
}

// Each process counts on in a file while it has the lock: a number that is lost shows that two
// were in different lock files.
TEST_F(SharingTheLockFile, ManyThatComeAndGoUseOneFile) {
  constexpr int kProcesses = 4, kRounds = 100;
  const auto count = scratch_ / "count";
  WriteWholeFile(count, "0");
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    for (int round = 0; round < kRounds; ++round) {
      const auto lock = LockFile::Enter(disk_, path_, milliseconds(60000));
      const auto reader = LockFile::JoinOthers(disk_, path_);
      lock->LockForChange({7}, {}, milliseconds(60000));
      WriteWholeFile(count, std::to_string(std::stoi(ReadWholeFile(count)) + 1));
    }
    ::_exit(0);
  }
  for (const pid_t child : children) {
    int status = 1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(ReadWholeFile(count), std::to_string(kProcesses * kRounds));
  EXPECT_FALSE(std::filesystem::exists(lock_path_));
}

}  // namespace
}  // namespace tenora::test
