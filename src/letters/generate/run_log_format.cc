#include "letters/generate/run_log_format.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kFirstWord = "Tenora run log";
// Held letters came with format 2, name patterns and files of all letters with format 3. A log has
// the lowest that it needs, so that earlier versions read what they know and name what they do not.
constexpr std::string_view kVersion = "2";
constexpr std::string_view kVersionOfAllLetters = "3";
constexpr std::string_view kVersionBefore = "1";
constexpr std::string_view kHeadEnd = "letters";
constexpr std::size_t kMostRecipients = 10'000'000;

constexpr std::array<std::string_view, 5> kRemarks{"resumed", "stopped", "ended", "complete",
                                                   "forgotten"};
constexpr std::string_view kAnswer = "answer";

template <typename Enum, std::size_t Count>
std::optional<Enum> FromWord(const std::array<std::string_view, Count>& words,
                             std::string_view word) {
  for (std::size_t i = 0; i < Count; ++i) {
    if (words[i] == word) return static_cast<Enum>(i);
  }
  return std::nullopt;
}

// A field on its line: separators, and everything a terminal would interpret, are escaped.
std::string Escaped(std::string_view field) {
  std::string text;
  for (const char c : field) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\\') {
      text += "\\\\";
    } else if (byte < 0x20 || byte == 0x7F) {
      std::array<char, 8> hex{};
      std::snprintf(hex.data(), hex.size(), "\\x%02X", byte);
      text += hex.data();
    } else {
      text += c;
    }
  }
  return text;
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string field;
  while (!text.empty()) {
    if (text[0] != '\\') {
      if (static_cast<unsigned char>(text[0]) < 0x20) return std::nullopt;
      field += text[0];
      text.remove_prefix(1);
    } else if (text.starts_with("\\\\")) {
      field += '\\';
      text.remove_prefix(2);
    } else {
      unsigned value = 0;
      if (text.size() < 4 || text[1] != 'x') return std::nullopt;
      const char* const end = text.data() + 4;
      if (std::from_chars(text.data() + 2, end, value, 16).ptr != end) return std::nullopt;
      field += static_cast<char>(value);
      text.remove_prefix(4);
    }
  }
  return field;
}

std::string Line(std::initializer_list<std::string_view> fields) {
  std::string line;
  for (const std::string_view field : fields) {
    if (!line.empty()) line += '\t';
    line += Escaped(field);
  }
  return line += '\n';
}

std::string TimeText(Date time) { return FormatDate(time, "yyyy-mm-dd hh:nn:ss"); }

// A file of all letters together: where it goes the person who asked for the run has said, who is
// not always the one who resumes it.
bool IsMergedFile(const std::filesystem::path& path, std::string_view ending) {
  return path.empty() || (path.is_absolute() && EqualsNoCase(path.extension().string(), ending));
}

