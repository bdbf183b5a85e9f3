#include "platform/richtext/rtf_reader.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/read/carried_reader.h"
#include "platform/richtext/read/character_reader.h"
#include "platform/richtext/read/character_words.h"
#include "platform/richtext/read/destinations.h"
#include "platform/richtext/read/document_head.h"
#include "platform/richtext/read/field_display.h"
#include "platform/richtext/read/list_table.h"
#include "platform/richtext/read/reader_group.h"
#include "platform/richtext/read/story.h"
#include "platform/richtext/read/word_roles.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/richtext/symbol_characters.h"
#include "platform/richtext/table_numbers.h"
#include "platform/richtext/write/block_writer.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kMemoryBudget = std::size_t{1} << 30;
constexpr std::size_t kSectionCost = 2048;
constexpr int kLongestFallback = 1000;
constexpr std::size_t kDeepest = 1000;
constexpr std::size_t kMostStories = 8;  // a text box in a footnote in a table in …
constexpr int kDeepestField = 8;

int FieldDepth(const Field* field) {
  int depth = 0;
  for (; field != nullptr; field = field->outer.get()) ++depth;
  return depth;
}

// How often \par stands in the source, also where it ends no paragraph.
std::size_t ParagraphEndsIn(std::string_view source) {
  std::size_t count = 0;
  // Without a branch that depends on the bytes: compilers make it one of many bytes at once.
  const auto is = [source](std::size_t at, char c) { return unsigned{source[at] == c}; };
  for (std::size_t i = 0; i + 4 < source.size(); ++i) {
    count += is(i, '\\') & is(i + 1, 'p') & is(i + 2, 'a') & is(i + 3, 'r') &
             unsigned{!IsWordLetter(source[i + 4])};
  }
  return count;
}

// The stack of groups, and what each token does to it.
class RtfReader {
 public:
  explicit RtfReader(std::string_view source);
  Document Read();

 private:
  // Tokens.
  void Handle(Token& token);
  void Symbol(char symbol);
  void Text(std::string_view ascii);
  void Byte(unsigned char byte);
  void Unicode(int number);
  void Character(char32_t character);
  void Binary(std::string_view bytes);
  void ListCharacter(char32_t character);
  void Characters(const std::u32string& characters);
  CharFormat ResolvedFormat();
  const CodePage& Page();
  std::shared_ptr<const Field> CurrentField();
  void Finish();

  // Groups.
  void OpenGroup();
  void CloseGroup();
  bool OpenDestination(const Token& word);
  bool OpenInText(Opens opens, const Token& word);
  bool OpenInTable(const Token& word);
  bool OpenInField(const Token& word);
  bool OpenInInfo(const Token& word);
  bool OpenInCarried(Opens opens, const Token& word);
  void BeginStory(Delivery delivery, const Token& word);
  void BeginField();
  void EndStory(ReaderGroup& group);
  void EndField(const ReaderGroup& group);
  void AddSymbol(const SymbolField& symbol);
  void EndClassicList();
  void Deliver(const ReaderGroup& group, Verbatim object);
  void AddObject(Verbatim object);

  // Words.
  void Word(const Token& word);
  void TextWord(const Token& word);
  void BreakWord(const Token& word);
  bool CharacterWord(const Token& word);
  void ParagraphWord(const Token& word);
  void ChangeParagraph();
  void EndSection();

  ReaderGroup& Top() { return groups_.back(); }
  Story& CurrentStory() { return *stories_.back(); }
  StoryContext Context() {
    return {head_.fonts(), head_.colours(), head_.lists(), budget_, head_.page()};
  }

  Tokenizer tokens_;
  Document document_;
  DocumentHead head_;
  Budget budget_;

  std::vector<ReaderGroup> groups_;
  std::vector<std::unique_ptr<Story>> stories_;
  CarriedReader carried_;
  ClassicBullet bullet_;

  std::size_t ignored_depth_ = 0;  // groups open beyond the deepest that is followed
  bool ignored_begins_ = false;    // nothing of the innermost of them was seen
  CharacterReader characters_;
  WordRoles roles_;
  bool ended_ = false;
};

