#include "platform/access/format/sort_codes.h"

#include <charconv>

namespace tenora::access {
namespace {

constexpr std::size_t kMostRepeated = 8;  // words
// Weights are made of bytes from 02 on: 00 and 01 end the sections of a key.
constexpr int kLeastWeight = 2, kWeightValues = 254;

// Removes a number in hexadecimal of at most `digits` digits from the front; -1 for none.
int TakeHex(std::string_view& text, std::size_t digits) {
  int number = -1;
  const char* const start = text.data();
  const auto [end, error] =
      std::from_chars(start, start + std::min(digits, text.size()), number, 16);
  text.remove_prefix(static_cast<std::size_t>(end - start));
  return number;
}

template <std::size_t kSize>
std::uint8_t TakeBytes(std::string_view& text, std::array<char, kSize>& bytes) {
  std::uint8_t count = 0;
  for (int byte; count < kSize && (byte = TakeHex(text, 2)) >= 0;) {
    bytes[count++] = static_cast<char>(byte);
  }
  return count;
}

void CountUp(SortCodes& codes, int step) {
  if (codes.weight_size < 2) return;
  char &high = codes.weights[codes.weight_size - 2U], &low = codes.weights[codes.weight_size - 1U];
  const int number = static_cast<unsigned char>(low) - kLeastWeight + step;
  low = static_cast<char>(number % kWeightValues + kLeastWeight);
  high = static_cast<char>(high + number / kWeightValues);
}

// The codes that a word gives to the character after one with the codes `before`.
SortCodes ReadWord(std::string_view word, const SortCodes& before) {
  SortCodes codes;
  const char first = word.front();
  if (first == '?') return codes;
  if (first == '-' || first == '\'') {
    word.remove_prefix(1);
    codes.kind = first == '-' ? SortCodes::kIgnored : SortCodes::kMark;
    if (first == '\'') codes.mark = static_cast<char>(TakeHex(word, 2));
    return codes;
  }
  if (first == '=' || first == '+') {
    word.remove_prefix(1);
    codes.weights = before.weights;
    codes.weight_size = before.weight_size;
    if (first == '+') {
      const int step = TakeHex(word, 1);
      CountUp(codes, step < 0 ? 1 : step);
    }
  } else {
    codes.weight_size = TakeBytes(word, codes.weights);
  }
  if (word.starts_with('.')) {
    word.remove_prefix(1);
    codes.accent_count = TakeBytes(word, codes.accents);
  }
  codes.kind = codes.weight_size == 0 ? SortCodes::kCombining : SortCodes::kWeights;
  if (!word.empty()) codes.kana = word.front() == 's' ? SortCodes::kSmall : SortCodes::kFull;
  return codes;
}

}  // namespace

void ReadSortCodes(const SortCodeRow& row, std::span<SortCodes> codes) {
  std::array<std::string_view, kMostRepeated> last;
  std::size_t count = 0;
  SortCodes before;
  const auto put = [&](std::string_view word) {
    before = ReadWord(word, before);
    codes[count] = before;
    last[count++ % kMostRepeated] = word;
  };
  for (std::string_view rest = row.words; !rest.empty() && count < codes.size();) {
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(rest.size(), word.size() + 1));
    if (word.front() != '@') {
      put(word);
      continue;
    }
    const auto size = static_cast<std::size_t>(word[1] - '0');
    std::size_t times = 0;
    std::from_chars(word.data() + 3, word.data() + word.size(), times);
    for (std::size_t i = 0; i < size * times && count < codes.size(); ++i) {
      put(last[(count - size) % kMostRepeated]);
    }
  }
}

}  // namespace tenora::access
