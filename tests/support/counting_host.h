// Stands in for the window around a letter: counts what the letter tells it, and answers as a test
// says.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "letters/letter_host.h"

namespace tenora::test {

class CountingHost : public LetterHost {
 public:
  explicit CountingHost(std::string insert_list = {}) : insert_list_(std::move(insert_list)) {}

  void ShowFutureDateDialog(RichTextBox& editor) override { choose_future_date(editor); }
  void FocusEditor() override { ++focused; }
  void BeforeSave() override { ++saves; }
  void ShowCaption() override {}
  void SetWidth(int twips) override { width = twips; }
  void CloseLetter() override { ++closed; }
  void RefreshTree() override { ++refreshed; }
  std::string InsertListName() override { return insert_list_; }
  void ShowSaveError(const RuntimeError& error) override {
    ++failed;
    last_error = ErrorText(error);
  }
  bool ConfirmFileName(const std::string& typed, const std::string& used) override {
    names_asked.push_back(typed + " -> " + used);
    return may_rename;
  }
  bool ConfirmReplace(const std::filesystem::path& path) override {
    replacements_asked.push_back(path.filename().string());
    return may_replace;
  }
  bool ConfirmOverwrite(const std::filesystem::path&) override {
    ++overwrites_asked;
    return may_overwrite;
  }
  int PaperWidth() override { return paper_width; }

  int focused = 0, saves = 0, closed = 0, refreshed = 0, failed = 0, overwrites_asked = 0;
  int width = -1;  // twips, of the last SetWidth
  std::string last_error;
  std::vector<std::string> names_asked, replacements_asked;
  bool may_rename = true, may_replace = true, may_overwrite = true;
  int paper_width = 0;
  std::function<void(RichTextBox& editor)> choose_future_date;

 private:
  std::string insert_list_;
};

}  // namespace tenora::test
