// The window around an open letter, as the letter sees it: the letter notifies it of changes and
// asks it for what only a window or its user can provide.
#pragma once

#include <filesystem>
#include <string>

#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/error.h"

namespace tenora {

class LetterHost {
 public:
  virtual ~LetterHost() = default;

  // Lets the user choose a future date, whose code replaces the editor's selection.
  virtual void ShowFutureDateDialog(RichTextBox& editor) = 0;
  virtual void FocusEditor() = 0;
  // Immediately before every write of the letter's file.
  virtual void BeforeSave() = 0;
  // The caption or the changed flag has changed.
  virtual void ShowCaption() = 0;
  // Where text wraps, in twips from the left edge; 0: at the window's edge.
  virtual void SetWidth(int twips) = 0;
  virtual void CloseLetter() = 0;
  // The letter's folder has changed.
  virtual void RefreshTree() = 0;
  // The name of the current insert list, which words the messages of a letter in the folder of the
  // same name. Empty where there is none.
  virtual std::string InsertListName() = 0;
  // The letter could not be written, and is not saved in any earlier state either.
  virtual void ShowSaveError(const RuntimeError& error) = 0;
  // Whether SaveAs may call the file `used`, since not every system could open one called `typed`.
  virtual bool ConfirmFileName(const std::string& typed, const std::string& used) = 0;
  // Whether SaveAs may replace this file, whose name may differ from the given one in letter case.
  virtual bool ConfirmReplace(const std::filesystem::path& path) = 0;
  // Whether Save may write over what another program has put into the letter's file since it was
  // loaded or saved here.
  virtual bool ConfirmOverwrite(const std::filesystem::path& path) = 0;
  // The width of the current printer's paper in the letter's orientation, in twips.
  virtual int PaperWidth() = 0;
};

// For a letter that no window shows: on the command line, in a batch, and for the copies that are
// printed or mailed. Ignores notifications and confirms every question; the paper is A4.
class WindowlessHost : public LetterHost {
 public:
  void ShowFutureDateDialog(RichTextBox&) override {}
  void FocusEditor() override {}
  void BeforeSave() override {}
  void ShowCaption() override {}
  void SetWidth(int) override {}
  void CloseLetter() override {}
  void RefreshTree() override {}
  std::string InsertListName() override { return {}; }
  void ShowSaveError(const RuntimeError&) override {}
  bool ConfirmFileName(const std::string&, const std::string&) override { return true; }
  bool ConfirmReplace(const std::filesystem::path&) override { return true; }
  bool ConfirmOverwrite(const std::filesystem::path&) override { return true; }
  int PaperWidth() override { return 11906; }
};

}  // namespace tenora
