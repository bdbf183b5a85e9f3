#include "ui/window/tree/tree_model.h"

#include <QAbstractItemModelTester>
#include <QTest>

#include "application.h"
#include "letters/file_names.h"
#include "support/fake_platform.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {
namespace {

class Tree : public ::testing::Test {
 protected:
  Tree() {
    tester_.setUseFetchMore(false);  // it would list letters that nobody opened
    Save("Templates/Notice.rtf");
    Save("Templates/Receipt.rtf");
    Save("Jo Green/Welcome.rtf");
    for (const auto& [code, name, closed] : {std::tuple{"T1", "Jo Green", false},
                                             {"T2", "Ann Old", true},
                                             {"T3", "Bo Green", false}}) {
      TenantRecord tenant;
      tenant.Reference = code;
      tenant.KeyName = name;
      tenant.Closed = closed;
      session_.caches.Tenants.push_back(tenant);
    }
    OwnerRecord owner;
    owner.Name = owner.Code = "Olga";
    session_.caches.Owners.push_back(owner);
    tree_.RefreshTree();
  }

  void Save(const std::string& file) {
    const auto path = platform_.ProgramFolder() / file;
    std::filesystem::create_directories(path.parent_path());
    WriteWholeFile(path, "{\\rtf1 x}");
  }
  std::string Names(const QModelIndex& parent = {}) {
    std::string names;
    for (int row = 0; row < model_.rowCount(parent); ++row) {
      names += model_.index(row, 0, parent).data().toString().toStdString() + "|";
    }
    return names;
  }
  // What the view shows, group names left out.
  std::string Shown() {
    std::string shown;
    for (QModelIndex at = tree_.view().model()->index(0, 0); at.isValid();
         at = tree_.view().indexBelow(at)) {
      if (at.parent().isValid()) shown += at.data().toString().toStdString() + "|";
    }
    return shown;
  }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  ctlTree tree_{session_};
  TreeModel& model_ = tree_.model();
  QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(Tree, GroupsTemplatesAndRecipientsAndFoldsClosedTenants) {
  EXPECT_EQ(Names(), "Templates|Owner Templates|Cheque|Tenants|Owners|");
  EXPECT_EQ(Names(model_.Group("Templates")), "Notice|Receipt|");
  const QModelIndex tenants = model_.Group("Tenants");
  EXPECT_EQ(Names(tenants), "+ <Closed Tenants>|Jo Green|Bo Green|");
  EXPECT_EQ(tenants.data(TreeModel::kCountRole).toInt(), 3);
  tree_.OpenAgain("Tenants\nTenants/<Closed Tenants>");
  EXPECT_EQ(Names(tenants), "- <Closed Tenants>|Jo Green|Bo Green|");
  EXPECT_EQ(Names(model_.index(0, 0, tenants)), "Ann Old|");
}

// Version 1.0 kept colons and question marks in the names of folders.
TEST_F(Tree, ListsTheLettersOfARecipientsEarlierFolderToo) {
  session_.caches.Tenants[2].KeyName = "Bo: why?";
  Save("Bo: why?/Notice.rtf");
  Save("Bo: why?/Arrears.rtf");
  tree_.RefreshTree();
  const QModelIndex bo = model_.IndexOfKey("Tenants/T3");
  ASSERT_TRUE(model_.hasChildren(bo));
  model_.fetchMore(bo);
  EXPECT_EQ(Names(bo), "Arrears|Notice|");
  const std::string folder = RecipientFolderName("Bo: why?");
  Save(folder + "/Notice.rtf");
  tree_.RefreshTree();
  EXPECT_EQ(Names(bo), "Arrears|Notice|Notice|");
  const auto data = platform_.ProgramFolder();
  for (const auto& file : {data / folder / "Notice.rtf", data / "Bo: why?" / "Notice.rtf"}) {
    const QModelIndex found = model_.FindFile(model_.Group("Tenants"), file);
    ASSERT_TRUE(found.isValid()) << file;
    EXPECT_EQ(model_.EntryAt(found)->path, file);
    EXPECT_EQ(model_.IndexOfKey(model_.KeyOf(found)), found);
  }
}

TEST_F(Tree, ListsARecipientsLettersWhenOpenedAndFollowsTheFolder) {
  const QModelIndex jo = model_.IndexOfKey("Tenants/T1"), bo = model_.IndexOfKey("Tenants/T3");
  EXPECT_TRUE(model_.hasChildren(jo));
  EXPECT_FALSE(model_.hasChildren(bo));
  EXPECT_EQ(model_.rowCount(jo), 0);
  model_.fetchMore(jo);
  ASSERT_EQ(Names(jo), "Welcome|");
  const TreeModel::Entry& letter = *model_.EntryAt(model_.index(0, 0, jo));
  EXPECT_EQ(letter.kind, "Tenant Letter");
  EXPECT_EQ(letter.tenant_code, "T1");
  EXPECT_EQ(letter.recipient, "Jo Green");
  EXPECT_EQ(letter.path, platform_.ProgramFolder() / "Jo Green/Welcome.rtf");

  const QPersistentModelIndex kept = model_.index(0, 0, jo);
  Save("Jo Green/Another.rtf");
  Save("Bo Green/Notice.rtf");
  std::filesystem::remove(platform_.ProgramFolder() / "Templates/Notice.rtf");
  tree_.RefreshTree();
  EXPECT_EQ(Names(jo), "Another|Welcome|");
  EXPECT_EQ(kept.data().toString(), "Welcome");
  EXPECT_TRUE(model_.hasChildren(bo));
  EXPECT_EQ(Names(model_.Group("Templates")), "Receipt|");
  EXPECT_TRUE(
      model_.FindFile(model_.Group("Tenants"), platform_.ProgramFolder() / "Bo Green/Notice.rtf")
          .isValid());
}

TEST_F(Tree, SearchesNamesAndGivesTheTreeBackAsItWas) {
  auto* search = tree_.findChild<QLineEdit*>("txtTreeSearch");
  tree_.OpenAgain("Templates\nTenants");
  const std::string before = Shown();
  const std::pair<const char*, const char*> cases[] = {{"green", "Jo Green|Bo Green|"},
                                                       {"GREEN b", "Bo Green|"},
                                                       {"old", "- <Closed Tenants>|Ann Old|"},
                                                       {"receipt", "Receipt|"},
                                                       {"templates", ""},
                                                       {"  ", before.c_str()}};
  for (const auto& [typed, shown] : cases) {
    search->setText(typed);
    EXPECT_EQ(Shown(), shown) << typed;
    EXPECT_EQ(tree_.findChild<QLabel*>("lblNothingFound")->isHidden(), *shown != '\0') << typed;
  }
  search->setText("green");
  search->clear();
  EXPECT_EQ(Shown(), before);
}

// The letters of Ann and Jo are in folders that nobody has opened.
TEST_F(Tree, FindsWithoutAccentsAndInFoldersThatWereNeverOpenedAndCountsWhatItShows) {
  Save("Ann Old/Rent review.rtf");
  Save("Jo Green/Rénovation.rtf");
  session_.caches.Owners[0].Name = "Ólga Ærø";
  session_.caches.Tenants[0].PropertyAddress1 = "12 Pūriri Street";
  tree_.RefreshTree();
  auto* search = tree_.findChild<QLineEdit*>("txtTreeSearch");
  tree_.OpenAgain("Templates");
  const std::string before = Shown();
  const struct {
    const char *typed, *shown;
    int tenants;  // counted beside the group; 0 where it is not shown
  } cases[] = {
      {"olga AERO", "Ólga Ærø|", 0},
      {"green", "Jo Green|Bo Green|", 2},
      {"puriri str", "Jo Green|", 1},
      {"renovation", "Jo Green|Rénovation|", 1},
      {"ren", "- <Closed Tenants>|Ann Old|Rent review|Jo Green|Rénovation|", 2},
      {"old review", "- <Closed Tenants>|Ann Old|Rent review|", 1},
      {"jo wel", "Jo Green|Welcome|", 1},
      {"12 puriri wel", "Jo Green|Welcome|", 1},
  };
  for (const auto& c : cases) {
    search->setText(c.typed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Shown() == c.shown; })) << c.typed << ": " << Shown();
    const QAbstractItemModel& shown = *tree_.view().model();
    int tenants = 0;
    for (int row = 0; row < shown.rowCount(); ++row) {
      const QModelIndex group = shown.index(row, 0);
      if (group.data() == "Tenants") tenants = group.data(TreeModel::kCountRole).toInt();
    }
    EXPECT_EQ(tenants, c.tenants) << c.typed;
  }
  search->clear();
  EXPECT_EQ(Shown(), before);
  EXPECT_EQ(model_.Group("Tenants").data(TreeModel::kCountRole).toInt(), 3);

