#include <algorithm>
#include <hunspell/hunspell.hxx>
#include <set>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/spelling/dictionary_text.h"
#include "platform/spelling/spelling.h"

namespace tenora::spelling {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestWord = 100;  // bytes; what the engine takes
constexpr std::size_t kMostSuggestions = 15;
constexpr std::size_t kLargestUserFile = 16 << 20;

constexpr std::string_view kApostrophe = "\xE2\x80\x99";  // the curly one

bool IsWordCharacter(char32_t c) {
  if (c < 0x80) return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  // Letters of other scripts; what lies between are spaces, quotes, dashes and signs.
  const bool sign = (c >= 0x80 && c <= 0xBF && c != 0xAA && c != 0xB5 && c != 0xBA) || c == 0xD7 ||
                    c == 0xF7 || (c >= 0x2000 && c <= 0x2BFF) || (c >= 0x3000 && c <= 0x3004) ||
                    (c >= 0xE000 && c <= 0xF8FF) || c >= 0xFFF0;
  return !sign;
}

// Strips non-letters from both ends; the curly apostrophe becomes the plain one.
std::string Bare(std::string_view word) {
  std::size_t first = std::string_view::npos, behind_last = 0;
  for (std::string_view rest = word; !rest.empty();) {
    const std::size_t at = word.size() - rest.size();
    if (!IsWordCharacter(TakeCodePoint(rest))) continue;
    first = std::min(first, at);
    behind_last = word.size() - rest.size();
  }
  if (first == std::string_view::npos) return {};
  return ReplaceAll(std::string(word.substr(first, behind_last - first)), kApostrophe, "'");
}

// Not words of a language: numbers, codes, addresses.
bool IsExempt(std::string_view word) {
  return word.empty() || word.size() > kLongestWord || !IsValidUtf8(word) ||
         std::ranges::any_of(word, IsDigit) || word.find('@') != std::string_view::npos ||
         word.find("://") != std::string_view::npos || StartsWithNoCase(word, "www.");
}

fs::path FileOf(const std::vector<fs::path>& folders, const std::string& language) {
  for (const fs::path& folder : folders) {
    std::error_code error;
    const fs::path affixes = folder / (language + ".aff");
    if (fs::exists(affixes, error) && fs::exists(folder / (language + ".dic"), error))
      return affixes;
  }
  return {};
}

class HunspellSpeller : public Speller {
 public:
  HunspellSpeller(std::string language, const fs::path& affixes, fs::path user_words)
      : language_(std::move(language)),
        engine_(affixes.c_str(), fs::path(affixes).replace_extension(".dic").c_str()),
        text_(engine_.get_dict_encoding()),
        user_words_(std::move(user_words)) {
    try {
      for (const std::string& word : WordsIn(UserFile())) Learn(word);
    } catch (const RuntimeError&) {
      // Checking works without it; AddWord, which would write the file, raises the error.
    }
  }

  const std::string& Language() const override { return language_; }

  bool Misspelt(std::string_view given) const override {
    const std::string word = Bare(given);
    if (IsExempt(word) || ignored_.contains(ToLower(word)) || own_words_.contains(word)) {
      return false;
    }
    if (Knows(word)) return false;
    const std::string plain = WithoutMacrons(word);
    return plain == word || !Knows(plain);
  }

  std::vector<std::string> Suggestions(std::string_view given) const override {
    const std::string word = Bare(given);
    std::vector<std::string> suggestions;
    if (IsExempt(word)) return suggestions;
    std::optional<std::string> encoded = text_.Encode(word);
    if (!encoded) encoded = text_.Encode(WithoutMacrons(word));
    if (!encoded) return suggestions;
    for (const std::string& bytes : engine_.suggest(*encoded)) {
      if (suggestions.size() == kMostSuggestions) break;
      suggestions.push_back(text_.Decode(bytes));
    }
    return suggestions;
  }

  void AddWord(std::string_view given) override {
    const std::string word = Bare(given);
    if (word.empty() || word.size() > kLongestWord) return;
    Learn(word);
    if (user_words_.empty()) return;
    // Read again: another program may have added words. Lines that are not words are kept.
    std::string content = UserFile();
    const std::vector<std::string> words = WordsIn(content);
    if (std::ranges::find(words, word) != words.end()) return;
    if (!content.empty() && !content.ends_with('\n')) content.append("\n");
    content.append(word).append("\n");
    std::error_code ignored;
    fs::create_directories(user_words_.parent_path(), ignored);
    WriteWholeFile(user_words_, content);
  }

  void IgnoreAll(std::string_view word) override { ignored_.insert(ToLower(Bare(word))); }

 private:
  bool Knows(const std::string& word) const {
    const std::optional<std::string> encoded = text_.Encode(word);
    return encoded && engine_.spell(*encoded);
  }

  void Learn(const std::string& word) {
    own_words_.insert(word);
    // The engine accepts it in capitals as well. Words outside its encoding are skipped.
    if (const std::optional<std::string> encoded = text_.Encode(word)) engine_.add(*encoded);
  }

  // Empty without a file; raises 75 for one that is too large to be ours.
  std::string UserFile() const {
    std::error_code error;
    if (user_words_.empty() || !fs::exists(user_words_, error)) return {};
    return ReadWholeFile(user_words_, kLargestUserFile);
  }

  static std::vector<std::string> WordsIn(std::string_view content) {
    std::vector<std::string> words;
    for (const std::string& line : Split(content, "\n")) {
      const std::string_view word = TrimBlanks(
          std::string_view(line).substr(0, line.ends_with('\r') ? line.size() - 1 : line.size()));
      if (!word.empty() && word.size() <= kLongestWord && IsValidUtf8(word))
        words.emplace_back(word);
    }
    return words;
  }

  std::string language_;
  // A look-up changes only the engine's caches.
  mutable Hunspell engine_;
  DictionaryText text_;
  fs::path user_words_;
  std::set<std::string> own_words_, ignored_;
};

}  // namespace

std::unique_ptr<Speller> Speller::Open(const Options& options) {
  const std::vector<fs::path> folders =
      options.folders.empty() ? DictionaryFolders() : options.folders;
  const std::string language = NearestLanguage(
      options.language.empty() ? LocaleLanguage() : options.language, InstalledLanguages(folders));
  if (language.empty()) {
    throw StandardError(error_number::kFileNotFound,
                        "no spelling dictionary is installed. Install one, as the package "
                        "hunspell-en-au or hunspell-en-gb.");
  }
  return std::make_unique<HunspellSpeller>(language, FileOf(folders, language), options.user_words);
}

std::vector<std::string> MisspeltWords(const Speller& speller, std::string_view text) {
  std::vector<std::string> misspelt;
  std::string word;
  const auto take = [&] {
    const std::string bare = Bare(word);
    if (speller.Misspelt(bare)) misspelt.push_back(bare);
    word.clear();
  };
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    const bool blank = c <= 0x20 || c == 0xA0 || (c >= 0x2000 && c <= 0x200B) || c == 0x2028 ||
                       c == 0x2029 || c == 0x202F || c == 0x3000 || c == 0xFFFC;
    const bool dash = c == 0x2013 || c == 0x2014 || c == '/' || c == '\\';
    // An address is one word, slashes and all.
    const bool address = word.find("://") != std::string::npos || word.find('@') < word.size() ||
                         word.ends_with(':') || word.ends_with(":/");
    if (blank || (dash && !address)) {
      take();
    } else {
      AppendUtf8(word, c);
    }
  }
  take();
  return misspelt;
}

}  // namespace tenora::spelling
