// The recipients' table of the Generate dialog and its filter, over the sample agency.
#include "letters/recipient_table.h"

#include <gmock/gmock.h>

#include <QCalendarWidget>
#include <QHeaderView>
#include <QTableView>
#include <QToolButton>
#include <algorithm>
#include <ctime>
#include <filesystem>

#include "letters/generation.h"
#include "letters/letter_names.h"
#include "letters/named_filters.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "support/environment.h"
#include "support/postgres_server.h"
#include "support/test_files.h"
#include "ui/dialogs/dialogs_fixture.h"
#include "ui/dialogs/filter_rows.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/dialogs/recipient_list.h"

namespace tenora {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kArrears = "Balance Owing >= 500 and Days Behind > 7";

TEST(FilterRows, SayWhatTheirConditionSaysAndComeBackFromIt) {
  FactNames names;
  names.Add("Balance Owing", FactType::kMoney);
  names.Add("Current Rent", FactType::kMoney);
  names.Add("Last Letter", FactType::kDate);
  names.Add("Email", FactType::kText);
  names.Add("Email Address", FactType::kText);
  names.Add("Closed", FactType::kYesNo);
  names.Add("TCustom:Pet", FactType::kField);
  const struct {
    const char* text;
    std::vector<FilterRow> rows;  // none: no rows can show it
  } cases[] = {
      {"Balance Owing >= 50", {{"Balance Owing", 0, "50"}}},
      {"Balance Owing > 50", {{"Balance Owing", 1, "50"}}},
      {"balance owing between 5 and 10 and Email is empty",
       {{"Balance Owing", 5, "5", "10"}, {"Email", 5}}},
      {"Email Address contains \"a and b\"", {{"Email Address", 0, "a and b"}}},
      {"Email not contains \"x\" or Closed or not Closed",
       {{"Email", 1, "x"}, {"Closed", 0}, {"Closed", 1}}},
      {"Last Letter within 30 days", {{"Last Letter", 0, "30"}}},
      {"not Last Letter in the last 14 days", {{"Last Letter", 2, "14"}}},
      {"not Last Letter >= 1 April 2026", {{"Last Letter", 5, "1 April 2026"}}},
      {"TCustom:Pet = \"dog\"", {{"TCustom:Pet", 3, "dog"}}},
      // Brackets, both joins, two facts, other words and quotation marks are for the text alone.
      {"(Closed)", {}},
      {"Closed or Closed and Closed", {}},
      {"Email = Bob", {}},
      {"Email contains 'x'", {}},
      {"Last Letter in the last 2 weeks", {}},
      {"Nothing > 4", {}},
      {"", {}},
  };
  for (const auto& c : cases) {
    const auto read = ReadFilterRows(c.text, names);
    ASSERT_EQ(read.has_value(), !c.rows.empty()) << c.text;
    if (read) {
      EXPECT_EQ(read->rows, c.rows) << c.text;
    }
  }
  // A value with quotation marks, and rows that are not filled in.
  EXPECT_EQ(
      FilterText({.rows = {{"Email", 0, "5\" pipe"}, {"Email", 0, " "}, {"Gone", 0, "1"}}}, names),
      "Email contains '5\" pipe'");
}

class RecipientTableTest : public DialogsTest {
 protected:
  RecipientTableTest() {
    machine_.InstallSampleDatabase();
    EXPECT_TRUE(session_.ReloadRentalData());
  }

