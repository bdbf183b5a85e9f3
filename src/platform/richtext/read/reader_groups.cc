// The opening and closing of groups.
#include <algorithm>
#include <optional>
#include <utility>

#include "platform/richtext/document_text.h"
#include "platform/richtext/read/reader_core.h"
#include "platform/richtext/write/block_writer.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kDeepest = 1000;
constexpr std::size_t kMostStories = 8;  // a text box in a footnote in a table in …
constexpr int kDeepestField = 8;

int FieldDepth(const Field* field) {
  int depth = 0;
  for (; field != nullptr; field = field->outer.get()) ++depth;
  return depth;
}

// How a group is read that is neither carried through nor a text of its own.
std::optional<Destination> PartOf(Opens opens) {
  switch (opens) {
    case Opens::kSkipped:
    case Opens::kInstruction:
      return Destination::kSkip;
    case Opens::kFonts:
      return Destination::kFonts;
    case Opens::kColours:
      return Destination::kColours;
    case Opens::kStyles:
      return Destination::kStyles;
    case Opens::kLists:
      return Destination::kLists;
    case Opens::kOverrides:
      return Destination::kOverrides;
    case Opens::kInfo:
      return Destination::kInfo;
    case Opens::kClassicList:
      return Destination::kClassicList;
    case Opens::kNestedRow:
    case Opens::kAlternatives:
    case Opens::kCopiedStory:  // a text box without its shape: its text is text
      return Destination::kText;
    default:
      return std::nullopt;
  }
}

}  // namespace

void Reader::OpenGroup() {
  if (groups_.size() >= kDeepest) {
    ++ignored_depth_;
    return;
  }
  Group& around = Top();
  around.fresh = false;
  Group group;
  group.destination = around.destination;
  group.format = around.format;
  group.page = around.page;
  group.fallback = around.fallback;
  group.field = around.field;
  group.field_serial = around.field_serial;
  group.making = around.making;
  group.nested_row = around.nested_row;
  group.shown = around.shown;
  group.fresh = true;
  if (around.destination == Destination::kStyles && !around.entry) {
    group.entry = true;
    styles_.BeginEntry();
  } else if (around.destination == Destination::kStyles) {
    group.destination = Destination::kSkip;
  }
  // The plain form in \upr; \ud behind it is opened by its own word.
  if (around.alternatives) group.destination = Destination::kSkip;
  group.alternatives = false;
  groups_.push_back(std::move(group));
}

void Reader::CloseGroup() {
  if (ignored_depth_ > 0) {
    --ignored_depth_;
    return;
  }
  // The outermost group stays: its formatting is that of the last paragraph.
  if (groups_.size() <= 2) {
    ended_ = true;
    return;
  }
  Group group = std::move(groups_.back());
  groups_.pop_back();
  if (group.saved_state) CurrentStory().RestoreState();
  if (group.copied && !group.owns_copy) CurrentCopy().source.Close();
  EndTableEntry(group);
  if (group.owns_story) EndStory(group);
  if (group.owns_copy) EndCopy(group);
  if (group.destination == Destination::kField && Top().making != group.making) EndField(group);
  if (group.destination == Destination::kClassicList && Top().destination == Destination::kText)
    EndClassicList();
}

void Reader::EndTableEntry(const Group& group) {
  switch (group.destination) {
    case Destination::kFonts:
      return fonts_.EndEntry();
    case Destination::kStyles:
      if (group.entry) styles_.EndEntry();
      return;
    case Destination::kLists:
      if (group.entry) lists_.EndList();
      return;
    case Destination::kOverrides:
      if (group.entry) lists_.EndOverride();
      return;
    case Destination::kPicture:
      if (group.entry) EndPicture(group);
      return;
    default:
      return;
  }
}

void Reader::EndPicture(const Group& group) {
  in_picture_ = false;
  if (group.owns_copy) return;
  Copy& copy = CurrentCopy();
  Picture picture = picture_.Take();
  picture.source = copy.source.Tail(copy.picture_start);
  if (const auto& box = copy.shape; box && box->right > box->left && box->bottom > box->top) {
    picture.width = box->right - box->left;
    picture.height = box->bottom - box->top;
  }
  copy.shown_picture = std::make_shared<const Picture>(std::move(picture));
}