RtfReader::RtfReader(std::string_view source)
    : tokens_(source), budget_(kMemoryBudget), carried_(&head_) {
  groups_.emplace_back();
  stories_.push_back(std::make_unique<Story>(Context()));
  CurrentStory().Reserve(std::min(ParagraphEndsIn(source), kMemoryBudget / sizeof(Block)));
}

Document RtfReader::Read() {
  while (!ended_) {
    Token token = tokens_.Next();
    if (token.kind == Token::Kind::kEnd) break;
    Handle(token);
  }
  Finish();
  return std::move(document_);
}

void RtfReader::Finish() {
  Characters(characters_.Flush());
  // Groups that a truncated source leaves open are closed; its last paragraph keeps its formatting.
  if (stories_.size() > 1 || !carried_.empty()) {
    while (groups_.size() > 2) CloseGroup();
  }
  document_.blocks = CurrentStory().Finish(ResolvedFormat());
  head_.Take(&document_);
  Renumber(&document_);
}

void RtfReader::Handle(Token& token) {
  if (characters_.SkipFallback(&token)) return;
  // Even there, what is not for every reader is not text.
  if (std::exchange(ignored_begins_, false) && token.kind == Token::Kind::kSymbol &&
      token.text.front() == '*') {
    --ignored_depth_;
    return tokens_.LeaveGroup();
  }
  if (characters_.pending()) {
    // Text and the next \uN can complete a pending character; anything else abandons it.
    const bool completes = token.kind == Token::Kind::kText || token.kind == Token::Kind::kByte ||
                           token.kind == Token::Kind::kSymbol || token.IsWord("u") ||
                           token.IsWord("uc");
    if (!completes) Characters(characters_.Flush());
  }
  switch (token.kind) {
    case Token::Kind::kOpen:
      return OpenGroup();
    case Token::Kind::kClose:
      return CloseGroup();
    case Token::Kind::kWord:
      return Word(token);
    case Token::Kind::kSymbol:
      return Symbol(token.text.front());
    case Token::Kind::kByte:
      return Byte(static_cast<unsigned char>(token.param));
    case Token::Kind::kText:
      return Text(token.text);
    case Token::Kind::kBinary:
      return Binary(token.text);
    case Token::Kind::kEnd:
      return;
  }
}

void RtfReader::Symbol(char symbol) {
  if (symbol == '*') {
    Top().starred = Top().fresh;
    return;
  }
  if (characters_.byte_pending() && static_cast<unsigned char>(symbol) >= 0x20)
    return Byte(static_cast<unsigned char>(symbol));
  const char32_t character = CharacterOfSymbol(symbol);
  const Destination destination = Top().destination;
  const bool escape = symbol == '\\' || symbol == '{' || symbol == '}';
  const bool printable = symbol > 0x20 && symbol < 0x7f;
  if (!escape && printable &&
      (destination == Destination::kCarried || destination == Destination::kPicture)) {
    return carried_.Symbol(symbol, &Top());
  }
  if (character != 0) Character(character);
}

void RtfReader::Text(std::string_view ascii) {
  if (characters_.byte_pending()) {
    Byte(static_cast<unsigned char>(ascii.front()));
    ascii.remove_prefix(1);
    if (ascii.empty()) return;
  }
  if (characters_.surrogate_pending()) Characters(characters_.Flush());
  Top().fresh = false;
  switch (Top().destination) {
    case Destination::kText:
      return CurrentStory().Text(ascii, ResolvedFormat(), CurrentField());
    case Destination::kCarried:
    case Destination::kPicture:
      return carried_.Text(ascii, &Top());
    case Destination::kSkip:
      return;
    default:
      for (const char c : ascii) Byte(static_cast<unsigned char>(c));
  }
}

