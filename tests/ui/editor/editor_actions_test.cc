#include "ui/editor/editor_actions.h"

#include <QDoubleSpinBox>
#include <QTimer>

#include "editor_fixture.h"
#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/commands/font_boxes.h"

namespace tenora {
namespace {

class EditorActionsTest : public EditorTest {};

TEST_F(EditorActionsTest, OffersActionsThatActOnTheCaretsLetter) {
  EditorActions actions;
  EXPECT_FALSE(actions.FormatActions().front()->isEnabled());
  actions.SetEditor(&editor);
  Open("\\pard\\f0\\fs24 one\\par two");
  box.Select(0, 7);
  const auto run = [&](const char* name) {
    for (const QList<QAction*>* group : {&actions.FormatActions(), &actions.InsertActions()}) {
      for (QAction* action : *group) {
        if (action->text().remove('&') == name) return action->trigger();
      }
    }
    ADD_FAILURE() << name;
  };
  run("Bold");
  run("Centre");
  run("Bullets");
  EXPECT_NE(box.TextRTF().find("\\b\\f0\\fs24 one"), std::string::npos) << box.TextRTF();
  EXPECT_NE(box.TextRTF().find("\\qc"), std::string::npos);
  EXPECT_NE(box.TextRTF().find("{\\pntxtb\\'B7}"), std::string::npos);
  EXPECT_TRUE(actions.FormatActions().front()->isChecked());
  editor.undo();
  editor.undo();
  editor.undo();
  EXPECT_EQ(box.TextRTF().find("\\b"), std::string::npos) << box.TextRTF();
}

TEST_F(EditorActionsTest, TakesATabStopThatWasTypedAndNotSet) {
  QTimer::singleShot(0, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    dialog->findChild<QDoubleSpinBox*>()->setValue(1);
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  const auto tabs = AskTabStops(&editor, {});
  ASSERT_TRUE(tabs.has_value() && tabs->size() == 1);
  EXPECT_EQ(tabs->front().position, static_cast<int>(LocaleUnit().twips));
}

TEST(FontSizeBoxTest, TakesSizesThatFontsCanHave) {
  FontSizeBox box(nullptr);
  int chosen = -1;
  QObject::connect(&box, &FontSizeBox::Chosen, [&](int half_points) { chosen = half_points; });
  const std::pair<const char*, int> cases[] = {{"12", 24},   {"10.5", 21}, {"1638", 3276},
                                               {"0.5", 0},   {"1639", 0},  {"nan", 0},
                                               {"large", 0}, {"", 0}};
  for (const auto& [typed, half_points] : cases) {
    chosen = -1;
    emit box.textActivated(QString::fromLatin1(typed));
    EXPECT_EQ(chosen, half_points) << typed;
  }
}

}  // namespace
}  // namespace tenora
