#include "platform/registry/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/runtime/files.h"
#include "support/environment.h"
#include "support/test_files.h"

namespace tenora::registry {
namespace {

using testing::HasSubstr;

constexpr const char* kKey = "SOFTWARE\\Tenora\\Mail\\PrinterSetup";

StoredValue Text(std::string text) { return {ValueType::kText, std::move(text)}; }

class RegistryTest : public testing::Test {
 protected:
  std::string Read(Hive hive, std::string_view key, std::string_view name) const {
    StoredValue value;
    const int status = registry_->Query(hive, key, name, value);
    return status == kSuccess ? value.bytes : "status " + std::to_string(status);
  }
  std::filesystem::path UserFile() const { return registry_->FileOf(Hive::kCurrentUser); }

  test::ScratchFolder folder_;
  std::unique_ptr<Registry> registry_ = Registry::Open(folder_ / "etc", folder_ / "home/config");
};

TEST_F(RegistryTest, KeepsEveryTextAsItWas) {
  const std::string texts[] = {
      "",
      "plain",
      "\\\\server\\share\\property.mdb",
      "C:\\new\\table",
      "\"quoted\" and = \"more\"",
      "\"",
      "two\r\nlines\tand a tab\n",
      "[SOFTWARE\\Tenora]",
      "; no comment",
      "End of settings",
      "<U+000A> and <0xFF> as typed, <b>",
      std::string("zero\0inside\0", 12),
      "M\xC4\x81huta \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8F\xA0 \xEF\xBF\xBD",
      "latin \xE9t\xE9 cut \xE2\x82",
      "  blanks kept  ",
      "next\xC2\x85line\xE2\x80\xA8separator",
      std::string(100'000, 'x'),
  };
  for (const std::string& text : texts) {
    ASSERT_EQ(registry_->Set(Hive::kCurrentUser, kKey, text + " name", Text(text)), kSuccess);
  }
  for (const std::string& text : texts) {
    EXPECT_EQ(Read(Hive::kCurrentUser, kKey, text + " name"), text);
  }
}

TEST_F(RegistryTest, KeepsNumbersAndTheirType) {
  const StoredValue number{ValueType::kDword, std::string("\x05\x01\x00\xFF", 4)};
  ASSERT_EQ(registry_->Set(Hive::kLocalMachine, kKey, "Left", number), kSuccess);
  StoredValue read;
  ASSERT_EQ(registry_->Query(Hive::kLocalMachine, kKey, "Left", read), kSuccess);
  EXPECT_EQ(read.type, ValueType::kDword);
  EXPECT_EQ(read.bytes, number.bytes);
  EXPECT_EQ(registry_->Set(Hive::kLocalMachine, kKey, "Left", {ValueType::kDword, "\1\2"}),
            kInvalidParameter);
}

TEST_F(RegistryTest, IgnoresLetterCaseAndKeepsHivesAndKeysApart) {
  registry_->Set(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Mail", "Width", Text("old"));
  registry_->Set(Hive::kCurrentUser, "software\\tenora\\MAIL", "WIDTH", Text("new"));
  EXPECT_EQ(Read(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Mail", "width"), "new");
  EXPECT_EQ(Read(Hive::kLocalMachine, "SOFTWARE\\Tenora\\Mail", "Width"), "status 2");
  EXPECT_EQ(Read(Hive::kCurrentUser, "SOFTWARE\\Tenora", "Width"), "status 2");
  EXPECT_EQ(Read(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Mail", "Widt"), "status 2");
}

TEST_F(RegistryTest, ReadsWhatATechnicianTyped) {
  std::filesystem::create_directories(UserFile().parent_path());
  WriteWholeFile(UserFile(),
                 "\xEF\xBB\xBFTenora settings, version 1\r\n"
                 "; set up by Jo\r\n"
                 "[SOFTWARE\\Tenora\\Settings]\r\n"
                 "; the server in the back room\r\n"
                 "  \"DatabaseLocation\"=\"\\\\server\\share\\\"new\"\\property.mdb\"  \r\n"
                 "\"Networkable\" = DWORD:1\r\n"
                 "; more to come\r\n"
                 "End of settings");
  EXPECT_EQ(Read(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Settings", "DatabaseLocation"),
            "\\\\server\\share\\\"new\"\\property.mdb");
  EXPECT_EQ(Read(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Settings", "Networkable"),
            std::string("\1\0\0\0", 4));
  ASSERT_EQ(registry_->Set(Hive::kCurrentUser, "SOFTWARE\\Tenora\\Mail", "CM", Text("1")),
            kSuccess);
  EXPECT_EQ(ReadWholeFile(UserFile()),
            "Tenora settings, version 1\n\n"
            "; set up by Jo\n"
            "[SOFTWARE\\Tenora\\Settings]\n"
            "; the server in the back room\n"
            "\"DatabaseLocation\" = \"\\\\server\\share\\\"new\"\\property.mdb\"\n"
            "\"Networkable\" = dword:00000001\n\n"
            "[SOFTWARE\\Tenora\\Mail]\n"
            "\"CM\" = \"1\"\n\n"
            "; more to come\n"
            "End of settings\n");
}

// The bytes that this process has read so far.
std::uint64_t BytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::uint64_t value = 0;
  counters >> name >> value;
  EXPECT_EQ(name, "rchar:");
  return value;
}

// An hour ago, beyond any file system's resolution.
void Age(const std::filesystem::path& file) {
  const auto past = std::filesystem::last_write_time(file) - std::chrono::hours(1);
  std::filesystem::last_write_time(file, past);
}

TEST_F(RegistryTest, ReadsAnUnchangedFileOnce) {
  registry_->Set(Hive::kCurrentUser, kKey, "long", Text(std::string(1'000'000, 'x')));
  for (const bool fresh : {true, false}) {
    if (!fresh) Age(UserFile());
    const std::uint64_t before = BytesRead();
    for (int i = 0; i < 9; ++i) {
      EXPECT_EQ(Read(Hive::kCurrentUser, kKey, "long").size(), 1'000'000U);
    }
    // A fresh file may be read twice, once more when its times are settled.
    EXPECT_LT(BytesRead() - before, fresh ? 2'100'000U : 1'100'000U);
  }
}

TEST_F(RegistryTest, SeesEveryChangeOfAFileItHasRead) {
  const auto text = [](const char* value) {
    return "Tenora settings, version 1\n[a]\n\"n\" = \"" + std::string(value) +
           "\"\nEnd of settings\n";
  };
  const auto in_place = [&](const char* value) {
    std::ofstream(UserFile(), std::ios::binary | std::ios::trunc) << text(value);
  };
  std::filesystem::create_directories(UserFile().parent_path());
  const auto other = Registry::Open(folder_ / "etc", folder_ / "home/config");
  // Texts of one length, so that only the times or the file itself tell them apart.
  WriteWholeFile(UserFile(), text("one"));
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "one");
  for (int i = 0; i < 200; ++i) {
    const std::string value = std::to_string(100 + i);
    ASSERT_EQ(other->Set(Hive::kCurrentUser, "a", "n", Text(value)), kSuccess);
    ASSERT_EQ(Read(Hive::kCurrentUser, "a", "n"), value);
  }
  for (const char* value : {"six", "ten", "old", "new"}) {
    Age(UserFile());
    EXPECT_NE(Read(Hive::kCurrentUser, "a", "n"), value);
    in_place(value);
    EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), value);
  }
  Age(UserFile());
  const auto time = std::filesystem::last_write_time(UserFile());
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "new");
  ASSERT_EQ(other->Set(Hive::kCurrentUser, "a", "n", Text("set")), kSuccess);
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "set");
  // Another file with the times and the size of the one before.
  WriteWholeFile(UserFile(), text("mov"));
  std::filesystem::last_write_time(UserFile(), time);
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "mov");
  WriteWholeFile(UserFile(), text("end"));
  std::filesystem::last_write_time(UserFile(), time);
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "end");
  std::filesystem::remove(UserFile());
  EXPECT_EQ(Read(Hive::kCurrentUser, "a", "n"), "status 2");
}

TEST_F(RegistryTest, RefusesADamagedFileAndLeavesItAsItIs) {
  registry_->Set(Hive::kCurrentUser, kKey, "TopMargin", Text("567"));
  registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("<b>\n"));
  const std::string whole = ReadWholeFile(UserFile());
  std::vector<std::string> damaged;
  // Cut anywhere before the line break of the closing line.
  for (std::size_t i = 0; i + 1 < whole.size(); ++i) damaged.push_back(whole.substr(0, i));
  damaged.push_back(std::string(whole.size(), '\0'));
  damaged.push_back(whole + whole);
  damaged.push_back("Tenora settings, version 2\nEnd of settings\n");
  for (const char* line : {"\"no value\"", "\"n\" = 5", "\"n\" = \"open", "n = \"v\"", "[open",
                           "\"n\" = dword:", "\"n\" = dword:1ffffffff", "\"n\" = \"<U+110000>\"",
                           "\"n\" = \"<U+41\"", "\"n\" = \"<0x100>\"", "[]", "\""}) {
    damaged.push_back("Tenora settings, version 1\n[a]\n" + std::string(line) +
                      "\nEnd of settings\n");
  }
  damaged.push_back("Tenora settings, version 1\n\"n\" = \"no key\"\nEnd of settings\n");
  for (const std::string& text : damaged) {
    std::ofstream(UserFile(), std::ios::binary | std::ios::trunc) << text;
    EXPECT_EQ(Read(Hive::kCurrentUser, kKey, "TopMargin"), "status 1015") << text;
    EXPECT_EQ(registry_->Set(Hive::kCurrentUser, kKey, "TopMargin", Text("1")), kDamaged) << text;
    EXPECT_EQ(ReadWholeFile(UserFile()), text);
  }
}

TEST_F(RegistryTest, RefusesWhatIsNoFileWithoutWaitingForIt) {
  std::filesystem::create_directories(UserFile());
  EXPECT_EQ(Read(Hive::kCurrentUser, kKey, "CM"), "status 1015");
  EXPECT_EQ(registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("1")), kDamaged);
}

