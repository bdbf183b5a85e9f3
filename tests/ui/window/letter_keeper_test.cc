#include "ui/window/recovery/letter_keeper.h"

#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <memory>

#include "ui/window/recovery/frm_unsaved_letters.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class LetterKeeperTest : public WindowPartsTest {
 protected:
  LetterKeeperTest() { SaveTemplate("Notice", "saved words"); }

  void OpenAndType(const char* words) {
    letters_.Open(Entry("Templates/Notice"));
    QTest::keyClicks(&letters_.Active()->editor(), words);
    QCoreApplication::processEvents();
  }
  // As a program that ends at once, and the next one.
  void EndAbruptlyAndStartAgain() {
    EXPECT_TRUE(keeper_->KeepNow());
    keeper_.reset();
    for (LetterWindow* letter : desk_.Letters()) delete letter->parentWidget();
    keeper_ = std::make_unique<LetterKeeper>(session_, desk_, letters_);
  }
  // Offers what was left and works in the dialog; false when nothing is offered.
  bool Offer(const std::function<void(frmUnsavedLetters& dialog)>& work) {
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<frmUnsavedLetters*>(QApplication::activeModalWidget());
      if (dialog == nullptr) return;
      work(*dialog);
      dialog->reject();
    });
    const bool offered = keeper_->OfferLeft(&desk_);
    QCoreApplication::processEvents();
    return offered;
  }
  static void Press(QWidget& dialog, const char* button) {
    QTest::keyClick(dialog.findChild<QPushButton*>(button), Qt::Key_Space);
  }
  static std::string TextIn(QWidget& dialog, const char* view) {
    return dialog.findChild<LetterEditor*>(view)->toPlainText().toStdString();
  }

  std::unique_ptr<LetterKeeper> keeper_ = std::make_unique<LetterKeeper>(session_, desk_, letters_);
};

TEST_F(LetterKeeperTest, ShowsBothVersionsAndRecoversWhatWasTyped) {
  OpenAndType("typed ");
  letters_.StartNew("Owner Templates");
  QTest::keyClicks(&letters_.Active()->editor(), "brand new");
  EndAbruptlyAndStartAgain();
  EXPECT_TRUE(Offer([](QWidget& dialog) {
    auto* list = dialog.findChild<QTreeWidget*>();
    ASSERT_EQ(list->topLevelItemCount(), 2);
    const int saved = list->topLevelItem(0)->text(0) == "Notice" ? 0 : 1;
    list->setCurrentItem(list->topLevelItem(saved));
    EXPECT_EQ(list->currentItem()->text(3), "as it was");
    EXPECT_EQ(TextIn(dialog, "rtfKept"), "typed saved words");
    EXPECT_EQ(TextIn(dialog, "rtfSaved"), "saved words");
    auto* kept = dialog.findChild<LetterEditor*>("rtfKept");
    QTest::keyClicks(kept, "x");
    QTest::keyClick(kept, Qt::Key_Delete);
    EXPECT_EQ(TextIn(dialog, "rtfKept"), "typed saved words") << "it is only to be looked at";
    list->setCurrentItem(list->topLevelItem(1 - saved));
    EXPECT_EQ(list->currentItem()->text(3), "never saved");
    EXPECT_EQ(TextIn(dialog, "rtfKept"), "brand new");
    EXPECT_EQ(TextIn(dialog, "rtfSaved"), "");
    Press(dialog, "cmdRecover");
    Press(dialog, "cmdRecover");
  }));
  ASSERT_EQ(desk_.Letters().size(), 2U);
  for (LetterWindow* window : desk_.Letters()) {
    EXPECT_TRUE(window->letter().members().Changed);
    EXPECT_TRUE(window->isWindowModified());
    if (window->letter().members().Kind != "Templates") continue;
    EXPECT_EQ(window->letter().rtfLetter.Text(), "typed saved words");
    EXPECT_TRUE(window->letter().Save());
    EXPECT_THAT(ReadWholeFile(window->letter().members().FilePath), HasSubstr("typed saved"));
  }
  // The recovered letter that is not saved yet is not lost by another such end.
  EndAbruptlyAndStartAgain();
  EXPECT_TRUE(Offer([](QWidget& dialog) { EXPECT_EQ(TextIn(dialog, "rtfKept"), "brand new"); }));
}

TEST_F(LetterKeeperTest, KeepsNothingOfLettersThatWereSavedDeclinedOrUndone) {
  const struct {
    const char* what;
    std::function<void()> settle;
  } cases[] = {
      {"saved", [&] { EXPECT_TRUE(letters_.Active()->letter().Save()); }},
      {"undone",
       [&] {
         for (int i = 0; i < 3 && InFront().Changed; ++i) letters_.Active()->editor().Undo();
       }},
      {"declined",
       [&] {
         platform_.dialogs.WillPress(Answer::kNo);
         EXPECT_TRUE(desk_.CloseAll());
       }},
  };
  for (const auto& c : cases) {
    OpenAndType("typed ");
    EXPECT_TRUE(keeper_->KeepNow());
    c.settle();
    QCoreApplication::processEvents();
    EndAbruptlyAndStartAgain();
    EXPECT_FALSE(Offer([](QWidget&) {})) << c.what;
  }
}

