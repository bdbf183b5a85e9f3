// Reads what is carried through unchanged, one object inside another, and the picture in it.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/read/carried_object.h"
#include "platform/richtext/read/destinations.h"
#include "platform/richtext/read/document_head.h"
#include "platform/richtext/read/picture_reader.h"
#include "platform/richtext/read/reader_group.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// `group` is always the innermost open group.
class CarriedReader {
 public:
  explicit CarriedReader(DocumentHead* head) : head_(*head) {}

  bool empty() const { return objects_.empty(); }
  bool InInstruction() const {
    return objects_.back()->style() == CarriedObject::Style::kInstruction;
  }
  CarriedObject& Object() { return *objects_.back(); }

  // The group becomes an object; its own word is written unless null.
  void Begin(CarriedObject::Style style, Delivery delivery, const Token* word, ReaderGroup* group);
  // The group, an object already, is a picture.
  void BeginPicture(ReaderGroup* group);
  // The group that made the object has closed.
  Verbatim End(const ReaderGroup& group);
  // The picture that has just ended, without its source.
  Picture TakePicture() { return picture_.Take(); }

  // A group opens inside the object and keeps its braces; `word` is its first.
  void OpenGroup(const Token& word, ReaderGroup* group);
  // A group inside the object has closed.
  void EndGroup(const ReaderGroup& group);

  // The content of the object or, where the group's destination says so, of the picture.
  void Word(const Token& word, ReaderGroup* group);
  void Symbol(char symbol, ReaderGroup* group);
  void Character(char32_t character, ReaderGroup* group);
  void Text(std::string_view ascii, ReaderGroup* group);
  void Binary(std::string_view bytes, ReaderGroup* group);

 private:
  void WriteBrace(ReaderGroup* group);
  void EndProperty();
  ShapeReader* ShapesOf(const ReaderGroup& group);

  DocumentHead& head_;
  std::vector<std::unique_ptr<CarriedObject>> objects_;
  PictureReader picture_;
  bool in_picture_ = false;
};

}  // namespace tenora::richtext