TEST_F(RegistryTest, DeniesAnUnwritableHiveQuietly) {
  // A file where the folder should be: no user can write there, root included.
  WriteWholeFile(folder_ / "etc", "in the way");
  EXPECT_EQ(registry_->Set(Hive::kLocalMachine, kKey, "CM", Text("1")), kAccessDenied);
  StoredValue value;
  EXPECT_NE(registry_->Query(Hive::kLocalMachine, kKey, "CM", value), kSuccess);
  if (::geteuid() != 0) {
    std::filesystem::create_directory(folder_ / "home");
    std::filesystem::permissions(folder_ / "home", std::filesystem::perms::owner_read);
    EXPECT_EQ(registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("1")), kAccessDenied);
    std::filesystem::permissions(folder_ / "home", std::filesystem::perms::owner_all);
  }
}

TEST_F(RegistryTest, LetsEveryUserReadTheMachineWideHive) {
  using std::filesystem::perms;
  const mode_t old_mask = ::umask(077);
  registry_->Set(Hive::kLocalMachine, kKey, "CM", Text("1"));
  registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("1"));
  ::umask(old_mask);
  const auto mode = [](const std::filesystem::path& path) {
    return std::filesystem::status(path).permissions() & perms::mask;
  };
  const auto machine_file = registry_->FileOf(Hive::kLocalMachine);
  EXPECT_EQ(mode(machine_file), perms(0644));
  EXPECT_EQ(mode(machine_file.string() + ".lock"), perms(0644));
  EXPECT_EQ(mode(machine_file.parent_path()), perms(0755));
  EXPECT_EQ(mode(UserFile()), perms(0600));
}

