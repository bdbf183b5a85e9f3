// A letter of 100 pages: opening it, typing in its middle, undoing, changing a table, and reading
// back and saving what was typed. Goals: a key or an undone step within a sixtieth of a second, the
// rest within a second.
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ui/editor/letter_view.h"

namespace {

constexpr double kOpenGoal = 1000, kKeyGoal = 1000.0 / 60;  // milliseconds
constexpr int kParagraphs = 1400, kKeys = 200;              // 100 pages of 14 paragraphs
constexpr int kTextMiddle = 300'000;                        // a position in the letter's middle

std::string LongLetter() {
  std::string rtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}{\\f1 Times New Roman;}}";
  for (int i = 0; i < kParagraphs; ++i) {
    rtf +=
        "\\pard\\sa120\\f0\\fs22 Dear \\b <<Tenant Name>>\\b0 , the rent for your home is now "
        "\\f1\\i $<<Current Rent>>\\i0\\f0  a week and was last paid on <<Last Payment Date>>. "
        "Please tell us within fourteen days whether you agree, and keep this letter with your "
        "tenancy agreement; we answer questions on every working day.\\par\r\n";
    // Indents that zooming changes in Qt's document.
    if (i % 20 == 10) rtf += "\\pard\\fi300\\ri200 Enclosed: a copy of your agreement.\\par\\pard ";
    if (i % 20 == 0)
      rtf += "\\trowd\\cellx3000\\cellx6000\\pard\\intbl Paid\\cell To\\cell\\row\\pard ";
  }
  return rtf + "}";
}

void Print(const char* what, double measured, double goal) {
  std::printf("%-40s %8.2f ms, goal %7.2f: %.2f times it\n", what, measured, goal, measured / goal);
}

double MillisecondsOf(const auto& work) {
  QElapsedTimer timer;
  timer.start();
  work();
  return double(timer.nsecsElapsed()) / 1e6;
}

double Median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}

void TypeKey(tenora::LetterEditor& editor, int number) {
  QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, number % 6 == 5 ? " " : "x");
  QApplication::sendEvent(&editor, &key);
  QApplication::processEvents();
  editor.viewport()->grab();
}

// Each key in its own paragraph, so that each is a step of its own.
std::vector<double> UndoTimes(tenora::RichTextBox& box, tenora::LetterEditor& editor) {
  constexpr int kSteps = 20;
  for (int i = 0; i < kSteps; ++i) {
    box.Select(kTextMiddle + i * 1000, 0);
    TypeKey(editor, 0);
  }
  std::vector<double> times;
  for (int i = 0; i < kSteps; ++i) times.push_back(MillisecondsOf([&] { editor.Undo(); }));
  return times;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  tenora::RichTextBox box;
  tenora::LetterView view(box);
  view.ShowSheet(true);
  view.resize(1000, 900);
  view.show();
  QApplication::processEvents();
  tenora::LetterEditor& editor = view.editor();
  const std::string letter = LongLetter();

  Print("open and show 100 pages", MillisecondsOf([&] {
          box.SetTextRTF(letter);
          editor.ShowBox();
          view.grab();
        }),
        kOpenGoal);

  box.Select(kTextMiddle, 0);
  view.grab();
  std::vector<double> keys;
  for (int i = 0; i < kKeys; ++i) keys.push_back(MillisecondsOf([&] { TypeKey(editor, i); }));
  Print("a key in the middle, median", Median(keys), kKeyGoal);
  Print("a key in the middle, slowest", std::ranges::max(keys), kKeyGoal);

  std::size_t bytes = 0;
  Print("the box's source after typing", MillisecondsOf([&] { bytes = box.TextRTF().size(); }),
        kOpenGoal);
  TypeKey(editor, 0);
  QTemporaryDir folder;
  const std::string file = folder.filePath("letter.rtf").toStdString();
  Print("saving after a key", MillisecondsOf([&] { box.SaveFile(file); }), kOpenGoal);

  Print("undoing a step, median", Median(UndoTimes(box, editor)), kKeyGoal);
  editor.paper().SetZoom(1.5);
  Print("undoing a step after zooming, median", Median(UndoTimes(box, editor)), kKeyGoal);

  box.Select(box.Find("Paid", kTextMiddle, -1, tenora::RichTextBox::kMatchCase), 0);
  Print("a row into a table",
        MillisecondsOf([&] { editor.tables().InsertRow(tenora::Side::kAfter); }), kOpenGoal);
  return bytes > letter.size() / 2 ? 0 : 1;
}