// What cannot be written stays changed and kept until it is on the disk, whatever is undone.
TEST_F(LetterKeeperTest, KeepsALetterWhoseSavingFailed) {
  const struct {
    const char* typed;
    std::function<bool()> save;
  } cases[] = {
      {"typed ", [&] { return letters_.Active()->letter().Save(); }},
      {"", [&] { return letters_.Active()->letter().Save(); }},
      {"typed ",
       [&] {
         platform_.dialogs.WillPress(Answer::kYes);
         return desk_.CloseAll();
       }},
  };
  for (const auto& c : cases) {
    OpenAndType(c.typed);
    EXPECT_TRUE(keeper_->KeepNow());
    std::filesystem::rename(Data() / "Templates", Data() / "away");
    EXPECT_FALSE(c.save());
    LetterWindow& window = *letters_.Active();
    const auto expect_changed = [&] {
      QCoreApplication::processEvents();
      EXPECT_TRUE(InFront().Changed);
      EXPECT_TRUE(window.isWindowModified());
      platform_.dialogs.WillPress(Answer::kCancel);
      EXPECT_FALSE(desk_.CloseAll()) << "it was not asked about";
    };
    expect_changed();
    QTest::keyClicks(&window.editor(), "x");
    for (int i = 0; i < 5; ++i) {
      QTest::keyClick(&window.editor(), Qt::Key_Z, Qt::ControlModifier);
      expect_changed();
    }
    EndAbruptlyAndStartAgain();
    EXPECT_TRUE(Offer([](QWidget& dialog) { Press(dialog, "cmdRecover"); }));
    std::filesystem::rename(Data() / "away", Data() / "Templates");
    tree_.RefreshTree();
    EXPECT_TRUE(letters_.Active()->letter().Save());
    QCoreApplication::processEvents();
    EXPECT_FALSE(letters_.Active()->isWindowModified());
    EXPECT_TRUE(desk_.CloseAll());
    EndAbruptlyAndStartAgain();
    EXPECT_FALSE(Offer([](QWidget&) {}));
  }
}

TEST_F(LetterKeeperTest, OffersAgainWhatIsLeftUntilLaterAndDiscardsOnAWordOnly) {
  OpenAndType("typed ");
  EndAbruptlyAndStartAgain();
  EXPECT_TRUE(Offer([](QWidget& dialog) { Press(dialog, "cmdLater"); }));
  EXPECT_TRUE(Offer([&](QWidget& dialog) {
    platform_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
    Press(dialog, "cmdDiscard");
    EXPECT_TRUE(dialog.isVisible());
    Press(dialog, "cmdDiscard");
    EXPECT_FALSE(dialog.isVisible());
  }));
  EXPECT_FALSE(Offer([](QWidget&) {}));
}

// Saving a recovered letter must not undo what somebody else has saved in the meantime.
TEST_F(LetterKeeperTest, KnowsTheFileThatTheRecoveredLetterCameFrom) {
  OpenAndType("typed ");
  EndAbruptlyAndStartAgain();
  const auto path = SaveTemplate("Notice", "a colleague's words");
  EXPECT_TRUE(Offer([](QWidget& dialog) {
    EXPECT_EQ(dialog.findChild<QTreeWidget*>()->currentItem()->text(3), "changed since");
    Press(dialog, "cmdRecover");
  }));
  platform_.dialogs.WillPress(Answer::kNo);
  EXPECT_FALSE(letters_.Active()->letter().Save());
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("Write over it?"));
  EXPECT_THAT(ReadWholeFile(path), HasSubstr("colleague"));
}

TEST_F(LetterKeeperTest, TellsOnceThatNothingCanBeKeptAndTriesAgain) {
  const std::filesystem::path state = platform_.folder / "state";
  WriteWholeFile(state, "a file where the folder should be");
  keeper_ = std::make_unique<LetterKeeper>(session_, desk_, letters_,
                                           LetterKeeper::Pauses{.usual = 0, .longest = 0});
  OpenAndType("one ");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !platform_.dialogs.shown().empty(); }));
  OpenAndType("two ");
  EXPECT_FALSE(keeper_->KeepNow());
  std::filesystem::remove(state);
  OpenAndType("three ");
  EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(state); }));
  keeper_.reset();
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre(HasSubstr("cannot be kept")));
  EXPECT_EQ(UnsavedStore(state / "unsaved").FindLeft(Data().string()).size(), 1U);
}

}  // namespace
}  // namespace tenora
