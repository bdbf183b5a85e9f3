#include "platform/richtext/table_numbers.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <unordered_map>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/richtext/write/format_writer.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

// Which positions are used, then where each goes.
class Numbers {
 public:
  explicit Numbers(std::size_t count) : used_(count), to_(count) {}

  void Use(int position) {
    if (position >= 0 && static_cast<std::size_t>(position) < used_.size())
      used_[static_cast<std::size_t>(position)] = true;
    else
      all_known_ = false;
  }
  // `first` takes place 0, the others follow in their order.
  void Assign(int first) {
    to_[static_cast<std::size_t>(first)] = 0;
    int next = 1;
    for (std::size_t i = 0; i < used_.size(); ++i) {
      if (used_[i] && i != static_cast<std::size_t>(first)) to_[i] = next++;
    }
    used_[static_cast<std::size_t>(first)] = true;
    count_ = static_cast<std::size_t>(next);
  }
  // kDefaultFontToCome is not a position and becomes 0, the default font's.
  int operator()(int position) const {
    const auto index = static_cast<std::size_t>(position);
    return position >= 0 && index < to_.size() ? to_[index] : 0;
  }
  bool ChangesNothing() const { return all_known_ && count_ == used_.size() && to_[0] == 0; }

  template <class Entry>
  void Rearrange(std::vector<Entry>* entries) const {
    std::vector<Entry> kept(count_);
    for (std::size_t i = 0; i < entries->size(); ++i) {
      if (used_[i]) kept[static_cast<std::size_t>(to_[i])] = std::move((*entries)[i]);
    }
    *entries = std::move(kept);
  }

 private:
  std::vector<char> used_;  // not bool: bits are slow to set one by one
  std::vector<int> to_;
  std::size_t count_ = 0;
  bool all_known_ = true;
};

// Calls `change` for each font or colour number in canonical source; true when one changed.
template <class Change>
bool ForEachNumber(std::string* source, const Change& change) {
  std::string out;
  bool changed = false;
  std::size_t copied = 0, at = 0;
  while ((at = source->find('\\', at)) != std::string::npos) {
    const std::size_t word = ++at;
    while (at < source->size() && IsWordLetter((*source)[at])) ++at;
    if (at == word) {
      ++at;
      continue;
    }
    const std::size_t digits = at;
    int number = 0;
    while (at < source->size() && IsDigit((*source)[at]) && at - digits < 9)
      number = number * 10 + ((*source)[at++] - '0');
    if (at == digits) continue;
    const Reference reference = ReferenceOf(std::string_view(*source).substr(word, digits - word));
    if (reference == Reference::kNone) continue;
    const int now = change(reference, number);
    if (now == number) continue;
    out.append(*source, copied, digits - copied).append(std::to_string(now));
    copied = at;
    changed = true;
  }
  if (!changed) return false;
  out.append(*source, copied);
  *source = std::move(out);
  return true;
}

void CopyTables(std::vector<Block>* blocks) {
  for (Block& block : *blocks) {
    auto* const table = std::get_if<std::shared_ptr<Table>>(&block);
    if (table == nullptr) continue;
    *table = std::make_shared<Table>(**table);
    for (Row& row : (*table)->rows) {
      for (Cell& cell : row.cells) CopyTables(&cell.blocks);
    }
  }
}

// Visits every font and colour number of a document. `change` gives the number to put in its place.
// Where the document has a font for symbol bullets, these get it before, as they are written in it.
template <class Change>
class Visitor {
 public:
  explicit Visitor(const Change& change, std::optional<int> symbol_font = std::nullopt)
      : change_(change), symbol_font_(symbol_font) {}

  void Visit(Document* document) {
    Visit(&document->page);
    Visit(&document->head_groups);
    for (std::string& group : document->info) Source(&group);
    for (Block& block : document->blocks) Visit(&block);
  }

 private:
  void Visit(PageSetup* page) {
    if (!page->borders) return;
    PageBorders& borders = *page->borders;
    for (Border* border : {&borders.top, &borders.left, &borders.bottom, &borders.right})
      Colour(&border->colour);
  }

  void Visit(std::vector<HeadGroup>* groups) {
    for (HeadGroup& group : *groups) {
      Source(&group.source);
      for (Block& block : group.blocks) Visit(&block);
    }
  }