void RtfReader::Byte(unsigned char byte) {
  if (characters_.surrogate_pending()) Characters(characters_.Flush());
  switch (Top().destination) {
    case Destination::kSkip:
      return;
    case Destination::kFonts:
      return head_.fonts().Byte(byte);
    case Destination::kColours:
      if (byte == ';') head_.colours().EndEntry();
      return;
    case Destination::kLevelText:
      if (byte < 0x80 && !characters_.byte_pending()) return head_.lists().LevelText(byte);
      break;
    default:
      break;
  }
  Characters(characters_.TakeByte(byte, Page()));
}

void RtfReader::Unicode(int number) { Characters(characters_.TakeUnicode(number, Top().fallback)); }

void RtfReader::Characters(const std::u32string& characters) {
  for (const char32_t character : characters) Character(character);
}

void RtfReader::Character(char32_t raw) {
  Top().fresh = false;
  const Destination destination = Top().destination;
  if (destination == Destination::kLevelText) return head_.lists().LevelText(raw);
  const char32_t character = CleanCharacter(raw);
  if (character == 0) return;
  switch (destination) {
    case Destination::kText: {
      std::string text;
      AppendUtf8(text, character);
      return CurrentStory().Text(text, ResolvedFormat(), CurrentField());
    }
    case Destination::kCarried:
      return carried_.Character(character, &Top());
    case Destination::kFonts:
      return head_.fonts().Character(character);
    case Destination::kTitle:
      AppendUtf8(document_.title, character);
      return;
    case Destination::kListBefore:
    case Destination::kListAfter:
      return ListCharacter(character);
    default:
      return;
  }
}

void RtfReader::ListCharacter(char32_t character) {
  bullet_.Character(character, Top().destination == Destination::kListBefore);
}

void RtfReader::Binary(std::string_view bytes) {
  Top().fresh = false;
  const Destination destination = Top().destination;
  if (destination == Destination::kPicture || destination == Destination::kCarried)
    carried_.Binary(bytes, &Top());
}

CharFormat RtfReader::ResolvedFormat() {
  CharFormat format = Top().format;
  if (format.font == kDefaultFont) format.font = head_.fonts().DefaultPosition();
  return format;
}

// Before a font is named, and in the list groups that name their own, bytes have the code page of
// the default font.
const CodePage& RtfReader::Page() {
  const Destination destination = Top().destination;
  const bool in_bullet =
      destination == Destination::kListBefore || destination == Destination::kListAfter;
  if (destination == Destination::kLevelText) return head_.DocumentPage();
  if (in_bullet && bullet_.font_number() >= 0) return head_.fonts().PageOf(bullet_.font_number());
  return Top().page != nullptr ? *Top().page : head_.fonts().DefaultPage();
}

std::shared_ptr<const Field> RtfReader::CurrentField() {
  const ReaderGroup& group = Top();
  if (group.field == nullptr || group.field->instruction.empty()) return nullptr;
  return group.field_serial == CurrentStory().paragraph_serial() ? group.field : nullptr;
}

void RtfReader::OpenGroup() {
  if (groups_.size() >= kDeepest) {
    ++ignored_depth_;
    ignored_begins_ = true;
    return;
  }
  ReaderGroup& around = Top();
  around.fresh = false;
  ReaderGroup group;
  group.destination = around.destination;
  group.format = around.format;
  group.page = around.page;
  group.fallback = around.fallback;
  group.field = around.field;
  group.field_serial = around.field_serial;
  group.making = around.making;
  group.nested_row = around.nested_row;
  group.shown = around.shown;
  group.replaced = around.replaced;
  group.fresh = true;
  // Skips the plain form in \upr; the \ud after it opens its own group.
  if (around.alternatives) group.destination = Destination::kSkip;
  group.alternatives = false;
  groups_.push_back(std::move(group));
}

