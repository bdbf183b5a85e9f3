#include "merge/fact.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"
#include "rental/missing_date.h"

namespace tenora {
namespace {

std::string Folded(std::string_view name) {
  std::string folded;
  for (const std::string& word : Split(ToLower(name), " ")) {
    if (!word.empty()) folded += (folded.empty() ? "" : " ") + word;
  }
  return folded;
}

std::size_t WordsOf(std::string_view folded) {
  return 1 + static_cast<std::size_t>(std::ranges::count(folded, ' '));
}

std::string DayText(Date date) {
  const std::string day = FormatDate(date, "yyyy-mm-dd");
  return date.SecondOfDay() == 0 ? day : day + "T" + FormatDate(date, "hh:nn:ss");
}

}  // namespace

std::string PlainText(const Fact& fact) {
  if (const auto* text = std::get_if<std::string>(&fact)) return *text;
  if (const auto* number = std::get_if<double>(&fact)) return NumberText(*number);
  if (const auto* money = std::get_if<Currency>(&fact)) return money->ToText();
  if (const auto* date = std::get_if<Date>(&fact)) return DayText(*date);
  if (const auto* yes = std::get_if<bool>(&fact)) return *yes ? "yes" : "no";
  return {};
}

Fact DateFact(Date date) {
  if (DateMeansNone(date)) return {};
  return date;
}

Fact TextFact(std::string text) {
  if (TrimBlanks(text).empty()) return {};
  return text;
}

void FactNames::Add(std::string_view name, FactType type) {
  std::string folded = Folded(name);
  longest_words_ = std::max(longest_words_, WordsOf(folded));
  if (by_folded_.emplace(std::move(folded), names_.size()).second) {
    names_.push_back({std::string(name), type});
  }
}

void FactNames::AddNames(const FactNames& others) {
  for (const Name& other : others.names_) Add(other.name, other.type);
}

void FactNames::Add(const FactNames& others) {
  AddNames(others);
  prefixes_.insert(prefixes_.end(), others.prefixes_.begin(), others.prefixes_.end());
}

const FactNames::Name* FactNames::Find(std::string_view name) const {
  const auto found = by_folded_.find(Folded(name));
  return found == by_folded_.end() ? nullptr : &names_[found->second];
}

bool FactNames::IsField(std::string_view name) const {
  return std::ranges::any_of(prefixes_, [&](const std::string& prefix) {
    return name.size() > prefix.size() && name.starts_with(prefix);
  });
}

std::vector<std::string_view> FactNames::All() const {
  std::vector<std::string_view> all;
  for (const Name& name : names_) {
    if (name.type != FactType::kField) all.push_back(name.name);
  }
  return all;
}

}  // namespace tenora