  std::unique_ptr<frmGenerate> Open(const char* kind = "Templates", const char* name = "Notice") {
    auto dialog = std::make_unique<frmGenerate>(session_, kind, name);
    dialog->show();
    AwaitValues(*dialog);
    return dialog;
  }
  static void AwaitValues(frmGenerate& dialog) {
    const auto* state = Find<QLabel>(dialog, "lblState");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !state->text().startsWith("Reading"); }, 60'000));
  }
  static void TypeCondition(frmGenerate& dialog, const char* text) {
    if (!Find<QPushButton>(dialog, "cmdFilter")->isChecked()) Press(dialog, "cmdFilter");
    Type(dialog, "txtWhere", text);
    AwaitValues(dialog);
  }
  static std::vector<std::string> Listed(frmGenerate& dialog) {
    const auto* model = Find<RecipientView>(dialog, "lstMultiSelect")->model();
    std::vector<std::string> texts;
    for (int row = 0; row < model->rowCount(); ++row) {
      texts.push_back(model->index(row, 0).data().toString().toStdString());
    }
    return texts;
  }
  static std::string Count(frmGenerate& dialog) {
    return Find<QLabel>(dialog, "lblCount")->text().toStdString();
  }
  static int ColumnOf(const RecipientView& list, const QString& name) {
    for (int i = 0; i < list.model()->columnCount(); ++i) {
      if (list.model()->headerData(i, Qt::Horizontal).toString() == name) return i;
    }
    return -1;
  }
  // Whom `tenora generate --where` writes to.
  std::vector<Recipient> Meeting(const char* condition) {
    const OpenedDatabase opened(session_.database);
    const Condition read(condition, RecipientFactNames(session_, "Templates"));
    const RecipientTable table(session_, {.template_kind = "Templates"}, read.Names());
    std::vector<Recipient> recipients;
    for (const std::size_t row : table.Select({}, &read).rows) {
      recipients.push_back(table.Row(row).recipient);
    }
    return recipients;
  }
};

TEST_F(RecipientTableTest, WritesToThoseWhomTheFilterLeaves) {
  const std::vector<Recipient> expected = Meeting(kArrears);
  const auto dialog = Open();
  const std::size_t all = Listed(*dialog).size();
  ASSERT_GT(expected.size(), 1U);
  ASSERT_LT(expected.size(), all);
  Press(*dialog, "cmdSelectAll");
  TypeCondition(*dialog, kArrears);
  EXPECT_THAT(Count(*dialog),
              StartsWith(std::to_string(expected.size()) + " of " + std::to_string(all) +
                         " listed, " + std::to_string(expected.size()) + " selected"));
  EXPECT_THAT(Count(*dialog), HasSubstr(std::to_string(all - expected.size()) +
                                        " more selected, but left out by the filter"));
  EXPECT_EQ(dialog->Request().recipients, expected);
  // What the filter hides keeps its tick; what the search hides is written to as well.
  Find<QLineEdit>(*dialog, "txtSearch")->setText("nobody of this name");
  EXPECT_EQ(dialog->Request().recipients, expected);
  Type(*dialog, "txtWhere", "");
  EXPECT_EQ(dialog->Request().recipients.size(), all);
}

TEST_F(RecipientTableTest, AsksForAConditionThatCanBeRead) {
  const auto dialog = Open();
  TypeCondition(*dialog, kArrears);
  const auto listed = Listed(*dialog);
  Press(*dialog, "cmdSelectAll");
  QTest::keyClicks(Find<QLineEdit>(*dialog, "txtWhere"), " and Days Behnd > 7");
  EXPECT_THAT(Find<QLabel>(*dialog, "lblWhere")->text().toStdString(), HasSubstr("Days Behind"));
  EXPECT_EQ(Listed(*dialog), listed);
  Press(*dialog, "cmdGenerate");
  EXPECT_THAT(machine_.dialogs.Texts(), ElementsAre(StartsWith("The filter's condition is not")));
  EXPECT_TRUE(dialog->isVisible());
}

TEST_F(RecipientTableTest, ReturnGeneratesNeitherFromTheSearchNorFromTheFilter) {
  const auto dialog = Open();
  Press(*dialog, "cmdSelectAll");
  TypeCondition(*dialog, kArrears);
  // A Cancel that Tab has passed is not the button of Return.
  Find<QPushButton>(*dialog, "cmdCancel")->setFocus();
  for (const char* name : {"txtSearch", "txtWhere", "txtFirst", "cboFact", "cboFilter"}) {
    auto* field = Find<QWidget>(*dialog, name);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(dialog->isVisible()) << name;
  }
  // On a button it is that button's.
  auto* none = Find<QPushButton>(*dialog, "cmdSelectNone");
  none->setFocus();
  QTest::keyClick(none, Qt::Key_Return);
  EXPECT_THAT(Count(*dialog), HasSubstr(" 0 selected"));
  auto* cancel = Find<QPushButton>(*dialog, "cmdCancel");
  cancel->setFocus();
  QTest::keyClick(cancel, Qt::Key_Return);
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_EQ(dialog->result(), QDialog::Rejected);
}