void RtfReader::CloseGroup() {
  if (ignored_depth_ > 0) {
    --ignored_depth_;
    return;
  }
  // The outermost group stays: its formatting is that of the last paragraph.
  if (groups_.size() <= 2) {
    ended_ = true;
    return;
  }
  ReaderGroup group = std::move(groups_.back());
  groups_.pop_back();
  if (group.saved_state) CurrentStory().RestoreState();
  if (!carried_.empty()) carried_.EndGroup(group);
  head_.EndGroup(group);
  if (group.owns_story) EndStory(group);
  if (group.owns_carried) Deliver(group, carried_.End(group));
  if (group.destination == Destination::kField && Top().making != group.making) EndField(group);
  if (group.destination == Destination::kClassicList && Top().destination == Destination::kText)
    EndClassicList();
}

// The first word of a group. True when the word is used up.
bool RtfReader::OpenDestination(const Token& word) {
  const Opens opens = WhatOpens(word.text, Top().starred);
  switch (Top().destination) {
    case Destination::kText:
      return OpenInText(opens, word);
    case Destination::kField:
    case Destination::kClassicList:
    case Destination::kInfo:
    case Destination::kFonts:
    case Destination::kLists:
    case Destination::kOverrides:
      return OpenInTable(word);
    case Destination::kCarried:
    case Destination::kPicture:
      return OpenInCarried(opens, word);
    case Destination::kSkip:
      if (opens != Opens::kUnicode || groups_.size() < 2) return false;
      if (!groups_[groups_.size() - 2].alternatives) return false;
      return Top().Become(groups_[groups_.size() - 2].destination);
    default:
      return false;
  }
}

bool RtfReader::OpenInText(Opens opens, const Token& word) {
  // Of a field nested too deep, only the result is kept.
  if (word.text == "fldinst") return Top().Become(Destination::kSkip);
  if (const auto destination = DestinationOf(opens)) {
    if (opens == Opens::kClassicList) bullet_ = ClassicBullet();
    if (opens == Opens::kNestedRow) Top().nested_row = true;
    if (opens == Opens::kAlternatives) Top().alternatives = true;
    return Top().Become(*destination);
  }
  switch (opens) {
    case Opens::kField:
      BeginField();
      return true;
    case Opens::kPicture:
      carried_.Begin(CarriedObject::Style::kWhole, Delivery::kPicture, &word, &Top());
      carried_.BeginPicture(&Top());
      return true;
    case Opens::kObject:
      carried_.Begin(CarriedObject::Style::kWhole, Delivery::kObject, &word, &Top());
      return true;
    case Opens::kMark:
      carried_.Begin(CarriedObject::Style::kWhole, Delivery::kMark, &word, &Top());
      return true;
    case Opens::kHead:
      carried_.Begin(CarriedObject::Style::kWhole, Delivery::kHead, &word, &Top());
      return true;
    case Opens::kHeadStory:
      // Headers belong to the letter, not to its parts.
      if (stories_.size() > 1) return Top().Become(Destination::kSkip);
      BeginStory(Delivery::kHead, word);
      return true;
    case Opens::kObjectStory:
      BeginStory(Delivery::kObject, word);
      Top().open_ending = true;
      return true;
    case Opens::kMarkStory:
      BeginStory(Delivery::kMark, word);
      Top().open_ending = true;
      return true;
    default:
      return false;
  }
}

// Groups in the tables of the head, in \field and in \pn.
bool RtfReader::OpenInTable(const Token& word) {
  switch (Top().destination) {
    case Destination::kField:
      return OpenInField(word);
    case Destination::kClassicList:
      if (word.text == "pntxtb") return Top().Become(Destination::kListBefore);
      if (word.text == "pntxta") return Top().Become(Destination::kListAfter);
      if (word.text != kListWord && word.text != kListGapWord) return false;
      bullet_.Word(word);
      return Top().Become(Destination::kSkip);
    case Destination::kInfo:
      return OpenInInfo(word);
    default:
      return head_.OpenGroup(word, &Top());
  }
}

bool RtfReader::OpenInField(const Token& word) {
  if (word.text == "fldinst") {
    carried_.Begin(CarriedObject::Style::kInstruction, Delivery::kInstruction, nullptr, &Top());
    return true;
  }
  if (word.text != "fldrslt") return Top().Become(Destination::kSkip);
  ReaderGroup& group = Top();
  group.field = std::exchange(group.making, nullptr);
  group.field_serial = CurrentStory().paragraph_serial();
  return Top().Become(Destination::kText);
}

