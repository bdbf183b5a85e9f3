// The control words of text.
#include <algorithm>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/read/reader_core.h"
#include "platform/richtext/read/shape_words.h"

namespace tenora::richtext {
namespace {

constexpr int kLongestFallback = 1000;

// A destination's word that does not begin its group means nothing, and must not come to begin one.
bool IsMisplaced(const Token& word) { return WhatOpens(word.text, false) != Opens::kNothing; }

}  // namespace

void Reader::Word(const Token& word) {
  if (word.text == "u") return Unicode(word.param);
  if (word.text == "uc") {
    Top().fallback = std::clamp(word.Or(1), 0, kLongestFallback);
    return;
  }
  if (Top().fresh) {
    if (OpenDestination(word)) return;
    Top().fresh = false;
  }
  switch (Top().destination) {
    case Destination::kText:
      return TextWord(word);
    case Destination::kCopy:
      if (word.text == "f") Top().page = &fonts_.PageOf(word.param);
      if (CurrentCopy().source.style() == SourceCopy::Style::kInstruction && CharacterWord(word))
        return;
      if (IsInvisibleWord(word.text) || IsMisplaced(word)) return;
      MarkCopied();
      if (CurrentCopy().shape) ApplyShapeWord(word, &*CurrentCopy().shape);
      return CurrentCopy().source.Word(word, fonts_, colours_);
    case Destination::kPicture:
      picture_.Word(word);
      if (IsInvisibleWord(word.text) || IsMisplaced(word)) return;
      MarkCopied();
      return CurrentCopy().source.Word(word, fonts_, colours_);
    case Destination::kFonts:
      return fonts_.Word(word);
    case Destination::kColours:
      return colours_.Word(word);
    case Destination::kStyles:
      return styles_.Word(word);
    case Destination::kLists:
    case Destination::kOverrides:
      return lists_.Word(word);
    case Destination::kClassicList:
      return bullet_.Word(word);
    case Destination::kTitle:
    case Destination::kListBefore:
    case Destination::kListAfter:
    case Destination::kLevelText:
      if (const char32_t character = CharacterOfWord(word.text)) Character(character);
      return;
    case Destination::kField:
      if (word.text == "fldlock" && Top().making != nullptr) Top().making->flags = "\\fldlock";
      return;
    case Destination::kSkip:
    case Destination::kInfo:
      return;
  }
}

void Reader::TextWord(const Token& word) {
  if (IsInvisibleWord(word.text)) return;
  if (const char32_t character = CharacterOfWord(word.text)) return Character(character);
  if (CharacterWord(word) || BreakWord(word) || StyleWord(word)) return;
  if (CurrentStory().TakeRowWord(word, Top().nested_row)) return;
  if (ParagraphWord(word) || CodePageWord(word)) return;
  page_.Take(word);
}

bool Reader::BreakWord(const Token& word) {
  Story& story = CurrentStory();
  if (word.text == "par")
    story.EndParagraph(ResolvedFormat());
  else if (word.text == "cell")
    story.EndCell(ResolvedFormat());
  else if (word.text == "nestcell")
    story.EndNestedCell(ResolvedFormat());
  else if (word.text == "row")
    story.EndRow(ResolvedFormat());
  else if (word.text == "nestrow")
    story.EndNestedRow();
  else if (word.text == "sect") {
    story.EndSection(ResolvedFormat(), !page_.continuous());
    page_.EndFirstSection();
  } else if (word.text == "chpgn" || word.text == "chftn" || word.text == "sectnum" ||
             word.text == "chdate" || word.text == "chtime") {
    Verbatim object;
    object.source = "{\\" + std::string(word.text) + "}";
    Run run{
        ResolvedFormat(), {}, std::make_shared<const Verbatim>(std::move(object)), CurrentField()};
    story.Object(std::move(run));
  } else if (word.text == "chatn") {
    story.AddMark("{\\chatn}");
  } else {
    return false;
  }
  return true;
}

bool Reader::StyleWord(const Token& word) {
  if (word.text != "s" && word.text != "cs") return false;
  const std::vector<Token>& styled =
      word.text == "s" ? styles_.ParagraphStyle(word.param) : styles_.CharacterStyle(word.param);
  for (const Token& style_word : styled) {
    if (!CharacterWord(style_word)) ParagraphWord(style_word);
  }
  return true;
}

bool Reader::CharacterWord(const Token& word) {
  Group& group = Top();
  if (!ApplyCharacterWord(word, fonts_, colours_, &group.format)) return false;
  if (word.text == "f") group.page = &fonts_.PageOf(word.param);
  if (word.text == "plain") group.page = nullptr;
  return true;
}

bool Reader::ParagraphWord(const Token& word) {
  if (!IsParagraphWord(word.text)) return false;
  ChangeParagraph();
  ApplyParagraphWord(word, colours_, &CurrentStory().state());
  return true;
}

void Reader::ChangeParagraph() {
  if (groups_.size() < 2 || Top().saved_state || Top().owns_story) return;
  Top().saved_state = true;
  CurrentStory().SaveState();
}

bool Reader::CodePageWord(const Token& word) {
  if (word.text == "ansi") return true;
  if (word.text == "ansicpg") {
    if (IsKnownCodePage(word.param)) fonts_.SetDocumentCodePage(word.param);
  } else if (word.text == "mac") {
    fonts_.SetDocumentCodePage(10000);
  } else if (word.text == "pc") {
    fonts_.SetDocumentCodePage(437);
  } else if (word.text == "pca") {
    fonts_.SetDocumentCodePage(850);
  } else if (word.text == "deff") {
    fonts_.SetDefaultNumber(word.param);
  } else if (word.text == "deflang") {
    document_.default_language = std::clamp(word.param, 0, 0xffff);
  } else {
    return false;
  }
  return true;
}

}  // namespace tenora::richtext
