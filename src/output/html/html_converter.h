// One conversion of one letter: its state, and what each token does to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "output/html/html_head.h"
#include "output/html/tag_stack.h"
#include "output/html/unicode_escapes.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::html {

using richtext::Token;
using richtext::Tokenizer;

struct Options {
  std::string_view line_terminator;    // "\r\n" or empty
  std::int32_t default_font_size = 0;  // 0: none
  bool font_faces = true;
  bool unicode_references = false;
  bool text_entities = false;
};

Options ReadOptions(std::string_view options);

// A converter serves one text under a head, which outlives it, and then is spent.
class Converter {
 public:
  Converter(const Options& options, const Head& head) : options_(options), head_(head) {}

  std::string Convert(std::string_view body);

 private:
  void Run(std::string_view source);
  bool SkipGroup(const Token& token, Tokenizer& tokens);
  void Handle(const Token& token);
  void HandleWord(const Token& token);
  void HandleHexEscape(std::string_view digits);

  // What the control words do.
  void EndGroup();
  void EndParagraph();
  void ResetParagraph();
  void SetColour(std::int32_t number);
  void SetSize(std::int32_t half_points);
  void SetFace(std::int32_t number);
  void Align(std::string_view alignment);
  void StartListItem();
  void WriteUnicode(std::int32_t number);
  std::string FontString() const;

  void WriteText(std::string_view text);
  void WriteBlanks(std::string_view blanks);
  void WriteHtml(std::string_view html);
  // Writes the tags and breaks that wait for the next text.
  void FlushCodes();
  void WriteBreak(std::string_view tag);

  Options options_;
  const Head& head_;
  std::string output_;
  UnicodeEscapes unicode_;
  TagStack codes_;

  bool at_line_start_ = true;
  bool at_paragraph_start_ = false;
  std::size_t skip_depth_ = 0;  // groups deep inside a list text
  int skip_next_ = 0;           // tokens still to be ignored

  std::string_view colour_;         // "RRGGBB" or empty
  std::int32_t size_ = 0;           // 1 to 8, 0 for none
  std::string_view face_;           // or empty
  std::string wrapper_;             // the alignment wrapper's opening tag, or empty
  std::string opening_;             // opening tags to be written
  std::size_t pending_breaks_ = 0;  // from \par, written before the next text
};

}  // namespace tenora::html
