// The parts that the main window is made of, without it: the sample agency's folder with templates,
// a tree, a desk and a PDF printer.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "application.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"

namespace tenora {

// Runs work on the caller's thread.
inline void AtOnce(const QString&, const Work& work) {
  class : public WorkProgress {
    void Report(int, int, const QString&) override {}
    bool Cancelled() const override { return false; }
  } progress;
  work(progress);
}

class WindowPartsTest : public ::testing::Test {
 protected:
  WindowPartsTest() {
    platform_.InstallSampleDatabase();
    std::filesystem::create_directories(Data() / "Templates");
    printers_.Load([] { return printing::Printers::Create({}); });
    desk_.resize(900, 600);
    desk_.show();
  }
  std::filesystem::path Data() const { return platform_.ProgramFolder(); }
  std::filesystem::path SaveTemplate(const std::string& name, const std::string& text) {
    std::filesystem::path path = Data() / "Templates" / (name + ".rtf");
    WriteWholeFile(path, "{\\rtf1 " + text + "}");
    tree_.RefreshTree();
    return path;
  }
  TreeModel::Entry Entry(const QString& key) {
    const TreeModel::Entry* entry = tree_.model().EntryAt(tree_.model().IndexOfKey(key));
    if (entry == nullptr) throw std::runtime_error("no entry " + key.toStdString());
    return *entry;
  }
  void LoadTenants() {
    session_.database.OpenDatabase();
    session_.caches.CacheTenants(session_.database);
    session_.database.CloseDatabase();
    tree_.RefreshTree();
  }
  LetterMembers& InFront() { return letters_.Active()->letter().members(); }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  ctlTree tree_{session_};
  WindowPrinters printers_{session_};
  LetterDesk desk_;
  LetterSpelling spelling_{session_, desk_, &desk_};
  OpenLetters letters_{session_, tree_, desk_, printers_, spelling_};
};

}  // namespace tenora
