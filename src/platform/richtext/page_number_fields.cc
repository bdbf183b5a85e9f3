#include "platform/richtext/page_number_fields.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/richtext/list_mark.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

using Style = Bullet::Kind;

struct PageField {
  enum class Kind { kNone, kNumber, kCount, kSection, kSectionCount };
  Kind kind = Kind::kNone;
  std::optional<Style> style;
};

// The next word of a field's instruction; words are separated by braces, backslashes and blanks.
std::string_view TakeWord(std::string_view* instruction) {
  constexpr std::string_view kBetween = " {}\\\r\n";
  instruction->remove_prefix(
      std::min(instruction->find_first_not_of(kBetween), instruction->size()));
  const std::size_t end = std::min(instruction->find_first_of(kBetween), instruction->size());
  const std::string_view word = instruction->substr(0, end);
  instruction->remove_prefix(end);
  return word;
}

// The word after the switch "\*"; its letter case is that of the numbers.
std::optional<Style> StyleNamed(std::string_view word, std::optional<Style> otherwise) {
  if (word == "roman") return Style::kLowerRoman;
  if (EqualsNoCase(word, "roman")) return Style::kUpperRoman;
  if (word == "alphabetic") return Style::kLowerLetter;
  if (EqualsNoCase(word, "alphabetic")) return Style::kUpperLetter;
  if (EqualsNoCase(word, "arabic")) return Style::kDecimal;
  return otherwise;
}

PageField FieldOf(std::string_view instruction) {
  PageField field;
  const std::string_view name = TakeWord(&instruction);
  if (EqualsNoCase(name, "PAGE")) {
    field.kind = PageField::Kind::kNumber;
  } else if (EqualsNoCase(name, "NUMPAGES")) {
    field.kind = PageField::Kind::kCount;
  } else if (EqualsNoCase(name, "SECTION")) {
    field.kind = PageField::Kind::kSection;
  } else if (EqualsNoCase(name, "SECTIONPAGES")) {
    field.kind = PageField::Kind::kSectionCount;
  }
  while (!instruction.empty()) {
    if (TakeWord(&instruction) == "*")
      field.style = StyleNamed(TakeWord(&instruction), field.style);
  }
  return field;
}

PageField FieldOf(const Run& run) {
  constexpr std::string_view kInstruction = "\\fldinst";
  if (const auto* object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object)) {
    const std::string_view source = (*object)->source;
    if (source == "{\\chpgn}") return {PageField::Kind::kNumber, std::nullopt};
    if (source == "{\\sectnum}") return {PageField::Kind::kSection, std::nullopt};
    if (!source.starts_with("{\\field")) return {};
    const std::size_t at = source.find(kInstruction);
    return at == std::string_view::npos ? PageField{}
                                        : FieldOf(source.substr(at + kInstruction.size()));
  }
  if (std::holds_alternative<std::monostate>(run.object) && run.field)
    return FieldOf(run.field->instruction);
  return {};
}

using VerbatimPointer = std::shared_ptr<const Verbatim>;

// Calls `use` with every paragraph, those in tables and text boxes included.
template <typename Use>
void ForEachParagraphIn(const std::vector<Block>& blocks, const Use& use) {
  for (const Block& block : blocks) {
    if (const auto* paragraph = std::get_if<Paragraph>(&block)) {
      use(*paragraph);
      for (const Run& run : paragraph->runs) {
        const auto* const object = std::get_if<VerbatimPointer>(&run.object);
        if (object == nullptr) continue;
        for (const auto& figure : (*object)->figures) ForEachParagraphIn(figure->blocks, use);
      }
      continue;
    }
    for (const Row& row : std::get<std::shared_ptr<Table>>(block)->rows) {
      for (const Cell& cell : row.cells) ForEachParagraphIn(cell.blocks, use);
    }
  }
}

int NumberOf(PageField::Kind kind, const PageNumbers& numbers) {
  switch (kind) {
    case PageField::Kind::kCount:
      return numbers.pages;
    case PageField::Kind::kSection:
      return numbers.section;
    case PageField::Kind::kSectionCount:
      return numbers.section_pages;
    default:
      return numbers.page;
  }
}

std::string TextOf(const PageField& field, const PageNumbers& numbers) {
  const bool page = field.kind == PageField::Kind::kNumber;
  Bullet number;
  number.kind = field.style.value_or(page ? numbers.style : Style::kDecimal);
  return ListMark(number, NumberOf(field.kind, numbers));
}

// The document is not changed.
void Fill(VerbatimPointer* drawing, const PageNumbers& numbers) {
  std::shared_ptr<Verbatim> filled;
  for (std::size_t i = 0; i < (*drawing)->figures.size(); ++i) {
    const Figure& figure = *(*drawing)->figures[i];
    const PageFields fields = PageFieldsIn(figure.blocks);
    if (!fields.number && !fields.count) continue;
    if (filled == nullptr) filled = std::make_shared<Verbatim>(**drawing);
    Figure changed = figure;
    changed.blocks = WithPageNumbers(std::move(changed.blocks), numbers);
    filled->figures[i] = std::make_shared<const Figure>(std::move(changed));
  }
  if (filled != nullptr) *drawing = std::move(filled);
}

void Fill(Paragraph* paragraph, const PageNumbers& numbers) {
  std::vector<Run> runs;
  std::shared_ptr<const Field> filled;  // its result may be of several runs
  for (Run& run : paragraph->runs) {
    if (run.field && run.field == filled) continue;
    const PageField field = FieldOf(run);
    filled = nullptr;
    if (auto* const object = std::get_if<VerbatimPointer>(&run.object)) Fill(object, numbers);
    if (field.kind != PageField::Kind::kNone) {
      filled = std::exchange(run.field, nullptr);
      run.object = std::monostate();
      run.text = TextOf(field, numbers);
    }
    runs.push_back(std::move(run));
  }
  paragraph->runs = std::move(runs);
}

}  // namespace

PageFields PageFieldsIn(const std::vector<Block>& blocks) {
  PageFields fields;
  ForEachParagraphIn(blocks, [&](const Paragraph& paragraph) {
    for (const Run& run : paragraph.runs) {
      const PageField::Kind kind = FieldOf(run).kind;
      fields.number =
          fields.number || kind == PageField::Kind::kNumber || kind == PageField::Kind::kSection;
      fields.count =
          fields.count || kind == PageField::Kind::kCount || kind == PageField::Kind::kSectionCount;
    }
  });
  return fields;
}

std::optional<std::string> PageNumberIn(const Run& run, const PageNumbers& numbers) {
  const PageField field = FieldOf(run);
  if (field.kind == PageField::Kind::kNone) return std::nullopt;
  return TextOf(field, numbers);
}

bool HoldsPageNumber(const Run& run) { return FieldOf(run).kind != PageField::Kind::kNone; }

std::vector<Block> WithPageNumbers(std::vector<Block> blocks, const PageNumbers& numbers) {
  for (Block& block : blocks) {
    if (auto* paragraph = std::get_if<Paragraph>(&block)) {
      Fill(paragraph, numbers);
      continue;
    }
    auto& table = std::get<std::shared_ptr<Table>>(block);
    table = std::make_shared<Table>(*table);  // the document is not changed
    for (Row& row : table->rows) {
      for (Cell& cell : row.cells) cell.blocks = WithPageNumbers(std::move(cell.blocks), numbers);
    }
  }
  return blocks;
}

}  // namespace tenora::richtext