bool RtfReader::OpenInInfo(const Token& word) {
  static constexpr std::string_view kKept[] = {"author",   "subject",  "manager", "company",
                                               "category", "keywords", "doccomm"};
  if (word.text == "title") return Top().Become(Destination::kTitle);
  if (word.text == "upr") {
    Top().alternatives = true;
    return Top().Become(Destination::kInfo);
  }
  if (std::ranges::find(kKept, word.text) == std::end(kKept))
    return Top().Become(Destination::kSkip);
  carried_.Begin(CarriedObject::Style::kWhole, Delivery::kInfo, &word, &Top());
  return true;
}

// Groups in what is carried through: dropped, rewritten, or brace_written with their braces.
bool RtfReader::OpenInCarried(Opens opens, const Token& word) {
  const bool unknown = WhatOpens(word.text, false) == Opens::kNothing;
  if (IsInvisibleWord(word.text)) {
    if (Top().starred) return Top().Become(Destination::kSkip);
    Top().fresh = false;
    return true;
  }
  if (opens == Opens::kSkipped && !unknown) return Top().Become(Destination::kSkip);
  if (opens == Opens::kCopiedStory && stories_.size() < kMostStories) {
    BeginStory(Delivery::kCarried, word);
    return true;
  }
  if (carried_.InInstruction() && !Top().starred && unknown) return false;
  carried_.OpenGroup(word, &Top());
  return true;
}

void RtfReader::BeginStory(Delivery delivery, const Token& word) {
  if (stories_.size() >= kMostStories) {
    Top().Become(Destination::kSkip);
    return;
  }
  stories_.push_back(std::make_unique<Story>(Context()));
  ReaderGroup& group = Top();
  group.owns_story = true;
  group.delivery = delivery;
  group.destination = Destination::kText;
  group.format = PlainFormat();
  group.page = nullptr;
  group.field = nullptr;
  group.making = nullptr;
  group.nested_row = false;
  group.fresh = false;
  group.property = ReaderGroup::Property::kNone;
  // LibreOffice writes a star before footnotes.
  const bool starred = group.starred && delivery != Delivery::kObject;
  group.own_word = (starred ? "\\*\\" : "\\") + std::string(word.text);
  if (word.has_param) group.own_word += std::to_string(word.param);
}

void RtfReader::BeginField() {
  ReaderGroup& group = Top();
  group.fresh = false;
  if (FieldDepth(group.field.get()) >= kDeepestField) return;
  auto field = std::make_shared<Field>();
  field->outer = CurrentField();
  group.making = std::move(field);
  group.destination = Destination::kField;
}

void RtfReader::EndStory(ReaderGroup& group) {
  const std::unique_ptr<Story> story = std::move(stories_.back());
  stories_.pop_back();
  CharFormat mark = group.format;
  if (mark.font == kDefaultFont) mark.font = head_.fonts().DefaultPosition();
  std::vector<Block> blocks = story->Finish(mark);
  if (group.open_ending) DropEmptyEnd(&blocks);
  SourceText source;
  source.Raw("{");
  source.Raw(group.own_word);
  source.Word("plain");
  BlockWriter(head_.fonts().fonts(), kDefaultFontToCome, head_.fonts().document_code_page(),
              &head_.code_pages(), &source)
      .Write(blocks, group.open_ending ? BlockWriter::Ending::kOpen : BlockWriter::Ending::kMarked);
  source.Raw("}");
  if (group.delivery == Delivery::kHead) {
    const std::size_t word = group.own_word.rfind('\\') + 1;
    Section* const section = head_.page().section();
    (section == nullptr ? document_.head_groups : section->head_groups)
        .push_back({source.Take(), group.own_word.substr(word), std::move(blocks)});
    return;
  }
  Verbatim object;
  object.source = source.Take();
  if (group.delivery == Delivery::kObject) {
    Figure note;
    note.blocks = std::move(blocks);
    object.figures.push_back(std::make_shared<const Figure>(std::move(note)));
  }
  if (group.delivery == Delivery::kCarried) {
    carried_.Object().AddStory(object.source);
    const std::string text = PlainText(blocks);
    if (!group.replaced) carried_.Object().ShowStory(text, std::move(blocks));
    return;
  }
  Deliver(group, std::move(object));
}