TEST_F(RecipientTableTest, SaysWhatIsWrongWithAKeptFilterThatNoLongerFits) {
  NamedFilters(session_.platform.registry)
      .Save({.name = "Pets", .template_kind = "Templates", .condition = "Pet Count > 1"});
  const auto dialog = Open();
  QTest::keyClicks(Find<QComboBox>(*dialog, "cboFilter"), "Pets");
  const auto* state = Find<QLabel>(*dialog, "lblState");
  EXPECT_THAT(state->text().toStdString(),
              AllOf(HasSubstr("\"Pet Count > 1\""), HasSubstr("\"Pet Count\" is no name")));
  Press(*dialog, "cmdFilter");
  EXPECT_THAT(state->text().toStdString(), Not(HasSubstr("Pet Count")));
}

TEST_F(RecipientTableTest, OffersACalendarWhereAFilterComparesDays) {
  const auto dialog = Open();
  Press(*dialog, "cmdFilter");
  auto* value = Find<QLineEdit>(*dialog, "txtFirst");
  const auto calendar = [] {
    QWidget* const popup = QApplication::activePopupWidget();
    return popup == nullptr ? nullptr : popup->findChild<QCalendarWidget*>("calDay");
  };
  QTest::keyClick(value, Qt::Key_Down, Qt::AltModifier);
  EXPECT_EQ(calendar(), nullptr) << "an amount";

  Find<QComboBox>(*dialog, "cboFact")->setCurrentText("Tenancy Start Date");
  Find<QComboBox>(*dialog, "cboComparison")->setCurrentText("is before");
  QTest::keyClicks(value, "30 March 2024");
  QTest::keyClick(value, Qt::Key_Down, Qt::AltModifier);
  ASSERT_NE(calendar(), nullptr);
  EXPECT_EQ(calendar()->selectedDate(), QDate(2024, 3, 30));
  QWidget* const days = calendar()->findChild<QTableView*>();
  QTest::keyClick(days, Qt::Key_Right);
  QTest::keyClick(days, Qt::Key_Right);
  QTest::keyClick(days, Qt::Key_Return);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  EXPECT_EQ(value->text(), "1 April 2024");
  EXPECT_EQ(Text(*dialog, "txtWhere"), "Tenancy Start Date < 1 April 2024");
  AwaitValues(*dialog);
  EXPECT_EQ(Listed(*dialog).size(),
            Meeting("Tenancy Start Date < 2024-04-01 and not Closed").size());
  // Left by Escape it changes nothing.
  QTest::keyClick(value, Qt::Key_Down, Qt::AltModifier);
  ASSERT_NE(calendar(), nullptr);
  QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  EXPECT_EQ(value->text(), "1 April 2024");
}

TEST_F(RecipientTableTest, MakesOnePdfAndAListOfTheLettersUnderTheNamesOfTheSettings) {
  const std::filesystem::path home = machine_.ProgramFolder();
  std::filesystem::create_directories(home / "Templates");
  WriteWholeFile(home / "Templates/Notice.rtf", "{\\rtf1\\ansi Dear <<Tenant Code>>\\par}");
  Store("Mail", kTenantFileNames, "{Number} {Tenant Code}");
  const auto dialog = Open();
  Press(*dialog, "optFolder");
  EXPECT_FALSE(Find<QCheckBox>(*dialog, "chkDuplex")->isEnabled());
  for (const char* box : {"chkOnePdf", "chkDuplex", "chkPostList"}) Press(*dialog, box);
  TypeCondition(*dialog, "Tenant Code = 'T00001' or Tenant Code = 'T00007'");
  Press(*dialog, "cmdSelectAll");
  Press(*dialog, "cmdGenerate");
  ASSERT_EQ(dialog->result(), QDialog::Accepted);
  GenerationObserver nobody;
  const GenerationSummary made = GenerateSelection(session_, dialog->Request(), nobody);
  ASSERT_TRUE(made.complete());

  std::filesystem::path beside = made.log;
  const auto text = test::RunProcess({"pdftotext", beside.replace_extension(".pdf").string(), "-"});
  std::vector<std::string> pages;
  for (const std::string& page : Split(text.output, "\f")) pages.emplace_back(TrimBlanks(page));
  ASSERT_EQ(pages.size(), 4U) << text.output << text.errors;
  EXPECT_THAT(pages[0], HasSubstr("Dear T00007"));
  EXPECT_EQ(pages[1], "") << "the back of the first letter";
  EXPECT_THAT(pages[2], HasSubstr("Dear T00001"));
  const std::vector<std::string> lines =
      Split(ReadWholeFile(beside.replace_extension(".csv")), "\r\n");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_THAT(lines[1], AllOf(StartsWith("1,Mei Huang,T00007,"), HasSubstr("/1 T00007.rtf,done,")));
  EXPECT_THAT(lines[2],
              AllOf(StartsWith("2,Noor Whaanga,T00001,"), HasSubstr("/2 T00001.rtf,done,")));
}

