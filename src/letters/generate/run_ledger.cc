#include "letters/generate/run_ledger.h"

namespace tenora {

void RunLedger::Note(std::size_t number, LetterState state, const std::string& detail,
                     const std::string& fingerprint) {
  LoggedLetter& letter = run_.letters[number - 1];
  letter.state = state;
  letter.detail = detail;
  const std::string& written = FingerprintIn(state, detail, fingerprint);
  if (!written.empty()) letter.fingerprint = written;
  LetterNoted(number);
}

void RunLedger::NoteFile(std::size_t number, const std::filesystem::path& file) {
  LoggedLetter& letter = run_.letters[number - 1];
  const std::string name =
      file.empty() ? std::string() : file.lexically_relative(data_folder_).string();
  if (name == letter.file) return;
  letter.file = name;
  letter.fingerprint.clear();
}

void RunLedger::NoteAnswer(const std::string& prompt, const std::string& answer) {
  run_.request.answers[prompt] = answer;
  AnswerNoted(prompt, answer);
}

}  // namespace tenora
