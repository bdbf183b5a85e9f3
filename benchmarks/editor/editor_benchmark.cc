// A letter of 100 pages: opening it, typing in its middle, reading back what was typed. Goals: open
// within a second, a key within a sixtieth of one.
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ui/editor/letter_view.h"

namespace {

constexpr double kOpenGoal = 1000, kKeyGoal = 1000.0 / 60;  // milliseconds
constexpr int kParagraphs = 1400, kKeys = 200;              // 100 pages of 14 paragraphs

std::string LongLetter() {
  std::string rtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}{\\f1 Times New Roman;}}";
  for (int i = 0; i < kParagraphs; ++i) {
    rtf +=
        "\\pard\\sa120\\f0\\fs22 Dear \\b <<Tenant Name>>\\b0 , the rent for your home is now "
        "\\f1\\i $<<Current Rent>>\\i0\\f0  a week and was last paid on <<Last Payment Date>>. "
        "Please tell us within fourteen days whether you agree, and keep this letter with your "
        "tenancy agreement; we answer questions on every working day.\\par\r\n";
    if (i % 20 == 0)
      rtf += "\\trowd\\cellx3000\\cellx6000\\pard\\intbl Paid\\cell To\\cell\\row\\pard ";
  }
  return rtf + "}";
}

void Print(const char* what, double measured, double goal) {
  std::printf("%-40s %8.2f ms, goal %7.2f: %.2f times it\n", what, measured, goal, measured / goal);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  tenora::RichTextBox box;
  tenora::LetterView view(box);
  view.ChangeWidth(true);
  view.resize(1000, 900);
  view.show();
  QApplication::processEvents();
  const std::string letter = LongLetter();

  QElapsedTimer timer;
  timer.start();
  box.SetTextRTF(letter);
  view.editor().ShowBox();
  view.grab();
  Print("open and show 100 pages", double(timer.nsecsElapsed()) / 1e6, kOpenGoal);

  box.Select(300'000, 0);
  view.grab();
  std::vector<double> keys;
  for (int i = 0; i < kKeys; ++i) {
    timer.restart();
    QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, i % 6 == 5 ? " " : "x");
    QApplication::sendEvent(&view.editor(), &key);
    QApplication::processEvents();
    view.editor().viewport()->grab();
    keys.push_back(double(timer.nsecsElapsed()) / 1e6);
  }
  std::sort(keys.begin(), keys.end());
  Print("a key in the middle, median", keys[keys.size() / 2], kKeyGoal);
  Print("a key in the middle, slowest", keys.back(), kKeyGoal);

  timer.restart();
  const std::size_t bytes = box.TextRTF().size();
  Print("the box's source after typing", double(timer.nsecsElapsed()) / 1e6, kOpenGoal);
  return bytes > letter.size() / 2 ? 0 : 1;
}
