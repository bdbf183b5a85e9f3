// A box with its editor on an offscreen desktop.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <memory>

#include "platform/richtext/rich_text_box.h"
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

class EditorTest : public ::testing::Test {
 protected:
  void Open(const std::string& body) {
    box.SetTextRTF(
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman Times New Roman;}}"
        "{\\colortbl ;\\red255\\green0\\blue0;}" +
        body + "}");
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