// The first word of a group. True when the word is used up.
bool Reader::OpenDestination(const Token& word) {
  const Opens opens = WhatOpens(word.text, Top().starred);
  switch (Top().destination) {
    case Destination::kText:
      return OpenInText(opens, word);
    case Destination::kField:
    case Destination::kClassicList:
    case Destination::kInfo:
    case Destination::kFonts:
    case Destination::kStyles:
    case Destination::kLists:
    case Destination::kOverrides:
      return OpenInTable(word);
    case Destination::kCopy:
    case Destination::kPicture:
      return OpenInCopy(opens, word);
    case Destination::kSkip:
      if (opens != Opens::kUnicode || groups_.size() < 2) return false;
      if (!groups_[groups_.size() - 2].alternatives) return false;
      return OpenPart(groups_[groups_.size() - 2].destination);
    default:
      return false;
  }
}

bool Reader::OpenPart(Destination destination) {
  Top().destination = destination;
  Top().fresh = false;
  return true;
}

bool Reader::OpenInText(Opens opens, const Token& word) {
  // Of a field that stands too deep in others, only the result is kept.
  if (word.text == "fldinst") return OpenPart(Destination::kSkip);
  if (const auto destination = PartOf(opens)) {
    if (opens == Opens::kClassicList) bullet_ = ClassicBullet();
    if (opens == Opens::kNestedRow) Top().nested_row = true;
    if (opens == Opens::kAlternatives) Top().alternatives = true;
    return OpenPart(*destination);
  }
  switch (opens) {
    case Opens::kField:
      BeginField();
      return true;
    case Opens::kPicture:
      BeginCopy(SourceCopy::Style::kWhole, Delivery::kPicture, &word);
      BeginPicture();
      return true;
    case Opens::kObject:
      BeginCopy(SourceCopy::Style::kWhole, Delivery::kObject, &word);
      return true;
    case Opens::kMark:
      BeginCopy(SourceCopy::Style::kWhole, Delivery::kMark, &word);
      return true;
    case Opens::kHead:
      BeginCopy(SourceCopy::Style::kWhole, Delivery::kHead, &word);
      return true;
    case Opens::kHeadStory:
      // Headers belong to the letter, not to its parts.
      if (stories_.size() > 1) return OpenPart(Destination::kSkip);
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
bool Reader::OpenInTable(const Token& word) {
  Group& group = Top();
  switch (group.destination) {
    case Destination::kField:
      return OpenInField(word);
    case Destination::kClassicList:
      if (word.text == "pntxtb") return OpenPart(Destination::kListBefore);
      if (word.text == "pntxta") return OpenPart(Destination::kListAfter);
      return false;
    case Destination::kInfo:
      return OpenInInfo(word);
    case Destination::kLists:
      return OpenInLists(word);
    case Destination::kOverrides:
      if (word.text == "lfolevel") return OpenPart(Destination::kSkip);
      group.entry = word.text == "listoverride";
      if (group.entry) lists_.BeginOverride();
      return false;
    case Destination::kStyles:
      if (group.starred && word.text != "cs" && word.text != "s" && word.text != "ds" &&
          word.text != "ts")
        return OpenPart(Destination::kSkip);
      return false;
    default:
      return group.starred ? OpenPart(Destination::kSkip) : false;
  }
}

bool Reader::OpenInField(const Token& word) {
  if (word.text == "fldinst") {
    BeginCopy(SourceCopy::Style::kInstruction, Delivery::kInstruction, nullptr);
    return true;
  }
  if (word.text != "fldrslt") return OpenPart(Destination::kSkip);
  Group& group = Top();
  group.field = std::exchange(group.making, nullptr);
  group.field_serial = CurrentStory().paragraph_serial();
  return OpenPart(Destination::kText);
}

bool Reader::OpenInInfo(const Token& word) {
  static constexpr std::string_view kKept[] = {"author",   "subject",  "manager", "company",
                                               "category", "keywords", "doccomm"};
  if (word.text == "title") return OpenPart(Destination::kTitle);
  if (word.text == "upr") {
    Top().alternatives = true;
    return OpenPart(Destination::kInfo);
  }
  if (std::ranges::find(kKept, word.text) == std::end(kKept)) return OpenPart(Destination::kSkip);
  BeginCopy(SourceCopy::Style::kWhole, Delivery::kInfo, &word);
  return true;
}

bool Reader::OpenInLists(const Token& word) {
  if (word.text == "leveltext") return OpenPart(Destination::kLevelText);
  if (word.text == "levelnumbers" || word.text == "listname" || Top().starred)
    return OpenPart(Destination::kSkip);
  if (word.text == "list") {
    Top().entry = true;
    lists_.BeginList();
  } else if (word.text == "listlevel") {
    lists_.BeginLevel();
  }
  return false;
}

// Groups in what is carried through: dropped, rewritten, or copied with their braces.
bool Reader::OpenInCopy(Opens opens, const Token& word) {
  const bool unknown = WhatOpens(word.text, false) == Opens::kNothing;
  if (IsInvisibleWord(word.text)) {
    if (Top().starred) return OpenPart(Destination::kSkip);
    Top().fresh = false;
    return true;
  }
  if (opens == Opens::kSkipped && !unknown) return OpenPart(Destination::kSkip);
  if (opens == Opens::kCopiedStory && stories_.size() < kMostStories) {
    BeginStory(Delivery::kCopy, word);
    return true;
  }
  if (CurrentCopy().source.style() == SourceCopy::Style::kInstruction && !Top().starred && unknown)
    return false;
  Copy& copy = CurrentCopy();
  const std::size_t start = copy.source.size();
  copy.source.Open(Top().starred);
  Top().copied = true;
  Top().fresh = false;
  if (word.text == "pict" && !in_picture_) {
    copy.picture_start = start;
    BeginPicture();
  } else if (Top().destination == Destination::kPicture) {
    Top().destination = Destination::kCopy;
  }
  if (word.text == "result" || word.text == "shptxt") Top().shown = true;
  copy.source.Word(word, fonts_, colours_);
  return true;
}

// Writes the brace of a group that began without a destination.
void Reader::MarkCopied() {
  Group& group = Top();
  if (group.copied || group.owns_copy) return;
  group.fresh = false;
  if (CurrentCopy().source.style() == SourceCopy::Style::kInstruction) return;
  group.copied = true;
  CurrentCopy().source.Open(false);
}

void Reader::BeginCopy(SourceCopy::Style style, Delivery delivery, const Token* word) {
  copies_.push_back(std::make_unique<Copy>(Copy{SourceCopy(style), {}, nullptr, 0, {}}));
  Group& group = Top();
  group.owns_copy = true;
  group.delivery = delivery;
  group.shown = false;
  group.destination = Destination::kCopy;
  group.fresh = false;
  if (word == nullptr) return;
  group.own_word.assign(1, '\\').append(word->text);
  if (word->text == "shp") CurrentCopy().shape.emplace();
  CurrentCopy().source.Open(group.starred);
  CurrentCopy().source.Word(*word, fonts_, colours_);
}

void Reader::BeginPicture() {
  picture_ = PictureReader();
  in_picture_ = true;
  Top().entry = true;
  Top().destination = Destination::kPicture;
}

void Reader::BeginStory(Delivery delivery, const Token& word) {
  if (stories_.size() >= kMostStories) {
    OpenPart(Destination::kSkip);
    return;
  }
  stories_.push_back(std::make_unique<Story>(Context()));
  Group& group = Top();
  group.owns_story = true;
  group.delivery = delivery;
  group.destination = Destination::kText;
  group.format = PlainFormat();
  group.page = nullptr;
  group.field = nullptr;
  group.making = nullptr;
  group.nested_row = false;
  group.fresh = false;
  group.own_word = (group.starred ? "\\*\\" : "\\") + std::string(word.text);
  if (word.has_param) group.own_word += std::to_string(word.param);
}

void Reader::BeginField() {
  Group& group = Top();
  group.fresh = false;
  if (FieldDepth(group.field.get()) >= kDeepestField) return;
  auto field = std::make_shared<Field>();
  field->outer = CurrentField();
  group.making = std::move(field);
  group.destination = Destination::kField;
}

void Reader::EndStory(Group& group) {
  const std::unique_ptr<Story> story = std::move(stories_.back());
  stories_.pop_back();
  CharFormat mark = group.format;
  if (mark.font == kDefaultFont) mark.font = fonts_.DefaultPosition();
  std::vector<Block> blocks = story->Finish(mark);
  if (group.open_ending) DropEmptyEnd(&blocks);
  SourceText source;
  source.Raw("{");
  source.Raw(group.own_word);
  source.Word("plain");
  BlockWriter(fonts_.fonts(), kDefaultFontToCome, fonts_.document_code_page(), &code_pages_,
              &source)
      .Write(blocks, group.open_ending ? BlockWriter::Ending::kOpen : BlockWriter::Ending::kMarked);
  source.Raw("}");
  Copy copy{SourceCopy(SourceCopy::Style::kWhole), {}, nullptr, 0, {}};
  if (group.delivery == Delivery::kCopy) copy.shown_text = PlainText(blocks);
  if (group.delivery == Delivery::kHead) {
    const std::size_t word = group.own_word.rfind('\\') + 1;
    document_.head_groups.push_back(
        {source.Take(), group.own_word.substr(word), std::move(blocks)});
    return;
  }
  Deliver(group, source.Take(), &copy);
}

void Reader::EndCopy(Group& group) {
  const std::unique_ptr<Copy> copy = std::move(copies_.back());
  copies_.pop_back();
  if (group.delivery != Delivery::kInstruction) copy->source.Close();
  Deliver(group, copy->source.Take(), copy.get());
}

void Reader::EndField(const Group& group) {
  // A field without a result stands in the text as an object.
  if (group.making == nullptr || group.making->instruction.empty()) return;
  if (group.making.use_count() > 1) return;  // a run of the result holds it
  Verbatim object;
  object.source = "{\\field" + group.making->flags + "{\\*\\fldinst{" + group.making->instruction +
                  "}}{\\fldrslt}}";
  CurrentStory().Object(
      {ResolvedFormat(), {}, std::make_shared<const Verbatim>(std::move(object)), CurrentField()});
}

void Reader::EndClassicList() {
  ChangeParagraph();
  CurrentStory().state().format.bullet = bullet_.Take();
}

void Reader::Deliver(const Group& group, std::string source, Copy* copy) {
  switch (group.delivery) {
    case Delivery::kNone:
      return;
    case Delivery::kObject: {
      Verbatim object;
      object.source = std::move(source);
      object.shown_text = std::move(copy->shown_text);
      object.shown_picture = std::move(copy->shown_picture);
      object.shape = copy->shape;
      return CurrentStory().Object({ResolvedFormat(),
                                    {},
                                    std::make_shared<const Verbatim>(std::move(object)),
                                    CurrentField()});
    }
    case Delivery::kPicture: {
      Picture picture = picture_.Take();
      picture.source = std::move(source);
      return CurrentStory().Object({ResolvedFormat(),
                                    {},
                                    std::make_shared<const Picture>(std::move(picture)),
                                    CurrentField()});
    }
    case Delivery::kMark:
      return CurrentStory().AddMark(std::move(source));
    case Delivery::kHead:
      if (source == "{\\*" + group.own_word + "}") return;  // holds nothing
      document_.head_groups.push_back({std::move(source), {}, {}});
      return;
    case Delivery::kInfo:
      document_.info.push_back(std::move(source));
      return;
    case Delivery::kInstruction:
      while (source.ends_with(' ')) source.pop_back();
      if (Top().making != nullptr) Top().making->instruction = std::move(source);
      return;
    case Delivery::kCopy:
      CurrentCopy().source.Raw(source);
      CurrentCopy().shown_text += copy->shown_text;
      return;
  }
}

}  // namespace tenora::richtext
