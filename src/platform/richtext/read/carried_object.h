// Something the editor cannot edit, while it is read: its source rebuilt token by token, and what a
// reader of the letter sees in its place. The rebuilt source has the same words in the same order,
// but the font and colour numbers of the document being read, every character beyond ASCII as a
// Unicode escape, and without the revision data of word processors.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/read/shape_reader.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

class CarriedObject {
 public:
  enum class Style {
    kWhole,        // groups and formatting unchanged
    kInstruction,  // a field's instruction: text, and only those groups that hold something else
  };

  explicit CarriedObject(Style style) : style_(style) {}

  Style style() const { return style_; }
  // The destination word of the group comes next, as a Word.
  void Open(bool starred) { out_.Raw(starred ? "{\\*" : "{"); }
  void Close() { out_.Raw("}"); }
  void Word(const Token& word, FontTable& fonts, const ColourTable& colours);
  void Symbol(char symbol);
  // `shown`: it is visible to a reader of the letter.
  void Character(char32_t character, bool shown);
  void Text(std::string_view ascii, bool shown);
  // Hexadecimal digits, as pictures and objects hold them.
  void Data(std::string_view digits) { out_.Text(digits, nullptr); }
  // The bytes of a \bin, as hexadecimal digits: source is ASCII.
  void Binary(std::string_view bytes);
  // A text that is part of the object, in canonical form.
  void AddStory(std::string_view source) { out_.Raw(source); }
  // It is visible to a reader of the letter.
  void ShowStory(std::string_view shown_text, std::vector<Block> blocks);

  // The object is a drawing; null for others.
  void BeginShapes() { shapes_ = std::make_unique<ShapeReader>(); }
  ShapeReader* shapes() { return shapes_.get(); }
  // A property of a shape or a picture: its name, or more of it or of its value, and its end.
  void PropertyName(std::string_view text) { property_name_.append(text); }
  void PropertyValue(std::string_view text) { property_value_.append(text); }
  std::pair<std::string, std::string> TakeProperty();
  // A picture inside the object; its source starts at the current end of the object's. EndPicture
  // sets what is shown, in the size of the shape if the object is one.
  void BeginPicture() { picture_start_ = out_.text().size(); }
  void EndPicture(Picture picture);

  std::string TakeSource() { return out_.Take(); }
  Verbatim TakeObject();

 private:
  Style style_;
  SourceText out_;
  std::string shown_text_;
  std::shared_ptr<const Picture> shown_picture_;
  std::size_t picture_start_ = 0;
  std::unique_ptr<ShapeReader> shapes_;
  std::string property_name_, property_value_;
};

}  // namespace tenora::richtext
