#include "merge/forms/form_filler.h"

#include <algorithm>
#include <utility>

#include "merge/forms/value_text.h"
#include "platform/richtext/document_text.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Paragraph;
using richtext::Run;
using Kind = FormNode::Kind;

constexpr std::size_t kMostPieces = 200'000;
constexpr std::size_t kMostBytes = 100'000'000;

bool IsBlank(std::string_view text) {
  return ReplaceAll(std::string(text), "\xC2\xA0", " ").find_first_not_of(" \t") ==
         std::string::npos;
}

// As a letter has a value: line breaks in one character, no others that mean something in a letter.
std::string InLetter(const std::string& value) {
  std::string text = ReplaceAll(value, "\r\n", "\v");
  for (char& c : text) {
    if (c == '\r' || c == '\n') c = '\v';
    if (c >= 0 && c < ' ' && c != '\t' && c != '\v') c = ' ';
  }
  text = ReplaceAll(std::move(text), "\xEF\xBF\xBC", "");
  if (IsValidUtf8(text)) return text;
  std::string valid;
  for (std::string_view rest = text; !rest.empty();) AppendUtf8(valid, TakeCodePoint(rest));
  return valid;
}

bool IsBookmark(const richtext::Mark& mark) {
  return mark.source.starts_with("{\\*\\bkmkstart") || mark.source.starts_with("{\\*\\bkmkend");
}

bool HasSections(const FormNodes& nodes) {
  return std::ranges::any_of(nodes, [](const FormNode& node) {
    return (node.kind == Kind::kParagraphEnd && node.paragraph->next_section != nullptr) ||
           std::ranges::any_of(node.parts, HasSections);
  });
}

const Paragraph& LastParagraph(const std::vector<Block>& blocks) {
  static const Paragraph none;
  const auto* const last = blocks.empty() ? nullptr : std::get_if<Paragraph>(&blocks.back());
  return last != nullptr ? *last : none;
}

}  // namespace

void FormBudget::Spend(std::size_t bytes) {
  bytes_ += bytes;
  if (++pieces_ <= kMostPieces && bytes_ <= kMostBytes) return;
  throw RuntimeError(error_number::kOutOfMemory,
                     "The letter would become too long: a repetition in the template gives too "
                     "many rows");
}

std::vector<Block> FormFiller::Fill(const FormTree& tree, const std::vector<Block>& blocks) {
  FormSink sink;
  Walk(tree.nodes, &sink, nullptr);
  return sink.Take(LastParagraph(blocks));
}

void FormFiller::Walk(const FormNodes& nodes, FormSink* sink, Rows* rows) {
  for (const FormNode& node : nodes) Visit(node, sink, rows);
}

void FormFiller::Visit(const FormNode& node, FormSink* sink, Rows* rows) {
  switch (node.kind) {
    case Kind::kText:
      return AddText(node, sink);
    case Kind::kMark:
      return AddMark(node, sink);
    case Kind::kValue:
      return AddValue(node, sink);
    case Kind::kLineEnd:
      return sink->EndLine(*node.run, node.marked);
    case Kind::kParagraphEnd:
      budget_.Spend(0);
      return sink->EndParagraph(*node.paragraph, node.marked, node.paragraph_marked);
    case Kind::kTable: {
      richtext::Table table;
      Walk(node.parts.front(), sink, &table.rows);
      return sink->AddTable(std::move(table));
    }
    case Kind::kRow:
      return rows->push_back(RowOf(node));
    case Kind::kIf:
      return Branch(node, sink, rows);
    case Kind::kEach:
      return Repeat(node, sink, rows);
  }
}

std::shared_ptr<const richtext::Field> FormFiller::FieldHere(
    const std::shared_ptr<const richtext::Field>& field) {
  if (field == nullptr || fields_ == nullptr) return field;
  auto& here = (*fields_)[field.get()];
  if (here == nullptr) {
    auto copy = std::make_shared<richtext::Field>(*field);
    copy->outer = FieldHere(field->outer);
    // FieldHere may have moved the entry.
    (*fields_)[field.get()] = std::move(copy);
  }
  return (*fields_)[field.get()];
}

void FormFiller::AddText(const FormNode& node, FormSink* sink) {
  Run run{node.run->format, node.run->text.substr(node.begin, node.end - node.begin),
          node.run->object, FieldHere(node.run->field)};
  budget_.Spend(run.text.size());
  const bool content = run.object.index() != 0 || !IsBlank(run.text);
  sink->BeginIn(*node.paragraph);
  sink->Add(std::move(run), content);
}

