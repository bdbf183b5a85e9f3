// Styles: word processors put formatting into them, the canonical form has it on the text itself.
#pragma once

#include <map>
#include <vector>

#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class StyleSheet {
 public:
  // The content of the \stylesheet group, one entry for each group in it.
  void BeginEntry();
  void Word(const Token& token);
  void EndEntry();

  // The formatting words of a style, those of the styles it is based on first. Empty for a style
  // that is not in the sheet.
  const std::vector<Token>& ParagraphStyle(int number);
  const std::vector<Token>& CharacterStyle(int number);

 private:
  struct Style {
    int number = 0;
    bool character = false;
    int based_on = -1;
    std::vector<Token> words;
    bool resolved = false;
  };
  using Styles = std::map<int, Style>;

  static const std::vector<Token>& Resolve(Styles* styles, int number);

  Styles paragraph_, character_;
  Style entry_;
  bool other_kind_ = false;  // a section or table style
};

}  // namespace tenora::richtext
