// Message boxes for background work: called on any thread, shown on the main one.
#pragma once

#include <QCoreApplication>
#include <QThread>
#include <type_traits>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class MainThreadDialogs : public Dialogs {
 public:
  // `shown` must outlive this object.
  explicit MainThreadDialogs(Dialogs& shown) : shown_(shown) {}

  Answer Show(const MessageBox& box) override {
    return OnMainThread([&] { return shown_.Show(box); });
  }
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override {
    return OnMainThread([&] { return shown_.AskText(prompt, title, default_answer); });
  }
  LetterAnswer AskForLetter(const LetterQuestion& question) override {
    return OnMainThread([&] { return shown_.AskForLetter(question); });
  }
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override {
    return OnMainThread([&] { return shown_.Choose(title, items, default_item); });
  }
  std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                           const PrintChoice& shown) override {
    return OnMainThread([&] { return shown_.ChoosePrinter(printers, shown); });
  }
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override {
    return OnMainThread([&] { return shown_.ChooseFileToOpen(title, filter); });
  }
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override {
    return OnMainThread([&] { return shown_.ChooseFileToSave(title, filter, suggestion); });
  }

 private:
  // Waits for the answer.
  template <typename Question>
  static std::invoke_result_t<Question> OnMainThread(Question&& question) {
    QObject* main_thread = QCoreApplication::instance();
    if (QThread::currentThread() == main_thread->thread()) return question();
    std::invoke_result_t<Question> answer{};
    QMetaObject::invokeMethod(
        main_thread, [&] { answer = question(); }, Qt::BlockingQueuedConnection);
    return answer;
  }

  Dialogs& shown_;
};

}  // namespace tenora
