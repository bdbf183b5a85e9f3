// A machine for tests: a clock that stands still, a scripted person, a plain English locale, an
// empty registry and a program folder, all in a scratch folder of their own.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "data/program.h"
#include "platform/dialogs/scripted_dialogs.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/registry/registry.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/files.h"
#include "platform/runtime/format.h"
#include "support/test_files.h"

namespace tenora::test {

// "21 November 2026", "21/11/2026", "02:30 PM", "$1,234.50"; two decimals, a point.
class PlainLocale : public Locale {
 public:
  std::string LongDate(Date date) const override { return FormatDate(date, "d mmmm yyyy"); }
  std::string ShortDate(Date date) const override { return FormatDate(date, "dd/mm/yyyy"); }
  std::string MediumTime(Date time) const override {
    const CalendarTime parts = time.Calendar();
    const int hour = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d %s", hour, parts.minute,
                  parts.hour < 12 ? "AM" : "PM");
    return text.data();
  }
  std::string CurrencyText(double amount) const override {
    std::string digits = FormatNumber(amount < 0 ? -amount : amount, "0.00");
    for (std::size_t i = digits.size() - 3; i > 3; i -= 3) digits.insert(i - 3, ",");
    return std::string(amount < 0 ? "-$" : "$").append(digits);
  }
  std::string Info(int type) const override {
    if (type == kCurrencyDigitsInfo) return currency_digits;
    if (type == kDecimalSeparatorInfo) return decimal_separator;
    return {};
  }

  std::string currency_digits = "2";
  std::string decimal_separator = ".";
};

class FakePlatform {
 public:
  explicit FakePlatform(std::unique_ptr<query::Workspace> engine = query::Workspace::Create())
      : workspace(std::move(engine)) {
    std::filesystem::create_directories(ProgramFolder());
  }
  // A question without an answer, or an answer never asked for, fails the test even where the
  // procedure under test trapped the error.
  ~FakePlatform() {
    for (const std::string& question : dialogs.unexpected()) ADD_FAILURE() << question;
    EXPECT_EQ(dialogs.answers_left(), 0u) << "scripted answers that nobody asked for";
  }
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;

  Platform Parts() {
    return Platform{clock,      dialogs,         locale,          *registry,
                    *workspace, ProgramFolder(), folder / "state"};
  }

  std::filesystem::path ProgramFolder() const { return folder / "program"; }
  // A copy of the sample agency as the program folder's property.mdb.
  void InstallSampleDatabase() const {
    std::filesystem::copy_file(SampleDatabase(), ProgramFolder() / "property.mdb",
                               std::filesystem::copy_options::overwrite_existing);
  }
  // From now on settings go to the per-user hive.
  void MakeMachineHiveUnwritable() const {
    std::filesystem::remove_all(folder / "etc");
    WriteWholeFile(folder / "etc", "a file where the hive's folder should be");
  }

  ScratchFolder folder;
  Clock clock{Date::FromCalendar(2026, 11, 21, 9, 30)};
  ScriptedDialogs dialogs;
  PlainLocale locale;
  std::unique_ptr<registry::Registry> registry =
      registry::Registry::Open(folder / "etc", folder / "home");
  std::unique_ptr<query::Workspace> workspace;
};

}  // namespace tenora::test