void RtfReader::EndField(const ReaderGroup& group) {
  // A field without a result becomes an object in the text.
  if (group.making == nullptr || group.making->instruction.empty()) return;
  if (group.making.use_count() > 1) return;  // a run of the result holds it
  if (const auto symbol = SymbolOf(group.making->instruction)) return AddSymbol(*symbol);
  Verbatim object;
  object.source = "{\\field" + group.making->flags + "{\\*\\fldinst{" + group.making->instruction +
                  "}}{\\fldrslt}}";
  const bool title = EqualsNoCase(TrimBlanks(group.making->instruction), "TITLE");
  object.shown_text = title ? document_.title : TextOfInstruction(group.making->instruction);
  AddObject(std::move(object));
}

// A symbol becomes a character of the text.
void RtfReader::AddSymbol(const SymbolField& symbol) {
  CharFormat format = ResolvedFormat();
  if (!symbol.font.empty()) format.font = head_.fonts().PositionOf(symbol.font);
  if (symbol.half_points > 0) format.half_points = symbol.half_points;
  char32_t character = symbol.code;
  if (character <= 0xff && !symbol.unicode) {
    const std::string& font = head_.fonts().fonts()[static_cast<std::size_t>(format.font)].name;
    const bool glyph = SymbolFontOf(font) != SymbolFont::kNone;
    const CodePage& page = head_.code_pages().Get(glyph ? kSymbolCodePage : kDefaultCodePage);
    character = page.Decode(static_cast<unsigned char>(character));
  }
  std::string text;
  AppendUtf8(text, CleanCharacter(character));
  CurrentStory().Text(text, format, CurrentField());
}

void RtfReader::EndClassicList() {
  ChangeParagraph();
  Bullet bullet = bullet_.Take();
  if (bullet_.font_number() >= 0)
    bullet.font = head_.fonts().FontOfMark(head_.fonts().Position(bullet_.font_number()));
  CurrentStory().state().format.bullet = std::move(bullet);
}

void RtfReader::Deliver(const ReaderGroup& group, Verbatim object) {
  std::string& source = object.source;
  switch (group.delivery) {
    case Delivery::kNone:
      return;
    case Delivery::kObject:
      return AddObject(std::move(object));
    case Delivery::kPicture: {
      Picture picture = carried_.TakePicture();
      picture.source = std::move(source);
      return CurrentStory().Object({ResolvedFormat(),
                                    {},
                                    std::make_shared<const Picture>(std::move(picture)),
                                    CurrentField()});
    }
    case Delivery::kMark:
      return CurrentStory().AddMark(std::move(source));
    case Delivery::kHead:
      if (source == "{\\*" + group.own_word + "}") return;  // empty
      document_.head_groups.push_back({std::move(source), {}, {}});
      return;
    case Delivery::kInfo:
      document_.info.push_back(std::move(source));
      return;
    case Delivery::kInstruction:
      while (source.ends_with(' ')) source.pop_back();
      if (Top().making != nullptr) Top().making->instruction = std::move(source);
      return;
    case Delivery::kCarried:
      return;  // EndStory has delivered it
  }
}

void RtfReader::AddObject(Verbatim object) {
  CurrentStory().Object(
      {ResolvedFormat(), {}, std::make_shared<const Verbatim>(std::move(object)), CurrentField()});
}