class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  LoggedRun Read() {
    ReadFirstLine();
    while (!in_letters_) ReadHeadLine(NextLine());
    if (run_.request.template_kind.empty() || run_.log_name.empty() || run_.data_folder.empty()) {
      Damaged();
    }
    if (run_.request.template_kind == kOwnerTemplates) {
      for (Recipient& owner : run_.request.recipients) std::swap(owner.code, owner.owner_code);
    }
    run_.letters.resize(run_.request.recipients.size());
    while (!rest_.empty()) ReadLetterLine(NextLine());
    return std::move(run_);
  }

 private:
  using Fields = std::vector<std::string>;

  [[noreturn]] void Refuse(const std::string& why) const {
    throw StandardError(error_number::kInvalidFileFormat, why);
  }
  [[noreturn]] void Damaged() const {
    Refuse("the run log is damaged in line " + std::to_string(line_));
  }

  Fields NextLine() {
    ++line_;
    const std::size_t end = rest_.find('\n');
    if (end == std::string_view::npos) {
      Refuse("the run log ends before its first letter; nothing of that run was done");
    }
    Fields fields = Split(rest_.substr(0, end), "\t");
    rest_.remove_prefix(end + 1);
    for (std::string& field : fields) {
      const std::optional<std::string> text = Unescaped(field);
      if (!text) Damaged();
      field = *text;
    }
    return fields;
  }

  void ReadFirstLine() {
    if (!BeginsRunLog(rest_)) Refuse("this is not a Tenora run log");
    const Fields first = NextLine();
    if (first.size() != 2 || first[0] != kFirstWord) Damaged();
    if (first[1] != kVersion && first[1] != kVersionBefore && first[1] != kVersionOfAllLetters) {
      Refuse("the run log was written by another version of Tenora, in format " + first[1] +
             "; resume it with that version");
    }
  }

  void ReadHeadLine(const Fields& fields) {
    const std::string& word = fields[0];
    const std::size_t count = fields.size();
    GenerationRequest& request = run_.request;
    if (word == kHeadEnd && count == 1) {
      in_letters_ = true;
    } else if (word == "recipient" && count == 4) {
      if (request.recipients.size() == kMostRecipients) Damaged();
      if (Number(fields[1]) != request.recipients.size() + 1) Damaged();
      request.recipients.push_back({fields[2], fields[3], {}});
    } else if (word == "template" && count == 3) {
      if (fields[1] != kTemplates && fields[1] != kOwnerTemplates) Damaged();
      request.template_kind = fields[1];
      request.template_name = fields[2];
    } else if (word == kAnswer && count == 3) {
      request.answers[fields[1]] = fields[2];
    } else if (count == 2) {
      ReadSetting(word, fields[1]);
    } else {
      Damaged();
    }
  }

  void ReadSetting(const std::string& word, const std::string& value) {
    GenerationRequest& request = run_.request;
    if (word == "log") {
      run_.log_name = value;
    } else if (word == "data folder") {
      run_.data_folder = value;
    } else if (word == "database") {
      request.database = value;
    } else if (word == "destination") {
      const auto destination = DestinationOf(value);
      if (!destination) Damaged();
      request.destination = *destination;
    } else if (word == "subject") {
      request.subject = value;
    } else if (word == "printer") {
      request.printer = value;
    } else if (word == "pdf" && (value == "yes" || value == "no")) {
      request.pdf = value == "yes";
    } else if (word == "name pattern") {
      request.name_pattern = value;
    } else if (word == "one pdf" && IsMergedFile(value, ".pdf")) {
      request.one_pdf = value;
    } else if (word == "duplex" && value == "yes") {
      request.duplex = true;
    } else if (word == "post list" && IsMergedFile(value, ".csv")) {
      request.post_list = value;
    } else if (word == "started") {
      run_.started = value;
      attempt_ = value;
    } else {
      Damaged();
    }
  }

  std::size_t Number(const std::string& text) const {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) Damaged();
    return number;
  }

  void ReadLetterLine(const Fields& fields) {
    if (const auto remark = FromWord<RunRemark>(kRemarks, fields[0])) {
      if (remark == RunRemark::kResumed && fields.size() == 2) attempt_ = fields[1];
      return;
    }
    if (fields[0] == kAnswer && fields.size() == 3) {
      run_.request.answers[fields[1]] = fields[2];
      return;
    }
    const auto state = LetterStateOf(fields[0]);
    if (!state || fields.size() != (*state == LetterState::kHeld ? 6 : 5)) Damaged();
    const std::size_t number = Number(fields[1]);
    if (number == 0 || number > run_.letters.size()) Damaged();
    const Recipient& recipient = run_.request.recipients[number - 1];
    if (fields[2] != recipient.name) Damaged();
    RequireInFolder(fields[3], recipient.name);
    LoggedLetter& letter = run_.letters[number - 1];
    std::string written =
        FingerprintIn(*state, fields[4], fields.size() > 5 ? fields[5] : std::string());
    if (written.empty() && letter.file == fields[3]) written = letter.fingerprint;
    letter = {*state, fields[3], fields[4], std::move(written), attempt_};
  }

  void RequireInFolder(const std::string& file, const std::string& name) const {
    if (file.empty() || IsInFolderOf(name, file)) return;
    Refuse("the run log names \"" + file + "\" in line " + std::to_string(line_) +
           ", which is not a letter in the folder of " + name);
  }

  std::string_view rest_;
  std::size_t line_ = 0;
  bool in_letters_ = false;
  std::string attempt_;
  LoggedRun run_;
};

}  // namespace

