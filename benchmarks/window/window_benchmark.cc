// The windows over a large database: window_benchmark DATABASE. From the splash's end to the main
// window drawn; a key in the tree's search box; the generate dialog opened, what it shows of the
// recipients there, at the first opening and a later one, and sorted, all ticked, a key in its
// search box; a template's preview begun, and a step of it to the next person. Each figure is the
// slowest of its kind, with the processor's time of all threads, which other programs do not
// lengthen.
#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QTreeView>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iostream>

#include "letters/template_library.h"
#include "support/fake_platform.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

constexpr double kUpGoal = 700, kAtOnce = 100, kStepGoal = 50, kValuesGoal = 500;  // ms
constexpr int kSteps = 20;
constexpr int kRounds = 5;
constexpr const char* kTyped = "young 1";

struct Time {
  double wall = 0, processor = 0;  // ms
};

Time Milliseconds(const std::function<void()>& work) {
  QElapsedTimer timer;
  timer.start();
  const std::clock_t before = std::clock();
  work();
  return {static_cast<double>(timer.nsecsElapsed()) / 1e6,
          static_cast<double>(std::clock() - before) * 1e3 / CLOCKS_PER_SEC};
}

void Slowest(Time& slowest, const Time& time) {
  slowest.wall = std::max(slowest.wall, time.wall);
  slowest.processor = std::max(slowest.processor, time.processor);
}

void Print(const char* what, const Time& slowest, double goal) {
  std::printf("%-45s %7.1f ms, processor %7.1f, goal %4.0f: %.2f times it\n", what, slowest.wall,
              slowest.processor, goal, slowest.processor / goal);
}

// The slowest key, until the window is drawn again.
Time Type(QWidget& window, const char* field) {
  auto* box = window.findChild<QWidget*>(QLatin1String(field));
  Time slowest;
  for (const char* c = kTyped; *c != '\0'; ++c) {
    Slowest(slowest, Milliseconds([&] {
              QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(QChar(*c)));
              QApplication::sendEvent(box, &key);
              QApplication::processEvents();
              window.grab();
            }));
  }
  return slowest;
}

struct PreviewTimes {
  Time begun, step;
};

PreviewTimes Preview(frmMain& window, const std::filesystem::path& home) {
  std::filesystem::create_directories(home / kTemplates);
  const std::filesystem::path file = home / kTemplates / "Notice.rtf";
  std::filesystem::copy_file(
      test::SourceDir() / "examples/agency/Templates/Rent arrears notice.rtf", file);
  window.letters().OpenFile(file);
  LetterWindow* const letter = window.letters().Active();
  const auto drawn = [&](const std::function<void()>& work) {
    return Milliseconds([&] {
      work();
      QApplication::processEvents();
      window.grab();
    });
  };
  PreviewTimes times;
  times.begun = drawn([&] {
    letter->ShowPreview(true);
    while (!letter->PreviewedRecipient()) {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  });
  for (int i = 0; i < kSteps; ++i) {
    Slowest(times.step, drawn([&] { letter->StepPreview(PreviewBar::Step::kNext); }));
  }
  delete letter->parentWidget();
  return times;
}

void Run(const std::filesystem::path& database) {
  PreviewTimes preview;
  Time up, tree_key, dialog_up, tick_all, dialog_key, values, read_before, sorted;
  for (int round = 0; round < kRounds; ++round) {
    test::FakePlatform machine;
    std::filesystem::create_symlink(database, machine.ProgramFolder() / "property.mdb");
    Session session(machine.Parts());
    session.settings.SaveSettingText("Mail", "FormsAtStartup", "1");
    const CommandLine line("");
    const CommandParts parts{line, session, [] { return printing::Printers::Create({}); },
                             std::cout, std::cerr};
    std::unique_ptr<frmMain> window;
    Slowest(up, Milliseconds([&] {
              window = std::make_unique<frmMain>(parts);
              window->MDIForm_Load();
              window->show();
              QApplication::processEvents();
              window->grab();
            }));
    if (round == 0) std::printf("%zu tenancies\n", session.caches.Tenants.size());
    Slowest(tree_key, Type(*window, "txtTreeSearch"));

    std::unique_ptr<frmGenerate> dialog;
    Slowest(dialog_up, Milliseconds([&] {
              dialog = std::make_unique<frmGenerate>(session, std::string(kTemplates), "Notice");
              dialog->show();
              QApplication::processEvents();
              dialog->grab();
            }));
    const auto* state = dialog->findChild<QLabel*>("lblState");
    Slowest(values, Milliseconds([&] {
              while (!state->text().isEmpty()) {
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
              }
              dialog->grab();
            }));
    Slowest(sorted, Milliseconds([&] {
              dialog->findChild<QTreeView*>("lstMultiSelect")
                  ->header()
                  ->setSortIndicator(4, Qt::DescendingOrder);
              dialog->grab();
            }));
    Slowest(tick_all, Milliseconds([&] {
              dialog->findChild<QAbstractButton*>("cmdSelectAll")->click();
              dialog->grab();
            }));
    Slowest(dialog_key, Type(*dialog, "txtSearch"));
    dialog.reset();
    Slowest(read_before, Milliseconds([&] {
              frmGenerate again(session, std::string(kTemplates), "Notice");
              again.show();
              while (!again.findChild<QLabel*>("lblState")->text().isEmpty()) {
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
              }
              again.grab();
            }));
    const PreviewTimes times = Preview(*window, machine.ProgramFolder());
    Slowest(preview.begun, times.begun);
    Slowest(preview.step, times.step);
  }
  Print("main window up after the splash", up, kUpGoal);
  Print("a key in the tree's search box", tree_key, kAtOnce);
  Print("generate dialog up", dialog_up, kAtOnce);
  Print("what is known of the recipients there", values, kValuesGoal);
  Print("generate dialog up with that, once more", read_before, kValuesGoal);
  Print("sorted by the balance", sorted, kAtOnce);
  Print("all recipients ticked", tick_all, kAtOnce);
  Print("a key in the dialog's search box", dialog_key, kAtOnce);
  Print("a template's preview begun", preview.begun, kUpGoal);
  Print("a step of the preview", preview.step, kStepGoal);
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "Usage: %s DATABASE\n", argv[0]);
    return 2;
  }
  tenora::Run(std::filesystem::absolute(argv[1]));
}
