// Dialogs on an offscreen desktop, driven by key and mouse.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora {

class DialogsTest : public testing::Test {
 protected:
  template <typename Widget>
  static Widget* Find(QWidget& window, const char* name) {
    Widget* found = window.findChild<Widget*>(name);
    if (found == nullptr) throw std::runtime_error(std::string("no control ") + name);
    return found;
  }
  static void Click(QWidget& window, const char* name) {
    QTest::mouseClick(Find<QWidget>(window, name), Qt::LeftButton);
  }
  static void Press(QWidget& window, const char* name) {
    Find<QAbstractButton>(window, name)->click();
  }
  static void Type(QWidget& window, const char* name, const char* keys) {
    auto* box = Find<QLineEdit>(window, name);
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Backspace);
    QTest::keyClicks(box, keys);
  }
  static std::string Text(QWidget& window, const char* name) {
    return Find<QLineEdit>(window, name)->text().toStdString();
  }
  std::string Stored(const char* section, const char* key) {
    return session_.settings.GetSettingText(section, key, "not stored");
  }
  void Store(const char* section, const char* key, const char* value) {
    session_.settings.SaveSettingText(section, key, value);
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
};

}  // namespace tenora