std::string RunLogHead(const LoggedRun& run, Date now) {
  const GenerationRequest& request = run.request;
  const auto destination = WordOf(request.destination);
  const bool pattern = !request.name_pattern.value_or("").empty();
  const bool of_all = pattern || request.one_pdf || request.duplex || request.post_list;
  std::string text = Line({kFirstWord, of_all ? kVersionOfAllLetters : kVersion});
  text += Line({"log", run.log_name});
  text += Line({"started", TimeText(now)});
  text += Line({"data folder", run.data_folder});
  if (!request.database.empty()) text += Line({"database", request.database});
  text += Line({"template", request.template_kind, request.template_name});
  text += Line({"destination", destination});
  if (request.destination == Destination::kEmail) text += Line({"subject", request.subject});
  if (request.destination == Destination::kPrinter) text += Line({"printer", request.printer});
  text += Line({"pdf", request.pdf ? "yes" : "no"});
  if (pattern) text += Line({"name pattern", *request.name_pattern});
  if (request.one_pdf) text += Line({"one pdf", request.one_pdf->string()});
  if (request.duplex) text += Line({"duplex", "yes"});
  if (request.post_list) text += Line({"post list", request.post_list->string()});
  for (const auto& [prompt, answer] : request.answers) text += RunLogAnswer(prompt, answer);
  for (std::size_t i = 0; i < request.recipients.size(); ++i) {
    const Recipient& recipient = request.recipients[i];
    const bool owner = recipient.code.empty();
    text += Line({"recipient", std::to_string(i + 1), recipient.name,
                  owner ? recipient.owner_code : recipient.code});
  }
  return text += Line({kHeadEnd});
}

std::string RunLogLine(LetterState state, std::size_t number, const std::string& name,
                       const LoggedLetter& letter) {
  const std::string_view word = WordOf(state);
  const std::string place = std::to_string(number);
  return state == LetterState::kHeld
             ? Line({word, place, name, letter.file, letter.detail, letter.fingerprint})
             : Line({word, place, name, letter.file, letter.detail});
}

std::string RunLogAnswer(const std::string& prompt, const std::string& answer) {
  return Line({kAnswer, prompt, answer});
}

std::string RunLogRemark(RunRemark remark, Date now) {
  return Line({kRemarks[static_cast<std::size_t>(remark)], TimeText(now)});
}

bool EndsSettled(std::string_view end) {
  end.remove_suffix(end.size() - WholeLines(end));
  if (end.empty()) return false;
  end.remove_suffix(1);
  const std::string_view line = end.substr(end.rfind('\n') + 1);
  const auto remark = FromWord<RunRemark>(kRemarks, line.substr(0, line.find('\t')));
  return remark == RunRemark::kComplete || remark == RunRemark::kForgotten;
}

bool BeginsRunLog(std::string_view text) {
  return kFirstWord.starts_with(text.substr(0, kFirstWord.size()));
}

std::size_t WholeLines(std::string_view text) {
  const std::size_t last = text.rfind('\n');
  return last == std::string_view::npos ? 0 : last + 1;
}

bool IsRunOf(std::string_view beginning, std::string_view template_kind,
             std::string_view template_name) {
  // A name may have been typed in other letter case.
  return ContainsNoCase(beginning, '\n' + Line({"template", template_kind, template_name}));
}

LoggedRun ReadRunLog(std::string_view text) { return Reader(text).Read(); }

}  // namespace tenora
