#include "platform/richtext/read/carried_reader.h"

#include <string>
#include <utility>

#include "platform/richtext/read/character_words.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

// A destination's word that does not begin its group has no meaning; copied to a group's start it
// would gain one.
bool IsMisplaced(const Token& word) { return WhatOpens(word.text, false) != Opens::kNothing; }

}  // namespace

void CarriedReader::Begin(CarriedObject::Style style, Delivery delivery, const Token* word,
                          ReaderGroup* group) {
  objects_.push_back(std::make_unique<CarriedObject>(style));
  group->owns_carried = true;
  group->delivery = delivery;
  group->shown = false;
  group->Become(Destination::kCarried);
  if (word == nullptr) return;
  group->own_word.assign(1, '\\').append(word->text);
  if (ShapeReader::IsShape(word->text)) {
    Object().BeginShapes();
    Object().shapes()->Open(word->text);
  }
  if (word->text == "shpinst") {
    // A shape whose \shp does not begin its group gets one that does.
    Object().BeginShapes();
    Object().shapes()->Open("shp");
    Object().Open(false);
    Token shape = *word;
    shape.text = "shp";
    Object().Word(shape, head_.fonts(), head_.colours());
  }
  Object().Open(group->starred);
  Object().Word(*word, head_.fonts(), head_.colours());
}

void CarriedReader::BeginPicture(ReaderGroup* group) {
  picture_ = PictureReader();
  in_picture_ = true;
  group->entry = true;
  group->destination = Destination::kPicture;
}

Verbatim CarriedReader::End(const ReaderGroup& group) {
  const std::unique_ptr<CarriedObject> object = std::move(objects_.back());
  objects_.pop_back();
  if (group.delivery != Delivery::kInstruction) object->Close();
  if (group.own_word == "\\shpinst") object->Close();
  return object->TakeObject();
}

void CarriedReader::OpenGroup(const Token& word, ReaderGroup* group) {
  const bool picture = word.text == "pict" && !in_picture_;
  if (picture) Object().BeginPicture();
  Object().Open(group->starred);
  group->brace_written = true;
  group->fresh = false;
  if (picture) {
    BeginPicture(group);
  } else if (group->destination == Destination::kPicture) {
    // Some writers put the picture's words into a group of their own, and its data too.
    const bool goes_on = !group->starred && picture_.Word(word);
    if (!goes_on) group->destination = Destination::kCarried;
  }
  if (word.text == "result" || word.text == "shptxt") group->shown = !group->replaced;
  if (ShapeReader* const shapes = ShapesOf(*group)) {
    group->in_shape = ShapeReader::IsShape(word.text);
    if (group->in_shape) shapes->Open(word.text);
  }
  if (in_picture_ || ShapesOf(*group) != nullptr) {
    if (word.text == "sn") group->property = ReaderGroup::Property::kName;
    if (word.text == "sv") group->property = ReaderGroup::Property::kValue;
  }
  if (word.text == "shprslt") group->replaced = true;
  Object().Word(word, head_.fonts(), head_.colours());
}

// The drawing that the group says something about; null where it says nothing.
ShapeReader* CarriedReader::ShapesOf(const ReaderGroup& group) {
  return in_picture_ || group.replaced ? nullptr : Object().shapes();
}

void CarriedReader::EndGroup(const ReaderGroup& group) {
  if (group.brace_written && !group.owns_carried) Object().Close();
  if (group.property == ReaderGroup::Property::kValue) EndProperty();
  if (group.in_shape) Object().shapes()->Close();
  if (group.destination != Destination::kPicture || !group.entry) return;
  in_picture_ = false;
  if (!group.owns_carried && !group.replaced) Object().EndPicture(picture_.Take());
}

// Those of a picture inside a shape say nothing about the shape.
void CarriedReader::EndProperty() {
  const auto [name, value] = Object().TakeProperty();
  if (in_picture_)
    picture_.Property(name, value);
  else if (ShapeReader* const shapes = Object().shapes())
    shapes->Property(name, value);
}

void CarriedReader::Word(const Token& word, ReaderGroup* group) {
  const bool picture = group->destination == Destination::kPicture;
  if (picture) picture_.Word(word);
  if (IsInvisibleWord(word.text) || IsMisplaced(word)) return;
  WriteBrace(group);
  if (ShapeReader* const shapes = ShapesOf(*group)) shapes->Word(word);
  Object().Word(word, head_.fonts(), head_.colours());
}

void CarriedReader::Symbol(char symbol, ReaderGroup* group) {
  WriteBrace(group);
  Object().Symbol(symbol);
}

void CarriedReader::Character(char32_t character, ReaderGroup* group) {
  WriteBrace(group);
  if (group->property == ReaderGroup::Property::kValue) {
    std::string text;
    AppendUtf8(text, character);
    Object().PropertyValue(text);
  }
  Object().Character(character, group->shown);
}

void CarriedReader::Text(std::string_view ascii, ReaderGroup* group) {
  WriteBrace(group);
  if (group->property == ReaderGroup::Property::kName) Object().PropertyName(ascii);
  if (group->property == ReaderGroup::Property::kValue) Object().PropertyValue(ascii);
  if (group->destination != Destination::kPicture) return Object().Text(ascii, group->shown);
  picture_.Hex(ascii);
  Object().Data(ascii);
}

void CarriedReader::Binary(std::string_view bytes, ReaderGroup* group) {
  if (group->destination == Destination::kPicture) picture_.Binary(bytes);
  if (bytes.empty()) return;
  WriteBrace(group);
  Object().Binary(bytes);
}

// Writes the opening brace that a group without a destination still lacks.
void CarriedReader::WriteBrace(ReaderGroup* group) {
  if (group->brace_written || group->owns_carried) return;
  group->fresh = false;
  if (InInstruction()) return;
  group->brace_written = true;
  Object().Open(false);
}

}  // namespace tenora::richtext
