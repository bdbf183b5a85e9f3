// A letter in its editor, or in a plain text control, on an offscreen desktop.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTextEdit>
#include <memory>
#include <string>

#include "platform/richtext/rich_text_box.h"
#include "ui/editor/document/edited_letter.h"
#include "ui/editor/letter_editor.h"

namespace tenora {

// The application ends before the process does: Qt's threads and fonts are then still there.
class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { application_ = std::make_unique<QApplication>(argc_, argv_); }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[15] = "ui_editor_test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};
inline ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

// A table of two rows; the second one's cells are merged.
inline constexpr const char* kTable =
    "\\trowd\\trgaph108\\cellx2000\\cellx4000\\pard\\intbl a\\cell b\\cell\\row"
    "\\trowd\\trgaph108\\trkeep\\clmgf\\cellx2000\\clmrg\\cellx4000\\pard\\intbl "
    "wide\\cell\\cell\\row"
    "\\pard ";

inline std::string LetterSource(const std::string& body) {
  return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman Times New Roman;}}"
         "{\\colortbl ;\\red255\\green0\\blue0;}" +
         body + "}";
}

// Without the editor's keys, paper and merge codes.
class PlainControlTest : public ::testing::Test {
 protected:
  void Open(const std::string& body) {
    box.SetTextRTF(LetterSource(body));
    box.Select(0, 0);
    letter.ShowBox();
  }
  // As one undo step.
  void Insert(int position, const char* text) {
    QTextCursor cursor(control.document());
    cursor.setPosition(position);
    cursor.insertText(QString::fromUtf8(text));
  }

  RichTextBox box;
  QTextEdit control;
  EditedLetter letter{box, control};
};

class EditorTest : public ::testing::Test {
 protected:
  void Open(const std::string& body) {
    box.SetTextRTF(LetterSource(body));
    box.Select(0, 0);
    editor.ShowBox();
    editor.resize(800, 600);
    editor.show();
    QTest::qWait(0);
  }
  // The letter's source as the editor writes it, also where nothing has been changed yet.
  std::string Written() {
    Type("x");
    editor.undo();
    return box.TextRTF();
  }
  void Type(const char* keys) { QTest::keyClicks(&editor, keys); }

  RichTextBox box;
  LetterEditor editor{box};
};

}  // namespace tenora