TEST_F(RecipientTableTest, TakesAFilterBeforeTheFactsHaveBeenRead) {
  frmGenerate dialog(session_, "Templates", "Notice");
  dialog.show();
  Press(dialog, "cmdFilter");
  auto* value = Find<QLineEdit>(dialog, "txtFirst");
  QTest::keyClicks(value, "40");
  Press(dialog, "cmdSelectAll");
  Press(dialog, "cmdGenerate");
  AwaitValues(dialog);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(value, Find<QLineEdit>(dialog, "txtFirst"));
  EXPECT_EQ(dialog.Request().recipients, Meeting("Balance Owing >= 40"));
}

TEST_F(RecipientTableTest, SortsByValueAndKeepsTicksColumnsAndOrder) {
  auto dialog = Open();
  auto* list = Find<RecipientView>(*dialog, "lstMultiSelect");
  const auto as_listed = Listed(*dialog);
  const std::string ticked = as_listed[2];
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                    list->visualRect(list->model()->index(2, 0)).center());
  const int balance = ColumnOf(*list, "Balance Owing");
  const auto amounts = [&] {
    std::vector<double> values;
    for (int row = 0; row < list->model()->rowCount(); ++row) {
      QString text = list->model()->index(row, balance).data().toString();
      if (!text.isEmpty()) values.push_back(text.remove('$').remove(',').toDouble());
    }
    return values;
  };
  EXPECT_EQ(amounts().size(), as_listed.size());
  QTest::mouseClick(list->header()->viewport(), Qt::LeftButton, {},
                    {list->header()->sectionViewportPosition(balance) + 10, 5});
  EXPECT_TRUE(std::ranges::is_sorted(amounts()));
  list->header()->setSortIndicator(balance, Qt::DescendingOrder);
  EXPECT_TRUE(std::ranges::is_sorted(amounts(), std::greater<>()));
  const auto sorted = Listed(*dialog);
  EXPECT_NE(sorted, as_listed);
  EXPECT_EQ(dialog->Request().recipients.size(), 1U);
  EXPECT_EQ(list->model()
                ->index(static_cast<int>(std::ranges::find(sorted, ticked) - sorted.begin()), 0)
                .data(Qt::CheckStateRole)
                .toInt(),
            Qt::Checked);
  list->header()->resizeSection(balance, 171);
  dialog->reject();

  dialog = Open();
  list = Find<RecipientView>(*dialog, "lstMultiSelect");
  EXPECT_EQ(Listed(*dialog), sorted);
  EXPECT_EQ(list->header()->sectionSize(balance), 171);
  // Owners have a table of their own.
  const auto owners = Open("Owner Templates");
  EXPECT_GT(ColumnOf(*Find<RecipientView>(*owners, "lstMultiSelect"), "Arrears"), 0);
}

