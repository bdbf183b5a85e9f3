#include "platform/printing/layout/body_numbers.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <variant>

#include "platform/printing/document_length.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/notes.h"
#include "platform/richtext/page_heads.h"
#include "platform/richtext/page_number_fields.h"

namespace tenora::printing {
namespace {

using VerbatimPointer = std::shared_ptr<const richtext::Verbatim>;

int LengthOf(const richtext::Run& run) {
  return std::holds_alternative<std::monostate>(run.object) ? TextUnits(run.text) : 1;
}

// What the run shows as the letter has it.
const std::string& StoredText(const richtext::Run& run) {
  const auto* const object = std::get_if<VerbatimPointer>(&run.object);
  return object == nullptr ? run.text : (*object)->shown_text;
}

}  // namespace

BodyNumbers::BodyNumbers(const richtext::Document& document, const Notes& notes,
                         const std::vector<richtext::DocumentSection>& sections) {
  int position = 0;
  std::size_t block = 0;
  for (const richtext::DocumentSection& section : sections) {
    for (; block < section.end_block && block < document.blocks.size(); ++block)
      position += Length(document.blocks[block]);
    section_ends_.push_back(position);
  }
  Collect(document.blocks, 0, std::nullopt, false);
  for (const auto* const list : {&notes.endnotes(), &notes.footnotes()}) {
    for (const Note& note : *list)
      Collect(*note.blocks, note.position, SectionAt(note.anchor), false);
  }
  if (empty()) return;
  for (const richtext::DocumentSection& section : sections)
    styles_.push_back(richtext::PageHeadsOf(document, section).number_style);
}

// All that is in a text box is where that is anchored.
void BodyNumbers::Collect(const std::vector<richtext::Block>& blocks, int position,
                          MaybeSection section, bool in_box) {
  richtext::ForEachParagraph(blocks, [&](const richtext::Paragraph& paragraph, auto) {
    Collect(paragraph, position, section, in_box);
    if (!in_box) position += Length(paragraph);
  });
}

void BodyNumbers::Collect(const richtext::Paragraph& paragraph, int position, MaybeSection section,
                          bool in_box) {
  const richtext::Field* open = nullptr;  // whose result is of several runs
  for (const richtext::Run& run : paragraph.runs) {
    const auto* const object = std::get_if<VerbatimPointer>(&run.object);
    if (open != nullptr && run.field.get() == open) {
      fields_.back().runs.push_back(&run);
      fields_.back().text += StoredText(run);
    } else if (open = nullptr; run.format.hidden) {
      // Neither it nor what is anchored in it shows.
    } else if (richtext::HoldsPageNumber(run)) {
      PageField& field = fields_.emplace_back();
      field.runs.push_back(&run);
      field.position = position;
      field.section = section.value_or(SectionAt(position));
      field.text = StoredText(run);
      if (object == nullptr) open = run.field.get();
    } else if (object != nullptr && richtext::BlocksOfNote(run) == nullptr) {
      for (const auto& figure : (*object)->figures)
        Collect(figure->blocks, position, section.value_or(SectionAt(position)), true);
    }
    if (!in_box) position += LengthOf(run);
  }
}

std::size_t BodyNumbers::SectionAt(int position) const {
  const auto section = std::ranges::upper_bound(section_ends_, position);
  return std::min<std::size_t>(section - section_ends_.begin(), section_ends_.size() - 1);
}

const std::string* BodyNumbers::TextOf(const richtext::Run& run) const {
  const auto text = texts_.find(&run);
  return text == texts_.end() ? nullptr : &text->second;
}

void BodyNumbers::AddPage(int number, const std::vector<TextRange>& ranges) {
  for (const TextRange& range : ranges) {
    auto field = std::ranges::lower_bound(fields_, range.begin, {}, &PageField::position);
    for (; field != fields_.end() && field->position < range.end; ++field) {
      // The rows of a table's header are on many pages, and were first where they belong.
      if (field->page == 0) field->page = number;
    }
  }
}

bool BodyNumbers::Update(const PageTotals& totals) {
  bool changed = false;
  for (PageField& field : fields_) {
    if (field.page == 0) continue;
    richtext::PageNumbers numbers;
    numbers.page = std::exchange(field.page, 0);
    numbers.pages = totals.pages;
    numbers.section = static_cast<int>(field.section) + 1;
    numbers.section_pages = std::max(totals.by_section[field.section], 1);
    numbers.style = styles_[field.section];
    std::string text = *richtext::PageNumberIn(*field.runs.front(), numbers);
    if (text == field.text) continue;
    changed = true;
    field.text = text;
    for (const richtext::Run* const run : field.runs) texts_[run] = std::exchange(text, {});
  }
  return changed;
}

}  // namespace tenora::printing
