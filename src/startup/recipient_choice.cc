#include "startup/recipient_choice.h"

#include <algorithm>
#include <set>

#include "platform/runtime/file_lookup.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::size_t kMostNamed = 5;

using Rows = std::vector<const RecipientRow*>;

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(), LowerAscii);
  return lowered;
}

const RecipientRow* Nearest(const std::string& asked, std::span<const RecipientRow> rows) {
  const std::string wanted = Lowered(asked);
  const RecipientRow* nearest = nullptr;
  std::size_t best = asked.size() / 2;
  for (const RecipientRow& row : rows) {
    for (const std::string_view text :
         {std::string_view(row.recipient.name), std::string_view(row.key)}) {
      const std::size_t longer = std::max(text.size(), asked.size());
      const std::size_t shorter = std::min(text.size(), asked.size());
      if (longer - shorter > best) continue;
      const std::size_t distance = EditDistance(wanted, Lowered(text));
      if (distance > best || (distance == best && nearest != nullptr)) continue;
      nearest = &row;
      best = distance;
    }
  }
  return nearest;
}

// The rows that match the text by the strictest test that any row passes.
Rows Matches(const std::string& asked, std::span<const RecipientRow> rows) {
  using Test = bool (*)(const RecipientRow&, const std::string&);
  constexpr Test kTests[] = {
      [](const RecipientRow& row, const std::string& text) { return row.key == text; },
      [](const RecipientRow& row, const std::string& text) { return row.text == text; },
      [](const RecipientRow& row, const std::string& text) { return row.recipient.name == text; },
  };
  Rows found;
  for (const Test test : kTests) {
    for (const RecipientRow& row : rows) {
      if (test(row, asked)) found.push_back(&row);
    }
    if (!found.empty()) return found;
  }
  const std::string wanted = FoldedName(asked);
  for (const RecipientRow& row : rows) {
    if (FoldedName(row.key) == wanted || FoldedName(row.text) == wanted ||
        FoldedName(row.recipient.name) == wanted) {
      found.push_back(&row);
    }
  }
  return found;
}

std::string Named(const RecipientRow& row) {
  return row.key.empty() ? row.text : row.text + ", code " + row.key;
}

// The first few of them, and that there are more.
std::string Named(const Rows& rows) {
  std::string names;
  for (std::size_t i = 0; i < std::min(rows.size(), kMostNamed); ++i) {
    names += (i == 0 ? "" : "; ") + Named(*rows[i]);
  }
  return rows.size() > kMostNamed ? names + "; …" : names;
}

// Whom the text may mean: the rows that contain its words, else the one with the nearest spelling.
Rows Likely(const std::string& asked, std::span<const RecipientRow> rows) {
  Rows likely;
  for (const RecipientRow& row : rows) {
    if (MatchesSearch(row, asked)) likely.push_back(&row);
  }
  const RecipientRow* const nearest = likely.empty() ? Nearest(asked, rows) : nullptr;
  if (nearest != nullptr) likely.push_back(nearest);
  return likely;
}

[[noreturn]] void RefuseUnknown(const std::string& asked, std::span<const RecipientRow> rows,
                                std::span<const RecipientRow> closed_too) {
  if (const Rows closed = Matches(asked, closed_too); !closed.empty()) {
    throw WrongChoice("\"" + asked + "\" is closed; add --closed to write to " +
                      Named(*closed.front()) + ".");
  }
  const Rows likely = Likely(asked, rows);
  throw WrongChoice(
      "There is no recipient \"" + asked + "\"" +
      (likely.empty() ? "; --list shows all of them." : ". Is it " + Named(likely) + "?"));
}

[[noreturn]] void RefuseAmbiguous(const std::string& asked, const Rows& found) {
  throw WrongChoice("\"" + asked + "\" may mean " + std::to_string(found.size()) +
                    " recipients; name one by its code: " + Named(found) + ".");
}

}  // namespace

std::vector<Recipient> ChooseByNames(const std::vector<std::string>& asked,
                                     std::span<const RecipientRow> rows,
                                     std::span<const RecipientRow> closed_too) {
  std::vector<Recipient> chosen;
  std::set<const RecipientRow*> taken;
  for (const std::string& text : asked) {
    const Rows found = Matches(text, rows);
    if (found.empty()) RefuseUnknown(text, rows, closed_too);
    const bool one = std::ranges::all_of(
        found, [&](const RecipientRow* row) { return row->recipient == found.front()->recipient; });
    if (!one) RefuseAmbiguous(text, found);
    if (taken.insert(found.front()).second) chosen.push_back(found.front()->recipient);
  }
  return chosen;
}

}  // namespace tenora