TEST_F(RecipientTableTest, KeepsFiltersUnderNames) {
  auto dialog = Open();
  TypeCondition(*dialog, kArrears);
  auto* named = Find<QComboBox>(*dialog, "cboFilter");
  machine_.dialogs.WillType("Arrears");
  Press(*dialog, "cmdSaveFilter");
  EXPECT_EQ(named->currentText(), "Arrears");
  machine_.dialogs.WillType("Arrears 7 days");
  Press(*dialog, "cmdRenameFilter");
  EXPECT_EQ(named->currentText(), "Arrears 7 days");
  const std::size_t left = Listed(*dialog).size();
  dialog->reject();

  dialog = Open();
  named = Find<QComboBox>(*dialog, "cboFilter");
  Press(*dialog, "cmdFilter");
  QTest::keyClicks(named, "Arr");
  EXPECT_EQ(named->currentText(), "Arrears 7 days");
  AwaitValues(*dialog);
  EXPECT_EQ(Listed(*dialog).size(), left);
  EXPECT_EQ(Text(*dialog, "txtWhere"), kArrears);
  const auto facts = dialog->findChildren<QComboBox*>("cboFact");
  ASSERT_EQ(facts.size(), 2);
  // Tab goes from line to line, and on to the text and the search.
  QStringList stops;
  for (QWidget* at = facts[0]->nextInFocusChain(); at != facts[0]; at = at->nextInFocusChain()) {
    const QString name = at->objectName();
    if (name == "cboFact" || name == "txtWhere" || name == "txtSearch") stops << name;
  }
  EXPECT_EQ(stops.first(3), QStringList({"cboFact", "txtWhere", "txtSearch"}));
  // A line that is taken away is out of the condition.
  Find<QToolButton>(*dialog, "cmdRemoveRow")->click();
  EXPECT_EQ(Text(*dialog, "txtWhere"), "Days Behind > 7");
  EXPECT_EQ(named->currentIndex(), -1);
  QTest::keyClick(named, Qt::Key_End);
  machine_.dialogs.WillPress(Answer::kYes);
  Press(*dialog, "cmdDeleteFilter");
  EXPECT_TRUE(NamedFilters(session_.platform.registry).List("Templates").empty());
}

TEST_F(RecipientTableTest, NamesTheBranchOnAServerAndTheAgeOfItsData) {
  {
    // The columns that the user has chosen with the file.
    const auto from_file = Open();
    EXPECT_EQ(from_file->findChild<QLabel*>("lblDataAge"), nullptr);
    EXPECT_EQ(ColumnOf(*Find<RecipientView>(*from_file, "lstMultiSelect"), "Branch"), -1);
    from_file->done(QDialog::Rejected);
  }
  const test::Environment zone({{"TZ", "UTC"}});
  ::tzset();
  auto& server = test::PostgresServer::Get();
  server.MakeDatabase("window");
  const auto folder = machine_.ProgramFolder() / "Templates";
  std::filesystem::create_directories(folder);
  WriteWholeFile(folder / "Notice.rtf", "{\\rtf1 text}");
  session_.settings.SaveSettingText("Settings", "Networkable", "1");
  const struct {
    const char *branch, *taken, *age;
  } cases[] = {{"North", "2026-11-21 08:00+00", "North: data of 08:00"},
               {"South", "2026-11-19 23:05+00", "South: data of 19 November 2026 23:05"}};
  for (const auto& c : cases) {
    server::ImportBranch(*server::Connection::Open("window", std::chrono::seconds(0)), c.branch,
                         test::SampleDatabase(), server::LayoutChange::kTake);
    server.Run("window", std::string("update rental.sync set taken = '") + c.taken + "'");
    session_.settings.SaveSettingText("Settings", "DatabaseLocation",
                                      std::string("service=window branch=") + c.branch);
    ASSERT_TRUE(session_.ReloadRentalData());
    const auto dialog = Open();
    const auto& list = *Find<RecipientView>(*dialog, "lstMultiSelect");
    const int branch = ColumnOf(list, "Branch");
    ASSERT_GT(branch, 0);
    EXPECT_EQ(list.model()->index(0, branch).data().toString(), c.branch);
    EXPECT_EQ(Find<QLabel>(*dialog, "lblDataAge")->text(), c.age);
    // What workers cannot do keeps the letters from them.
    const auto& workers = *Find<QCheckBox>(*dialog, "chkWorkers");
    for (const char* alone : {"chkOnePdf", "chkPostList"}) {
      EXPECT_TRUE(workers.isEnabled());
      Press(*dialog, alone);
      EXPECT_FALSE(workers.isEnabled()) << alone;
      Press(*dialog, alone);
    }
    // The filter and the other columns are those of every database.
    TypeCondition(*dialog, kArrears);
    EXPECT_EQ(Listed(*dialog).size(), Meeting(kArrears).size());
    dialog->done(QDialog::Rejected);
  }
}

}  // namespace
}  // namespace tenora
