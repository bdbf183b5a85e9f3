// Qt's application for a test program; it shows nothing.
#pragma once

#include <QApplication>

namespace tenora::test {

inline QApplication& Application() {
  static int count = 1;
  static char name[] = "window_test";
  static char* arguments[] = {name, nullptr};
  static QApplication application(count, arguments);
  return application;
}

}  // namespace tenora::test
