#include "data/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fake_platform.h"

namespace tenora {
namespace {

using registry::Hive;
using registry::StoredValue;
using registry::ValueType;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kMailKey = "SOFTWARE\\Tenora\\Mail";

class SettingsTest : public testing::Test {
 protected:
  std::string Stored(Hive hive, std::string_view key, std::string_view name) {
    StoredValue value;
    const int status = platform_.registry->Query(hive, key, name, value);
    return status == registry::kSuccess ? value.bytes : "status " + std::to_string(status);
  }

  test::FakePlatform platform_;
  Settings settings_{platform_.Parts()};
};

TEST_F(SettingsTest, SettlesOnTheMachineWideHiveByAStampThatStays) {
  EXPECT_EQ(settings_.GetSettingText("Mail", "SplitterVert", "300"), "300");
  EXPECT_EQ(Stored(Hive::kLocalMachine, "SOFTWARE\\Tenora\\Test", "Test"), "21/11/26 09:30:00");
  settings_.SaveSettingText("Mail", "SplitterVert", "412");
  EXPECT_EQ(settings_.GetSettingText("mail", "splittervert", "300"), "412");
  EXPECT_EQ(Stored(Hive::kLocalMachine, kMailKey, "SplitterVert"), "412");
  EXPECT_EQ(Stored(Hive::kCurrentUser, kMailKey, "SplitterVert"), "status 2");
}

TEST_F(SettingsTest, FallsBackToTheUsersHiveSilentlyAndForTheWholeRun) {
  platform_.MakeMachineHiveUnwritable();
  EXPECT_FALSE(settings_.MachineWideSettings());
  std::filesystem::remove(platform_.folder / "etc");
  settings_.SaveSettingText("Mail", "FormsAtStartup", "1");
  EXPECT_EQ(settings_.GetSettingText("Mail", "FormsAtStartup", "0"), "1");
  EXPECT_EQ(Stored(Hive::kCurrentUser, kMailKey, "FormsAtStartup"), "1");
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre());
}

// A machine-wide hive in which another program's stamp stands after each of the first writes.
class ContendedRegistry : public registry::Registry {
 public:
  ContendedRegistry(Registry& real, int intrusions) : real_(real), intrusions_(intrusions) {}
  int Query(Hive hive, std::string_view key, std::string_view name,
            StoredValue& value) const override {
    return real_.Query(hive, key, name, value);
  }
  int Set(Hive hive, std::string_view key, std::string_view name,
          const StoredValue& value) override {
    const int status = real_.Set(hive, key, name, value);
    if (intrusions_-- > 0) real_.Set(hive, key, name, {ValueType::kText, "21/11/26 09:30:01"});
    return status;
  }
  std::filesystem::path FileOf(Hive hive) const override { return real_.FileOf(hive); }

 private:
  Registry& real_;
  int intrusions_;
};

TEST_F(SettingsTest, StaysMachineWideWhenAnotherProgramsStampComesBetween) {
  ContendedRegistry contended(*platform_.registry, 2);
  const Platform parts = platform_.Parts();
  Settings settings({parts.clock, parts.dialogs, parts.locale, contended, parts.workspace,
                     parts.program_folder, parts.state_folder});
  EXPECT_TRUE(settings.MachineWideSettings());
}

TEST_F(SettingsTest, KeepsAnEmptyTextApartFromAnAbsentOne) {
  for (const bool machine_wide : {true, false}) {
    if (!machine_wide) platform_.MakeMachineHiveUnwritable();
    Settings settings(platform_.Parts());
    settings.SaveSettingText("Cheque", "Cents", "");
    const Hive hive = machine_wide ? Hive::kLocalMachine : Hive::kCurrentUser;
    EXPECT_EQ(Stored(hive, "SOFTWARE\\Tenora\\Cheque", "Cents"), "vbNullString");
    EXPECT_EQ(settings.GetSettingText("Cheque", "Cents", "Cents"), "");
    EXPECT_EQ(settings.GetSettingText("Cheque", "Dollar", "vbNullString"), "");
  }
}

TEST_F(SettingsTest, ReadsValuesAsOtherProgramsStoreThem) {
  const struct {
    ValueType type;
    std::string bytes;
    std::string read;
  } cases[] = {
      {ValueType::kText, "Blue", "Blue"},
      {ValueType::kText, std::string("Blue\0", 5), "Blue"},
      {ValueType::kText, std::string("Blue\0\0", 6), std::string("Blue\0", 5)},
      {ValueType::kText, std::string("\0", 1), ""},
      {ValueType::kText, std::string(1024, 'x'), std::string(1024, 'x')},
      {ValueType::kText, std::string(1025, 'x'), "default"},
      // A byte below 16 gives a single digit.
      {ValueType::kDword, std::string("\x05\x01\x00\x00", 4), "21"},
      {ValueType::kDword, std::string("\x00\x00\x00\x00", 4), "0"},
      {ValueType::kDword, std::string("\x01\x00\x00\x00", 4), "1"},
      {ValueType::kDword, std::string("\x10\x20\x00\x00", 4), "8208"},
      {ValueType::kDword, std::string("\x10\x20\x30\x40", 4), "1076895760"},
      {ValueType::kDword, std::string("\xFF\xFF\xFF\xFF", 4), "4294967295"},
      {ValueType::kDword, std::string("\xFF\x00\x10\x00", 4), "65791"},
  };
  for (const auto& c : cases) {
    platform_.registry->Set(Hive::kLocalMachine, kMailKey, "Value", {c.type, c.bytes});
    EXPECT_EQ(settings_.GetSettingText("Mail", "Value", "default"), c.read);
  }
  std::string value = "before";
  EXPECT_FALSE(settings_.ReadRegistryValue(Hive::kLocalMachine, kMailKey, "Absent", value));
  EXPECT_EQ(value, "");
}

TEST_F(SettingsTest, CountsCharactersNotBytesInALongValue) {
  std::string text;
  for (int i = 0; i < 1024; ++i) text += "\xC4\x81";
  settings_.SaveSettingText("Cheque", "Dollar", text);
  EXPECT_EQ(settings_.GetSettingText("Cheque", "Dollar", "Dollars"), text);
}

TEST_F(SettingsTest, NamesADamagedFileOnceAndNeverTouchesIt) {
  const auto machine_file = platform_.registry->FileOf(Hive::kLocalMachine);
  const auto user_file = platform_.registry->FileOf(Hive::kCurrentUser);
  for (const auto& file : {machine_file, user_file}) {
    std::filesystem::create_directories(file.parent_path());
    WriteWholeFile(file, "Tenora settings, version 1\n[SOFTWARE\\Ten");
  }
  EXPECT_EQ(settings_.GetSettingText("Mail", "SplitterVert", "300"), "300");
  EXPECT_EQ(settings_.GetSettingText("Mail", "SplitterVert", "300"), "300");
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre(AllOf(HasSubstr("damaged"), HasSubstr(machine_file.string())),
                          AllOf(HasSubstr("damaged"), HasSubstr(user_file.string()))));

  platform_.dialogs.ForgetShown();
  settings_.SaveSettingText("Mail", "SplitterVert", "412");
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("321 - Invalid file format: " + user_file.string()));
  EXPECT_EQ(platform_.dialogs.shown()[0].title, "General - SaveSettingText");
  EXPECT_EQ(ReadWholeFile(user_file), "Tenora settings, version 1\n[SOFTWARE\\Ten");
}

}  // namespace
}  // namespace tenora