  void Visit(Block* block) {
    if (auto* paragraph = std::get_if<Paragraph>(block)) return Visit(paragraph);
    for (Row& row : std::get<std::shared_ptr<Table>>(*block)->rows) {
      Source(&row.definition);
      for (Cell& cell : row.cells) {
        Colour(&cell.shading);
        for (Border* border : {&cell.top, &cell.bottom, &cell.left, &cell.right})
          Colour(&border->colour);
        for (Block& inner : cell.blocks) Visit(&inner);
      }
    }
  }

  void Visit(Paragraph* paragraph) {
    ParagraphFormat& format = paragraph->format;
    Colour(&format.shading);
    for (Border* border :
         {&format.top, &format.bottom, &format.left, &format.right, &format.between})
      Colour(&border->colour);
    if (symbol_font_ && format.bullet.font && IsSymbolBullet(format.bullet)) {
      format.bullet.font = symbol_font_;
    }
    if (format.bullet.font) format.bullet.font = change_(Reference::kFont, *format.bullet.font);
    if (format.bullet.colour) Colour(&*format.bullet.colour);
    Visit(&paragraph->mark);
    for (Run& run : paragraph->runs) {
      Visit(&run.format);
      Shared(&run.field, &Field::instruction, &fields_);
      if (auto* picture = std::get_if<std::shared_ptr<const Picture>>(&run.object))
        Shared(picture, &Picture::source, &pictures_);
      if (auto* object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object))
        VisitObject(object);
    }
    for (Mark& mark : paragraph->marks) Source(&mark.source);
    if (paragraph->next_section == nullptr) return;
    if (paragraph->next_section->head_groups.empty() && !paragraph->next_section->page.borders)
      return;
    Section section = *paragraph->next_section;  // copies of the document may share it
    Visit(&section.page);
    Visit(&section.head_groups);
    paragraph->next_section = std::make_shared<const Section>(std::move(section));
  }

  // The figures' texts are copied, since other documents may share them.
  void VisitObject(std::shared_ptr<const Verbatim>* object) {
    const Verbatim* const original = object->get();
    const bool done = objects_.contains(original);
    Shared(object, &Verbatim::source, &objects_);
    if (done || *object == nullptr) return;
    const bool texts = std::ranges::any_of(
        (*object)->figures, [](const auto& figure) { return !figure->blocks.empty(); });
    if (!texts) return;
    Verbatim copy = **object;
    for (std::shared_ptr<const Figure>& figure : copy.figures) {
      Figure changed = *figure;
      CopyTables(&changed.blocks);
      for (Block& block : changed.blocks) Visit(&block);
      figure = std::make_shared<const Figure>(std::move(changed));
    }
    *object = objects_[original] = std::make_shared<const Verbatim>(std::move(copy));
  }

  void Visit(CharFormat* format) {
    format->font = change_(Reference::kFont, format->font);
    Colour(&format->colour);
    Colour(&format->highlight);
  }

  // Objects that several runs share stay shared and are copied only when a number changes.
  template <class Object>
  void Shared(std::shared_ptr<const Object>* object, std::string Object::*source,
              std::map<const Object*, std::shared_ptr<const Object>>* done) {
    if (*object == nullptr) return;
    const auto [entry, added] = done->try_emplace(object->get(), *object);
    if (added) {
      std::string changed = (**object).*source;
      if (Source(&changed)) {
        Object copy = **object;
        copy.*source = std::move(changed);
        entry->second = std::make_shared<const Object>(std::move(copy));
      }
    }
    *object = entry->second;
  }

  void Colour(int* colour) { *colour = change_(Reference::kColour, *colour); }
  bool Source(std::string* source) { return ForEachNumber(source, change_); }

  const Change& change_;
  const std::optional<int> symbol_font_;
  std::map<const Field*, std::shared_ptr<const Field>> fields_;
  std::map<const Picture*, std::shared_ptr<const Picture>> pictures_;
  std::map<const Verbatim*, std::shared_ptr<const Verbatim>> objects_;
};

