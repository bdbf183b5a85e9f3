#include "platform/richtext/read/carried_object.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/richtext/table_numbers.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {

void CarriedObject::Word(const Token& word, FontTable& fonts, const ColourTable& colours) {
  if (!word.has_param) return out_.Word(word.text);
  switch (ReferenceOf(word.text)) {
    case Reference::kFont:
      return out_.Word(word.text, fonts.Position(word.param));
    case Reference::kColour:
      return out_.Word(word.text, colours.Position(word.param));
    case Reference::kNone:
      return out_.Word(word.text, word.param);
  }
}

void CarriedObject::Symbol(char symbol) {
  const char source[] = {'\\', symbol, '\0'};
  out_.Raw(source);
}

void CarriedObject::Character(char32_t character, bool shown) {
  std::string text;
  AppendUtf8(text, character);
  out_.Text(text, nullptr);
  if (shown) shown_text_ += text;
}

void CarriedObject::Text(std::string_view ascii, bool shown) {
  out_.Text(ascii, nullptr);
  if (shown) shown_text_ += ascii;
}

void CarriedObject::Binary(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 15];
  }
  Data(digits);
}

void CarriedObject::AddStory(std::string_view source, std::string_view shown_text) {
  out_.Raw(source);
  shown_text_ += shown_text;
}

void CarriedObject::EndPicture(Picture picture) {
  picture.source = std::string_view(out_.text()).substr(picture_start_);
  if (shape_ && shape_->right > shape_->left && shape_->bottom > shape_->top) {
    picture.width = shape_->right - shape_->left;
    picture.height = shape_->bottom - shape_->top;
  }
  shown_picture_ = std::make_shared<const Picture>(std::move(picture));
}

Verbatim CarriedObject::TakeObject() {
  return {out_.Take(), std::move(shown_text_), std::move(shown_picture_), shape_};
}

void CarriedObject::ShapeWord(const Token& word) {
  using From = ShapeBox::From;
  static const std::unordered_map<std::string_view, int ShapeBox::*> kEdges{
      {"shpleft", &ShapeBox::left},
      {"shptop", &ShapeBox::top},
      {"shpright", &ShapeBox::right},
      {"shpbottom", &ShapeBox::bottom}};
  static const std::unordered_map<std::string_view, From> kX{
      {"shpbxpage", From::kPage}, {"shpbxmargin", From::kMargin}, {"shpbxcolumn", From::kText}};
  static const std::unordered_map<std::string_view, From> kY{
      {"shpbypage", From::kPage}, {"shpbymargin", From::kMargin}, {"shpbypara", From::kText}};
  if (!shape_ || !word.text.starts_with("shp")) return;
  if (const auto edge = kEdges.find(word.text); edge != kEdges.end()) {
    (*shape_).*edge->second = std::clamp(word.param, -kLargestPage, kLargestPage);
  } else if (const auto x = kX.find(word.text); x != kX.end()) {
    shape_->x_from = x->second;
  } else if (const auto y = kY.find(word.text); y != kY.end()) {
    shape_->y_from = y->second;
  } else if (word.text == "shpwr") {
    shape_->wrap = word.param == 1   ? ShapeBox::Wrap::kAboveAndBelow
                   : word.param == 3 ? ShapeBox::Wrap::kNone
                                     : ShapeBox::Wrap::kAround;
  }
}

}  // namespace tenora::richtext
