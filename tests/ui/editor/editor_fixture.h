// A box with its editor on an offscreen desktop.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "platform/richtext/rich_text_box.h"
#include "ui/editor/letter_editor.h"

namespace tenora {

inline void StartQt() {
  static int argc = 1;
  static char name[] = "ui_editor_test";
  static char* argv[] = {name, nullptr};
  static QApplication application(argc, argv);
}

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
  void Type(const char* keys) { QTest::keyClicks(&editor, keys); }

  const bool started = (StartQt(), true);
  RichTextBox box;
  LetterEditor editor{box};
};

}  // namespace tenora