void RtfReader::Word(const Token& word) {
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
    case Destination::kCarried:
      if (word.text == "f") Top().page = &head_.fonts().PageOf(word.param);
      // Formatting, and \cs, which names it, are no part of what an instruction says.
      if (carried_.InInstruction() && (word.text == "cs" || CharacterWord(word))) return;
      return carried_.Word(word, &Top());
    case Destination::kPicture:
      return carried_.Word(word, &Top());
    case Destination::kFonts:
      if (IsNeverText(word.text)) Top().destination = Destination::kSkip;
      return head_.Word(Destination::kFonts, word);
    case Destination::kColours:
    case Destination::kLists:
    case Destination::kOverrides:
      return head_.Word(Top().destination, word);
    case Destination::kClassicList:
      return bullet_.Word(head_.WithPosition(word));
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

void RtfReader::TextWord(const Token& word) {
  const WordRole& role = roles_.Of(word.text);
  switch (role.kind) {
    case WordRole::Kind::kInvisible:
      return;
    case WordRole::Kind::kCharacter:
      return Character(role.character);
    case WordRole::Kind::kFormat:
      CharacterWord(word);
      return;
    case WordRole::Kind::kBreak:
      return BreakWord(word);
    case WordRole::Kind::kNeverText:
      if (groups_.size() > 2) {
        Top().destination = Destination::kSkip;
        return;
      }
      break;
    case WordRole::Kind::kOther:
      break;
  }
  if (!role.of_row)
    CurrentStory().LeaveRowWords(Top().nested_row);
  else if (CurrentStory().TakeRowWord(word, Top().nested_row))
    return;
  const bool letters = stories_.size() == 1;
  if (head_.page().TakeBorder(word, head_.colours(), letters)) return;
  if (role.of_paragraph) return ParagraphWord(word);
  if (head_.Setting(word)) return;
  // Kept at the start of the note, where it makes an endnote of a footnote.
  if (word.text == "ftnalt" && Top().owns_story && Top().own_word == "\\footnote") {
    Top().own_word += "\\ftnalt";
    return;
  }
  // Word processors write section words behind fields, also in headers, whose sections they are
  // not.
  if (letters) head_.page().Take(word);
}

void RtfReader::BreakWord(const Token& word) {
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
  else if (word.text == "sect")
    EndSection();
  else if (word.text == "chpgn" || word.text == "chftn" || word.text == "sectnum" ||
           word.text == "column" || word.text == "chdate" || word.text == "chtime") {
    Verbatim object;
    object.source = "{\\" + std::string(word.text) + "}";
    AddObject(std::move(object));
  } else if (word.text == "chatn") {
    story.AddMark("{\\chatn}");
  }
}

// Sections are the letter's; in its headers and notes the word ends a paragraph.
void RtfReader::EndSection() {
  if (stories_.size() > 1 || !budget_.Spend(kSectionCost))
    return CurrentStory().EndParagraph(ResolvedFormat());
  CurrentStory().EndSection(ResolvedFormat(), head_.page().BeginSection());
}

bool RtfReader::CharacterWord(const Token& word) {
  ReaderGroup& group = Top();
  if (!ApplyCharacterWord(word, head_.fonts(), head_.colours(), &group.format)) return false;
  if (word.text == "f") group.page = &head_.fonts().PageOf(word.param);
  if (word.text == "plain") group.page = nullptr;
  return true;
}

void RtfReader::ParagraphWord(const Token& word) {
  ChangeParagraph();
  ApplyParagraphWord(word, head_.colours(), &CurrentStory().state());
}

void RtfReader::ChangeParagraph() {
  if (groups_.size() < 2 || Top().saved_state || Top().owns_story) return;
  Top().saved_state = true;
  CurrentStory().SaveState();
}

}  // namespace

bool IsRtf(std::string_view source) {
  if (source.starts_with("\xef\xbb\xbf")) source.remove_prefix(3);
  const std::size_t start = source.find_first_not_of(" \t\r\n");
  return start != std::string_view::npos && source.substr(start).starts_with("{\\rtf");
}

Document ReadRtf(std::string_view source) {
  if (IsRtf(source)) source.remove_prefix(source.find('{'));
  return RtfReader(source).Read();
}

}  // namespace tenora::richtext