  search->setText("statement");
  const auto* hint = tree_.findChild<QLabel*>("lblNothingFound");
  EXPECT_TRUE(QTest::qWaitFor([&] { return hint->text().contains("statement"); }));
  Save("Bo Green/Statement.rtf");
  tree_.RefreshTree();
  EXPECT_TRUE(QTest::qWaitFor([&] { return Shown() == "Bo Green|Statement|"; })) << Shown();
  EXPECT_TRUE(hint->isHidden());
}

TEST_F(Tree, PicksTheVeryNameWithEnterAndThenAnOpenTenancyBeforeAClosedOne) {
  session_.caches.Tenants[1].KeyName = "Jo Greenwood";  // closed, and above the others
  TenantRecord same;
  same.Reference = "T4";
  same.KeyName = "Bo Gréen";
  same.Closed = true;
  session_.caches.Tenants.push_back(same);
  session_.caches.Owners[0].Name = "Rent";
  Save("Jo Greenwood/Welcome.rtf");
  Save("Templates/Rent review.rtf");
  Save("Templates/Rent.rtf");
  tree_.RefreshTree();
  auto* search = tree_.findChild<QLineEdit*>("txtTreeSearch");
  const struct {
    const char *typed, *picked;
    bool closed;
  } cases[] = {{"green", "Jo Green", false},    {"greenwood", "Jo Greenwood", true},
               {"notice", "Notice", false},     {"ren", "Rent", false},
               {"rent", "Rent", false},         {" RÉNT  review", "Rent review", false},
               {"bo green", "Bo Green", false}, {"jo gréenwood", "Jo Greenwood", true}};
  for (const auto& c : cases) {
    search->setText(QString::fromUtf8(c.typed));
    QTest::keyClick(search, Qt::Key_Return);
    ASSERT_NE(tree_.Current(), nullptr) << c.typed;
    EXPECT_EQ(tree_.Current()->name, c.picked) << c.typed;
    EXPECT_EQ(tree_.Current()->closed, c.closed) << c.typed;
  }
}