TEST_F(RegistryTest, KeepsAFilesPermissionsAndTheLinkThatLeadsToIt) {
  using std::filesystem::perms;
  registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("1"));
  std::filesystem::rename(UserFile(), folder_ / "kept");
  std::filesystem::create_symlink(folder_ / "kept", UserFile());
  std::filesystem::permissions(folder_ / "kept", perms::owner_read | perms::owner_write);
  ASSERT_EQ(registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("0")), kSuccess);
  EXPECT_TRUE(std::filesystem::is_symlink(UserFile()));
  EXPECT_THAT(ReadWholeFile(folder_ / "kept"), HasSubstr("\"CM\" = \"0\""));
  EXPECT_EQ(std::filesystem::status(folder_ / "kept").permissions(),
            perms::owner_read | perms::owner_write);
}

// A lock that leads to another file would make that file readable to everybody.
TEST_F(RegistryTest, WritesThroughNoLinkThatIsNotPartOfTheSetUp) {
  using std::filesystem::perms;
  for (const Hive hive : {Hive::kLocalMachine, Hive::kCurrentUser}) {
    SCOPED_TRACE(registry_->FileOf(hive));
    ASSERT_EQ(registry_->Set(hive, kKey, "CM", Text("1")), kSuccess);
    const std::filesystem::path lock = registry_->FileOf(hive).string() + ".lock";
    std::filesystem::permissions(lock, perms::owner_all);
    ASSERT_EQ(registry_->Set(hive, kKey, "CM", Text("2")), kSuccess);
    EXPECT_EQ(std::filesystem::status(lock).permissions(), perms::owner_all);
    std::filesystem::rename(lock, folder_ / "victim");
    for (const bool symbolic : {true, false}) {
      symbolic ? std::filesystem::create_symlink(folder_ / "victim", lock)
               : std::filesystem::create_hard_link(folder_ / "victim", lock);
      EXPECT_EQ(registry_->Set(hive, kKey, "CM", Text("3")), kStoppedOnLink);
      std::filesystem::remove(lock);
    }
    EXPECT_EQ(std::filesystem::status(folder_ / "victim").permissions(), perms::owner_all);
    EXPECT_EQ(Read(hive, kKey, "CM"), "2");
    std::filesystem::remove(folder_ / "victim");
  }
  if (::geteuid() != 0) return;  // cannot make a link of another user
  std::filesystem::rename(UserFile(), folder_ / "victim");
  std::filesystem::create_symlink(folder_ / "victim", UserFile());
  ASSERT_EQ(::lchown(UserFile().c_str(), 12345, 12345), 0);
  const std::string before = ReadWholeFile(folder_ / "victim");
  EXPECT_EQ(registry_->Set(Hive::kCurrentUser, kKey, "CM", Text("3")), kStoppedOnLink);
  EXPECT_EQ(ReadWholeFile(folder_ / "victim"), before);
}

TEST(RegistryFromEnvironment, FindsTheHivesOfThisRun) {
  const struct {
    const char *settings, *config, *home;
    const char *machine_file, *user_file;
  } cases[] = {
      {"/srv/s", "/c", "/home/jo", "/srv/s/machine.settings", "/srv/s/user.settings"},
      {"", "/c", "/home/jo", "/etc/tenora/machine.settings", "/c/tenora/user.settings"},
      {"", "relative", "/home/jo", "/etc/tenora/machine.settings",
       "/home/jo/.config/tenora/user.settings"},
  };
  for (const auto& c : cases) {
    const test::Environment environment(
        {{"TENORA_SETTINGS", c.settings}, {"XDG_CONFIG_HOME", c.config}, {"HOME", c.home}});
    const auto registry = Registry::FromEnvironment();
    EXPECT_EQ(registry->FileOf(Hive::kLocalMachine), c.machine_file);
    EXPECT_EQ(registry->FileOf(Hive::kCurrentUser), c.user_file);
  }
}

}  // namespace
}  // namespace tenora::registry
