// One run of letters: makes, saves and hands over each letter, and records every step in the run
// log before it could be done twice.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>

#include "letters/generate/letter_files.h"
#include "letters/generate/letter_maker.h"
#include "letters/generate/letters_to_come.h"
#include "letters/generate/merge_ahead.h"
#include "letters/generate/run_ledger.h"
#include "letters/generation.h"
#include "letters/letter_names.h"
#include "output/email_sender.h"
#include "output/letter_printing.h"
#include "output/pdf_workers.h"

namespace tenora {

class LetterRun {
 public:
  LetterRun(Session& session, AfterError after_error, GenerationObserver& observer,
            printing::Printers* printers, RunLedger& log, LetterMaker& maker,
            clsEmailSender& sender);
  LetterRun(const LetterRun&) = delete;
  LetterRun& operator=(const LetterRun&) = delete;
  ~LetterRun();

  // Makes every letter that the log does not show as done or in doubt, in the way of each. So many
  // threads merge, 0 for one for each processor. A database server that goes away is waited for.
  GenerationSummary Go(ResumeWay way, unsigned threads, std::chrono::milliseconds wait_for_server);

 private:
  using Result = LetterReport::Result;

  const GenerationRequest& request() const { return log_.request(); }
  bool Settled(std::size_t number) const;
  Resuming WayOf(std::size_t number) const { return way_ ? way_(number) : Resuming::kUsual; }
  bool Done(std::size_t number) const;
  LetterReport ReportOn(std::size_t number) const;
  // One letter from template to destination. False when the run must end.
  bool Process(std::size_t number);
  // Raises whatever goes wrong; false when the user stopped in the middle of it.
  bool MakeAndHandOver(LetterReport& report);
  bool Merge(LetterReport& report);
  // Gives the letter's file its name too, which is then saved; false as Merge.
  bool MergeAndSave(LetterReport& report);
  // The letters that are certain to be merged.
  std::unique_ptr<MergeAhead> BeginToMerge(unsigned threads);
  // "3 of 33 letters", for a question of the current one.
  std::string Progress() const;
  // Puts what the check of a letter found into its report.
  static void Tell(LetterReport& report, const std::vector<LetterFinding>& findings);
  // Looks again at a letter that an earlier run held back. As MakeAndHandOver.
  bool CheckAgain(LetterReport& report);
  // False when the user stopped while the mail server was silent.
  bool HandOver(LetterReport& report);
  bool Mail(LetterReport& report);
  void PrintInJob(LetterReport& report);

  void MakePdf(LetterReport& report);
  void TakePdfs(std::vector<PdfResult> results);

  // True when letters in a row could not read the database, or its server is not there, and it
  // cannot be read at all.
  bool DatabaseLost();
  // Waits for it where it is not. True for a file.
  bool ServerIsThere();
  // False when the run must end.
  bool Fail(LetterReport report, const std::string& problem);
  // Writes the letters that waited for their names.
  void SaveWaiting();
  void SyncGroup();
  void EndJob();
  void Finish();
  GenerationSummary Summary() const;

  Session& session_;
  const AfterError after_error_;
  GenerationObserver& observer_;
  RunLedger& log_;
  LetterFiles files_;
  const LetterNames names_;
  LetterMaker& maker_;
  ResumeWay way_;
  frmLetter* letter_ = nullptr;  // the current one
  clsEmailSender& sender_;       // keeps its connection from one run to the next
  std::optional<PrinterMod> printer_;
  std::optional<PdfWorkers> pdf_workers_;
  std::map<std::size_t, LetterReport> pdf_waiting_;  // letters whose PDFs are being written
  std::vector<std::size_t> unsynced_;                // saved, but perhaps not yet on the disk
  std::vector<std::size_t> in_job_;
  std::chrono::steady_clock::time_point last_sync_ = std::chrono::steady_clock::now();
  std::size_t done_before_ = 0, missing_ = 0, begun_ = 0;
  int unconnected_ = 0;  // letters in a row that met no mail server or program
  int in_doubt_ = 0;     // letters in a row of which the server did not say whether it took them
  std::chrono::milliseconds wait_for_server_{};
  int unread_ = 0;  // letters in a row for which the database could not be read
  bool stopped_ = false;
  MergedFiles merged_;
  std::unique_ptr<MergeAhead> ahead_;
  std::optional<LettersToCome> to_come_;
};

}  // namespace tenora