TEST_F(Tree, ShortensANameBeforeItsCount) {
  tree_.resize(150, 400);
  tree_.show();
  QTreeView& view = tree_.view();
  for (const char* name : {"Owner Templates", "Tenants"}) {
    const QModelIndex group = view.model()->match(view.model()->index(0, 0), Qt::DisplayRole,
                                                  QString::fromLatin1(name))[0];
    const QImage row = view.viewport()->grab(view.visualRect(group)).toImage();
    const QString count = group.data(TreeModel::kCountRole).toString();
    const int digits = view.fontMetrics().horizontalAdvance(count);
    // Nothing is drawn beside the count, which is at the right.
    const int behind = row.width() - 8 - digits;
    for (int x = behind - 6; x < behind - 1; ++x) {
      for (int y = 0; y < row.height(); ++y) {
        ASSERT_EQ(row.pixel(x, y), row.pixel(behind - 1, 0)) << name << ": " << x << "," << y;
      }
    }
  }
}

TEST_F(Tree, WaitsWhileWorkMayBeChangingTheCaches) {
  tree_.Hold(true);
  session_.caches.Tenants.clear();
  tree_.RefreshTree();
  EXPECT_EQ(model_.rowCount(model_.Group("Tenants")), 3);
  tree_.Hold(false);
  EXPECT_EQ(model_.rowCount(model_.Group("Tenants")), 0);
}

}  // namespace
}  // namespace tenora
