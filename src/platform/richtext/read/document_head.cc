#include "platform/richtext/read/document_head.h"

#include <algorithm>

namespace tenora::richtext {

bool DocumentHead::OpenGroup(const Token& word, ReaderGroup* group) {
  switch (group->destination) {
    case Destination::kLists:
      return OpenInLists(word, group);
    case Destination::kOverrides:
      group->entry = word.text == "listoverride";
      if (group->entry) lists_.BeginOverride();
      if (word.text == "lfolevel") lists_.BeginOverrideLevel();
      return OpenInLists(word, group);
    default:
      return group->starred ? group->Become(Destination::kSkip) : false;
  }
}

bool DocumentHead::OpenInLists(const Token& word, ReaderGroup* group) {
  if (word.text == "leveltext") return group->Become(Destination::kLevelText);
  if (word.text == "levelnumbers" || word.text == "listname" || group->starred)
    return group->Become(Destination::kSkip);
  if (word.text == "list") {
    group->entry = true;
    lists_.BeginList();
  } else if (word.text == "listlevel") {
    lists_.BeginLevel();
  }
  return false;
}

void DocumentHead::EndGroup(const ReaderGroup& group) {
  switch (group.destination) {
    case Destination::kFonts:
      return fonts_.EndEntry();
    case Destination::kLists:
      if (group.entry) lists_.EndList();
      return;
    case Destination::kOverrides:
      if (group.entry) lists_.EndOverride();
      return;
    default:
      return;
  }
}

void DocumentHead::Word(Destination destination, const Token& word) {
  switch (destination) {
    case Destination::kFonts:
      return fonts_.Word(word);
    case Destination::kColours:
      return colours_.Word(word);
    case Destination::kLists:
    case Destination::kOverrides:
      return lists_.Word(WithPosition(word));
    default:
      return;
  }
}

Token DocumentHead::WithPosition(Token word) {
  if (word.text == "f") word.param = fonts_.Position(word.param);
  if (word.text == "cf" || word.text == "pncf") word.param = colours_.Position(word.param);
  return word;
}

bool DocumentHead::Setting(const Token& word) {
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
    default_language_ = std::clamp(word.param, 0, 0xffff);
  } else {
    return false;
  }
  return true;
}

void DocumentHead::Take(Document* document) {
  document->default_language = default_language_;
  document->default_font = fonts_.DefaultPosition();
  const int page = fonts_.document_code_page();
  // The head can name Windows code pages only; text of others is written as 1252.
  document->code_page = CodePageOfCharset(CharsetOfCodePage(page), kDefaultCodePage);
  document->fonts = fonts_.Take();
  document->colours = colours_.Take();
  page_.Apply(document);
}

}  // namespace tenora::richtext
