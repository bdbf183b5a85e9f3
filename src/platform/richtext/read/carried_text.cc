#include "platform/richtext/carried_text.h"

#include "platform/richtext/read/destinations.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {
namespace {

bool HoldsText(Opens opens) {
  return opens == Opens::kHeadStory || opens == Opens::kObjectStory || opens == Opens::kMarkStory ||
         opens == Opens::kCopiedStory || opens == Opens::kInstruction;
}

// Moves past the current group; returns where its content ends.
std::size_t SkipGroup(Tokenizer* tokens) {
  for (int depth = 1;;) {
    const std::size_t before = tokens->position();
    const Token token = tokens->Next();
    if (token.kind == Token::Kind::kEnd) return before;
    if (token.kind == Token::Kind::kOpen) ++depth;
    if (token.kind == Token::Kind::kClose && --depth == 0) return before;
  }
}

}  // namespace

std::vector<CarriedText> CarriedTexts(std::string_view source) {
  std::vector<CarriedText> texts;
  Tokenizer tokens(source);
  bool starred = false, fresh = false;
  for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
    const bool star = token.kind == Token::Kind::kSymbol && token.text == "*";
    if (fresh && token.kind == Token::Kind::kWord && HoldsText(WhatOpens(token.text, starred))) {
      const std::size_t begin = tokens.position();
      texts.push_back({token.text, source.substr(begin, SkipGroup(&tokens) - begin)});
    }
    starred = fresh && star;
    fresh = token.kind == Token::Kind::kOpen || starred;
  }
  return texts;
}

}  // namespace tenora::richtext