void FormFiller::AddValue(const FormNode& node, FormSink* sink) {
  const Fact fact = values_.Get(node.name);
  if (std::holds_alternative<std::monostate>(fact) && values_.IsRecipients(node.name)) {
    NoteMissing(node.name);
  }
  Run run{node.run->format,
          InLetter(ValueText(session_, fact, node.format)),
          {},
          FieldHere(node.run->field)};
  budget_.Spend(run.text.size());
  if (told_) told_(node.name, run.text);
  sink->BeginIn(*node.paragraph);
  sink->Add(std::move(run), true);
}

// What the check of the finished letter says of a merge code holds for one with a format.
void FormFiller::NoteMissing(const std::string& name) {
  const FactNames::Name* const known = recipients_.Find(name);
  notes_.Begin(name);
  if (name.starts_with("Last Payment ")) {
    notes_.Add(MergeFact::kNoPayment);
  } else if (known != nullptr && known->type == FactType::kDate) {
    notes_.Add(MergeFact::kNoDate);
  }
}

// A bookmark is there once.
void FormFiller::AddMark(const FormNode& node, FormSink* sink) {
  if (IsBookmark(*node.mark) && !bookmarks_.insert(node.mark).second) return;
  budget_.Spend(node.mark->source.size());
  sink->BeginIn(*node.paragraph);
  sink->AddMark(*node.mark);
}

// What is left out may hold the end of a section, with the page that the text before it stands on.
void FormFiller::KeepSections(const FormNodes& nodes, FormSink* sink) {
  for (const FormNode& node : nodes) {
    if (node.kind == Kind::kParagraphEnd && node.paragraph->next_section != nullptr) {
      sink->EndSection(*node.paragraph);
    }
    for (const FormNodes& part : node.parts) KeepSections(part, sink);
  }
}

void FormFiller::Branch(const FormNode& node, FormSink* sink, Rows* rows) {
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    const auto& condition = node.conditions[i];
    if (condition && !condition->Holds(values_, values_.today())) continue;
    Walk(node.parts[i], sink, rows);
    if (HasSections(node.parts[i])) return;
    break;
  }
  for (const FormNodes& part : node.parts) {
    if (!HasSections(part)) continue;
    return KeepSections(part, sink);
  }
}

void FormFiller::Repeat(const FormNode& node, FormSink* sink, Rows* rows) {
  Fields* const around = fields_;
  bool any = false;
  values_.ForEachRow(*node.each, [&] {
    Fields fields;
    fields_ = &fields;
    any = true;
    Walk(node.parts.front(), sink, rows);
  });
  fields_ = around;
  if (!any) KeepSections(node.parts.front(), sink);
}

richtext::Row FormFiller::RowOf(const FormNode& node) {
  budget_.Spend(node.row->definition.size());
  richtext::Row row = *node.row;
  for (std::size_t i = 0; i < row.cells.size(); ++i) {
    FormSink sink;
    Walk(node.parts[i], &sink, nullptr);
    row.cells[i].blocks = sink.Take(LastParagraph(node.row->cells[i].blocks));
  }
  return row;
}

void DropHalfBookmarks(std::vector<Block>* blocks) {
  std::map<std::string, int> sides;  // of each name: 1 begins, 2 ends
  const auto name_of = [](const richtext::Mark& mark) {
    return mark.source.substr(mark.source.find(' ') + 1);
  };
  const auto side_of = [](const richtext::Mark& mark) {
    return mark.source.starts_with("{\\*\\bkmkstart") ? 1 : 2;
  };
  richtext::ForEachParagraph(*blocks, [&](Paragraph& paragraph, richtext::ParagraphEnd) {
    for (const richtext::Mark& mark : paragraph.marks) {
      if (IsBookmark(mark)) sides[name_of(mark)] |= side_of(mark);
    }
  });
  richtext::ForEachParagraph(*blocks, [&](Paragraph& paragraph, richtext::ParagraphEnd) {
    std::erase_if(paragraph.marks, [&](const richtext::Mark& mark) {
      return IsBookmark(mark) && sides[name_of(mark)] != 3;
    });
  });
}

}  // namespace tenora
