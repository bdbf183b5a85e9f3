// The reader's working parts: the stack of groups and what each token does to it.
// reader.cc runs the tokens, reader_groups.cc opens and closes groups, reader_words.cc handles the
// control words of text.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/richtext/characters/byte_decoder.h"
#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/read/character_words.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/read/destinations.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/read/list_table.h"
#include "platform/richtext/read/page_words.h"
#include "platform/richtext/read/picture_reader.h"
#include "platform/richtext/read/source_copy.h"
#include "platform/richtext/read/story.h"
#include "platform/richtext/read/style_sheet.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class Reader {
 public:
  explicit Reader(std::string_view source);
  Document Read();

 private:
  // What is done with the result when the group that owns it closes.
  enum class Delivery {
    kNone,
    kObject,       // a Verbatim in the text
    kPicture,      // a Picture in the text
    kMark,         // between two characters
    kHead,         // among the head's groups
    kInfo,         // among the information groups
    kInstruction,  // the instruction of the field around
    kCopy,         // into the copy around
  };

  struct Group {
    Destination destination = Destination::kText;
    CharFormat format = PlainFormat();
    const CodePage* page = nullptr;      // of the font in force
    int fallback = 1;                    // \ucN
    std::shared_ptr<const Field> field;  // whose result this is
    int field_serial = 0;                // the paragraph the result began in
    std::shared_ptr<Field> making;       // \field: the field being read
    Delivery delivery = Delivery::kNone;
    bool owns_story = false, owns_copy = false;
    bool open_ending = false;  // of the story: its last paragraph has no mark
    bool fresh = false;        // nothing but \* was seen in it
    bool starred = false;
    bool copied = false;        // its braces stand in the copy
    bool alternatives = false;  // \upr: only \ud in it is read
    bool nested_row = false;    // \nesttableprops
    bool saved_state = false;   // the story keeps the paragraph formatting from before
    bool entry = false;    // it holds one entry of a table (style, list, override), one picture
    bool shown = false;    // text of a copy that a reader of the letter sees
    std::string own_word;  // that began the story or copy it owns
  };

  // Something that is being carried through.
  struct Copy {
    SourceCopy source;
    std::string shown_text;
    std::shared_ptr<const Picture> shown_picture;
    std::size_t picture_start = 0;
    std::optional<ShapeBox> shape;  // what is carried through is one shape
  };

  // reader.cc
  void Handle(Token token);
  bool SkipFallback(Token* token);
  void Symbol(char symbol);
  void Text(std::string_view ascii);
  void Byte(unsigned char byte);
  void Unicode(int number);
  void Character(char32_t character);
  void Binary(std::string_view bytes);
  void ListCharacter(char32_t character);
  void FlushPending();
  CharFormat ResolvedFormat();
  const CodePage& Page();
  std::shared_ptr<const Field> CurrentField();
  void Finish();

  // reader_groups.cc
  void OpenGroup();
  void CloseGroup();
  bool OpenDestination(const Token& word);
  bool OpenInText(Opens opens, const Token& word);
  bool OpenInTable(const Token& word);
  bool OpenInField(const Token& word);
  bool OpenInInfo(const Token& word);
  bool OpenInLists(const Token& word);
  bool OpenInCopy(Opens opens, const Token& word);
  bool OpenPart(Destination destination);
  void BeginCopy(SourceCopy::Style style, Delivery delivery, const Token* word);
  void BeginPicture();
  void BeginStory(Delivery delivery, const Token& word);
  void BeginField();
  void MarkCopied();
  void EndTableEntry(const Group& group);
  void EndPicture(const Group& group);
  void EndStory(Group& group);
  void EndCopy(Group& group);
  void EndField(const Group& group);
  void EndClassicList();
  void Deliver(const Group& group, std::string source, Copy* copy);

  // reader_words.cc
  void Word(const Token& word);
  void TextWord(const Token& word);
  bool BreakWord(const Token& word);
  bool StyleWord(const Token& word);
  bool CharacterWord(const Token& word);
  bool ParagraphWord(const Token& word);
  bool CodePageWord(const Token& word);
  void ChangeParagraph();

  Group& Top() { return groups_.back(); }
  Story& CurrentStory() { return *stories_.back(); }
  Copy& CurrentCopy() { return *copies_.back(); }
  StoryContext Context() { return {fonts_, colours_, lists_, budget_}; }

  Tokenizer tokens_;
  Document document_;
  CodePages code_pages_;
  FontTable fonts_;
  ColourTable colours_;
  StyleSheet styles_;
  ListTable lists_;
  PageWords page_;
  Budget budget_;

  std::vector<Group> groups_;
  std::vector<std::unique_ptr<Story>> stories_;
  std::vector<std::unique_ptr<Copy>> copies_;
  PictureReader picture_;
  bool in_picture_ = false;
  ClassicBullet bullet_;

  std::size_t ignored_depth_ = 0;  // groups open beyond the deepest that is followed
  int skip_ = 0;                   // characters of a \u fallback still to come
  ByteDecoder decoder_;
  char32_t high_surrogate_ = 0;
  bool ended_ = false;
};

}  // namespace tenora::richtext
