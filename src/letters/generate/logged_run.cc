#include "letters/generate/logged_run.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace tenora {
namespace {

// In the order of LetterState.
constexpr std::array<std::string_view, 11> kStates{"waiting", "saving",   "saved",     "sending",
                                                   "mailed",  "printing", "printed",   "failed",
                                                   "holding", "held",     "no address"};

// In the order of Destination.
constexpr std::array<std::string_view, 3> kDestinations{"folder", "printer", "email"};

template <typename Enum>
std::optional<Enum> FromWord(std::span<const std::string_view> words, std::string_view word) {
  const auto found = std::ranges::find(words, word);
  if (found == words.end()) return std::nullopt;
  return static_cast<Enum>(found - words.begin());
}

}  // namespace

std::string_view WordOf(LetterState state) { return kStates[static_cast<std::size_t>(state)]; }
std::optional<LetterState> LetterStateOf(std::string_view word) {
  return FromWord<LetterState>(kStates, word);
}

std::string_view WordOf(Destination destination) {
  return kDestinations[static_cast<std::size_t>(destination)];
}
std::optional<Destination> DestinationOf(std::string_view word) {
  return FromWord<Destination>(kDestinations, word);
}

}  // namespace tenora