bool UsesSymbolBullet(const std::vector<Block>& blocks) {
  return std::ranges::any_of(blocks, [](const Block& block) {
    if (const auto* paragraph = std::get_if<Paragraph>(&block))
      return IsSymbolBullet(paragraph->format.bullet);
    const Table& table = *std::get<std::shared_ptr<Table>>(block);
    return std::ranges::any_of(table.rows, [](const Row& row) {
      return std::ranges::any_of(row.cells,
                                 [](const Cell& cell) { return UsesSymbolBullet(cell.blocks); });
    });
  });
}

}  // namespace

Reference ReferenceOf(std::string_view word) {
  static const std::unordered_map<std::string_view, Reference> kReferences{
      {"f", Reference::kFont},
      {"pnf", Reference::kFont},
      {"cf", Reference::kColour},
      {"cb", Reference::kColour},
      {"highlight", Reference::kColour},
      {"chcbpat", Reference::kColour},
      {"chcfpat", Reference::kColour},
      {"cbpat", Reference::kColour},
      {"cfpat", Reference::kColour},
      {"brdrcf", Reference::kColour},
      {"clcbpat", Reference::kColour},
      {"clcfpat", Reference::kColour},
      {"clcbpatraw", Reference::kColour},
      {"clcfpatraw", Reference::kColour},
      {"trcbpat", Reference::kColour},
      {"trcfpat", Reference::kColour},
      {"ulc", Reference::kColour},
      {"pncf", Reference::kColour}};
  const auto found = kReferences.find(word);
  return found == kReferences.end() ? Reference::kNone : found->second;
}

void Renumber(Document* document) {
  std::optional<int> symbol_font;
  const auto found = std::ranges::find_if(document->fonts, IsBulletFont);
  if (found != document->fonts.end()) {
    symbol_font = static_cast<int>(found - document->fonts.begin());
  }
  Numbers fonts(document->fonts.size()), colours(document->colours.size());
  const auto collect = [&](Reference reference, int number) {
    (reference == Reference::kFont ? fonts : colours).Use(number);
    return number;
  };
  Visitor(collect, symbol_font).Visit(document);
  if (UsesSymbolBullet(document->blocks)) {
    for (std::size_t i = 0; i < document->fonts.size(); ++i) {
      if (IsBulletFont(document->fonts[i])) fonts.Use(static_cast<int>(i));
    }
  }
  fonts.Assign(document->default_font);
  colours.Assign(0);
  if (!fonts.ChangesNothing() || !colours.ChangesNothing()) {
    const auto change = [&](Reference reference, int number) {
      return reference == Reference::kFont ? fonts(number) : colours(number);
    };
    Visitor(change).Visit(document);
    fonts.Rearrange(&document->fonts);
    colours.Rearrange(&document->colours);
  }
  document->default_font = 0;
  for (std::size_t i = 0; i < document->fonts.size(); ++i)
    document->fonts[i].number = static_cast<int>(i);
}

void MoveToTables(Document* document, std::vector<Font>* fonts, std::vector<Colour>* colours) {
  // The position of an equal entry in a table, added if missing.
  const auto position = [](auto* table, const auto& entry, const auto& equals) {
    const auto found =
        std::ranges::find_if(*table, [&](const auto& e) { return equals(e, entry); });
    const auto index = static_cast<int>(found - table->begin());
    if (found == table->end()) table->push_back(entry);
    return index;
  };
  const auto same_font = [](const Font& a, const Font& b) {
    return ToLower(a.name) == ToLower(b.name) &&
           (a.charset == kSymbolCharset) == (b.charset == kSymbolCharset);
  };
  std::vector<int> font_at, colour_at;
  for (const Font& font : document->fonts) font_at.push_back(position(fonts, font, same_font));
  for (const Colour& colour : document->colours)
    colour_at.push_back(position(colours, colour, std::equal_to<Colour>()));
  const auto change = [&](Reference reference, int number) {
    const std::vector<int>& at = reference == Reference::kFont ? font_at : colour_at;
    const auto index = static_cast<std::size_t>(number);
    return number >= 0 && index < at.size() ? at[index] : 0;
  };
  Visitor(change).Visit(document);
  document->default_font = change(Reference::kFont, document->default_font);
  document->fonts = *fonts;
  document->colours = *colours;
  for (std::size_t i = 0; i < document->fonts.size(); ++i)
    document->fonts[i].number = static_cast<int>(i);
}

}  // namespace tenora::richtext
