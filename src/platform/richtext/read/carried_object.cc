#include "platform/richtext/read/carried_object.h"

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

void CarriedObject::ShowStory(std::string_view shown_text, std::vector<Block> blocks) {
  shown_text_ += shown_text;
  if (shapes_) shapes_->AddBlocks(std::move(blocks));
}

std::pair<std::string, std::string> CarriedObject::TakeProperty() {
  return {std::exchange(property_name_, {}), std::exchange(property_value_, {})};
}

void CarriedObject::EndPicture(Picture picture) {
  picture.source = std::string_view(out_.text()).substr(picture_start_);
  if (shapes_ && shapes_->single() && shapes_->width() > 0 && shapes_->height() > 0) {
    picture.width = shapes_->width();
    picture.height = shapes_->height();
  }
  shown_picture_ = std::make_shared<const Picture>(std::move(picture));
  if (shapes_) shapes_->AddPicture(shown_picture_);
}

Verbatim CarriedObject::TakeObject() {
  Verbatim object{out_.Take(), std::move(shown_text_), std::move(shown_picture_), {}, {}};
  if (!shapes_) return object;
  shapes_->Close();
  object.figures = shapes_->TakeFigures();
  object.shape = shapes_->box();
  return object;
}

}  // namespace tenora::richtext
