#include "ui/window/letter/recent_letters.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

// One value for all: the hive's file is written once then.
constexpr std::string_view kKey = "SOFTWARE\\Tenora\\Mail";
constexpr std::string_view kName = "RecentLetters";
constexpr auto kHive = registry::Hive::kCurrentUser;

// A letter as a line: the kind and the path, between them a field that is not used any more.
std::string TextOf(const RecentLetter& letter) {
  return letter.kind + "\t\t" + letter.path.string();
}

std::optional<RecentLetter> LetterOf(const std::string& text) {
  const std::size_t kind = text.find('\t');
  const std::size_t unused = kind == std::string::npos ? kind : text.find('\t', kind + 1);
  if (unused == std::string::npos) return std::nullopt;
  RecentLetter letter{text.substr(unused + 1), text.substr(0, kind)};
  if (!letter.path.is_absolute()) return std::nullopt;
  return letter;
}

}  // namespace

std::vector<RecentLetter> RecentLetters::List() const {
  std::vector<RecentLetter> letters;
  registry::StoredValue value;
  if (registry_.Query(kHive, kKey, kName, value) != registry::kSuccess) return letters;
  for (const std::string& line : Split(value.bytes, "\n")) {
    auto letter = LetterOf(line);
    if (letter && letters.size() < kMost) letters.push_back(std::move(*letter));
  }
  return letters;
}

void RecentLetters::Add(const RecentLetter& letter) {
  // Such a path would be two lines.
  if (letter.path.string().find('\n') != std::string::npos) return;
  std::vector<RecentLetter> letters = List();
  if (!letters.empty() && letters.front() == letter) return;
  std::erase_if(letters, [&](const RecentLetter& each) { return each.path == letter.path; });
  letters.insert(letters.begin(), letter);
  if (letters.size() > kMost) letters.resize(kMost);
  Store(letters);
}

void RecentLetters::Clear() { Store({}); }

void RecentLetters::Store(const std::vector<RecentLetter>& letters) {
  std::string text;
  for (const RecentLetter& letter : letters) text += TextOf(letter) + '\n';
  registry_.Set(kHive, kKey, kName, {registry::ValueType::kText, text});
}

}  // namespace tenora
