// What a reader sees of a paragraph, piece by piece: hidden text and marks are gone, objects are
// replaced by what they show, symbol fonts by Unicode characters.
#pragma once

#include <forward_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::html {

struct ShownPiece {
  enum class Kind { kText, kTab, kLineBreak, kPageBreak, kPicture };
  Kind kind = Kind::kText;
  const richtext::CharFormat* format = nullptr;
  std::string_view text;                       // of kText: UTF-8
  const richtext::Picture* picture = nullptr;  // of kPicture
  std::string_view link;                       // the URL that the piece leads to, or empty
};

class ShownText {
 public:
  // Both outlive this.
  ShownText(const richtext::Document& document, const richtext::Paragraph& paragraph);
  ShownText(const ShownText&) = delete;
  ShownText& operator=(const ShownText&) = delete;

  const std::vector<ShownPiece>& pieces() const { return pieces_; }
  bool HasTabs() const;

 private:
  void Add(const richtext::Run& run, bool last);
  void AddText(const richtext::CharFormat& format, std::string_view text);
  void AddPicture(const richtext::CharFormat& format, const richtext::Picture& picture);
  std::string_view Keep(std::string text);

  const richtext::Document& document_;
  std::vector<ShownPiece> pieces_;
  std::forward_list<std::string> kept_;      // what the pieces point to
  const richtext::Field* linked_ = nullptr;  // the field whose link_ this is
  std::string_view link_;
};

}  // namespace tenora::html
