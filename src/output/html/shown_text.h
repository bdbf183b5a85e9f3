// What a reader sees of a paragraph, piece by piece: hidden text and bookmarks are gone, objects
// are replaced by what they show, symbol fonts by Unicode characters. Text boxes are no part of it.
#pragma once

#include <forward_list>
#include <string>
#include <string_view>
#include <vector>

#include "output/html/document_parts.h"
#include "platform/richtext/document.h"

namespace tenora::html {

struct ShownPiece {
  enum class Kind { kText, kTab, kLineBreak, kPageBreak, kPicture, kNoteMark };
  Kind kind = Kind::kText;
  const richtext::CharFormat* format = nullptr;
  std::string_view text = {};                  // of kText and kNoteMark: UTF-8
  const richtext::Picture* picture = nullptr;  // of kPicture
  int width = 0, height = 0;                   // of kPicture: twips
  std::string_view link = {};                  // the URL that the piece leads to, or empty
};

class ShownText {
 public:
  // Both outlive this.
  ShownText(const DocumentParts& parts, const richtext::Paragraph& paragraph);
  ShownText(const ShownText&) = delete;
  ShownText& operator=(const ShownText&) = delete;

  const std::vector<ShownPiece>& pieces() const { return pieces_; }
  bool HasTabs() const;

 private:
  void Add(const richtext::Run& run, bool last);
  void Add(const richtext::Run& run, const richtext::Verbatim& object, bool last);
  void AddMark(std::string_view mark, const richtext::CharFormat& format);
  void AddText(const richtext::CharFormat& format, std::string_view text);
  void AddPicture(const richtext::CharFormat& format, const richtext::Picture& picture, int width,
                  int height);
  std::string_view Keep(std::string text);

  const DocumentParts& parts_;
  std::vector<ShownPiece> pieces_;
  std::forward_list<std::string> kept_;  // what the pieces point to
  std::forward_list<richtext::CharFormat> kept_formats_;
  const richtext::Field* linked_ = nullptr;  // the field whose link_ this is
  std::string_view link_;
};

}  // namespace tenora::html
