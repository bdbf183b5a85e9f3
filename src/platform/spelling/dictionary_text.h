// Converts words between UTF-8 and a dictionary's encoding.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct UConverter;

namespace tenora::spelling {

class DictionaryText {
 public:
  // An encoding as dictionaries name it ("UTF-8", "ISO8859-1", "microsoft-cp1251"); one that is not
  // known counts as UTF-8.
  explicit DictionaryText(std::string_view encoding);

  // None when the encoding lacks one of the characters.
  std::optional<std::string> Encode(std::string_view utf8) const;
  std::string Decode(std::string_view bytes) const;

 private:
  struct Close {
    void operator()(UConverter* converter) const;
  };
  std::unique_ptr<UConverter, Close> converter_;  // null for UTF-8
};

// The word without macrons: "Māori" is "Maori".
std::string WithoutMacrons(std::string_view utf8);

}  // namespace tenora::spelling
