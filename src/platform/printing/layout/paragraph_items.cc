#include "platform/printing/layout/paragraph_items.h"

#include <algorithm>
#include <string_view>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/shape_layout.h"
#include "platform/printing/symbol_fonts.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/notes.h"

namespace tenora::printing {
namespace {

using richtext::Alignment;
using richtext::CharFormat;

// Combining marks and right-to-left text, whose brackets are mirrored, need shaping. Other text is
// laid out faster without it.
bool NeedsShaping(const QString& text) {
  return std::any_of(text.begin(), text.end(), [](QChar c) {
    if (c.unicode() < 0x300) return false;
    return c.isMark() || c.isSurrogate() || c.direction() == QChar::DirR ||
           c.direction() == QChar::DirAL;
  });
}

// Character by character, so that every one keeps its position.
QString Capitals(QString text) {
  for (QChar& c : text) c = c.toUpper();
  return text;
}

// Breaking a line takes time proportional to the rest of its text, so long texts are laid out in
// parts: of so many characters and formats where there is a blank. Text without any is slowest and
// has smaller parts.
constexpr qsizetype kLongText = 8192;
constexpr qsizetype kLongSolidText = 2048;
constexpr std::size_t kManyFragments = 512;

// How many characters of a text are added to an open text of this size before that one is closed.
qsizetype PartOf(QStringView text, qsizetype open) {
  const QStringView near = text.first(std::min(text.size(), 2 * kLongText));
  const bool solid = near.size() > kLongSolidText && near.indexOf(QLatin1Char(' ')) < 0;
  const qsizetype wanted = solid ? kLongSolidText : std::max<qsizetype>(kLongText - open, 0);
  if (text.size() <= wanted) return text.size();
  const qsizetype blank = solid ? -1 : near.indexOf(QLatin1Char(' '), wanted);
  if (blank >= 0) return blank + 1;
  const qsizetype part = solid ? wanted : near.size();
  return part < text.size() && text[part].isLowSurrogate() ? part + 1 : part;
}

// Gives a rule the room of a text line above its baseline and in its whole width. The rule is in
// the middle of the line.
void PutAcross(const richtext::Picture::Across& across, double width, const FontUse& use,
               PlacedPicture* rule) {
  if (across.share > 0) rule->width = std::max(across.share * width, 1.0);
  const double above = (use.ascent + use.descent + use.leading - rule->height) / 2;
  const double beside = width - rule->width;
  const double start = across.alignment == Alignment::kLeft    ? 0
                       : across.alignment == Alignment::kRight ? beside
                                                               : beside / 2;
  rule->crop.left = -start / rule->width;
  rule->crop.right = -(beside - start) / rule->width;
  rule->crop.top = -above / rule->height;
  rule->crop.bottom = -(use.ascent - above - rule->height) / rule->height;
  rule->width = width;
  rule->height = use.ascent;
}

class ItemCollector {
 public:
  ItemCollector(LayoutContext& context, const richtext::Paragraph& paragraph,
                const ItemPlace& place)
      : context_(context),
        paragraph_(paragraph),
        format_(paragraph.format),
        place_(place),
        position_(place.position) {}

  std::vector<ParagraphItem> Collect() {
    CollectListMark();
    if (const auto* const mark = context_.notes->marks().AddedAhead(paragraph_))
      CollectText(mark->format, mark->text, true);
    for (const richtext::Run& run : paragraph_.runs) CollectRun(run);
    CloseText();
    return std::move(items_);
  }

 private:
  void CollectListMark();
  void CollectRun(const richtext::Run& run);
  bool CollectFloating(const richtext::Run& run);
  void CollectShown(const CharFormat& format, std::string_view text, bool last);
  void CollectText(const CharFormat& format, std::string_view utf8, bool one_position);
  void Append(const CharFormat& format, const QString& source, int position, bool one_position);
  void AppendSmallCapitals(const CharFormat& format, const QString& text, int position,
                           bool one_position);
  void AppendFragment(const CharFormat& format, const QString& text, int position, bool small,
                      bool one_position);
  bool LongEnough() const;
  void CloseText();

  LayoutContext& context_;
  const richtext::Paragraph& paragraph_;
  const richtext::ParagraphFormat& format_;
  const ItemPlace& place_;
  int position_;
  std::vector<ParagraphItem> items_;
  std::shared_ptr<ShapedText> open_;
  QString open_text_;
};

void ItemCollector::CollectListMark() {
  if (format_.bullet.kind == richtext::Bullet::Kind::kNone) return;
  // Word processors give numbers the format of the paragraph's mark.
  const CharFormat& format = paragraph_.mark;
  const richtext::Bullet& bullet = format_.bullet;
  QString mark = QString::fromStdString(richtext::ListMark(bullet, place_.number));
  if (bullet.gap == richtext::Bullet::Gap::kSpace) mark += QLatin1Char(' ');
  open_ = std::make_shared<ShapedText>();
  open_text_.clear();
  CharFormat& own = open_->own_format.emplace(format);
  own.bold = bullet.bold.value_or(own.bold);
  own.italic = bullet.italic.value_or(own.italic);
  own.font = bullet.font.value_or(own.font);
  own.colour = bullet.colour.value_or(own.colour);
  if (bullet.half_points > 0) own.half_points = bullet.half_points;
  Append(own, UnicodeBullet(mark), position_, true);
  CloseText();
  if (bullet.gap != richtext::Bullet::Gap::kTab) return;
  const double start = place_.left + format_.first_indent;
  const double target = format_.first_indent < 0 ? place_.left : start + format_.bullet.indent;
  items_.emplace_back(TabItem{&format, position_, target});
}

void ItemCollector::CollectRun(const richtext::Run& run) {
  const std::string* const number = context_.numbers ? context_.numbers->TextOf(run) : nullptr;
  if (number != nullptr) {
    CollectText(run.format, *number, true);
    const bool text = std::holds_alternative<std::monostate>(run.object);
    position_ += text ? TextUnits(run.text) : 1;
    return;
  }
  if (std::holds_alternative<std::monostate>(run.object)) {
    if (run.format.hidden) {
      position_ += TextUnits(run.text);
    } else {
      CollectText(run.format, run.text, false);
    }
    return;
  }
  std::shared_ptr<const richtext::Picture> picture;
  if (const auto* own = std::get_if<std::shared_ptr<const richtext::Picture>>(&run.object)) {
    picture = *own;
  } else if (const auto& verbatim =
                 std::get<std::shared_ptr<const richtext::Verbatim>>(run.object)) {
    picture = verbatim->shown_picture;
    if (CollectFloating(run)) {
      picture.reset();
    } else if (richtext::IsColumnBreak(run)) {
      CloseText();
      items_.emplace_back(BreakItem{&run.format, position_, BreakItem::Kind::kColumn});
    } else if (richtext::IsNoteMark(run) && !run.format.hidden) {
      CollectText(run.format, context_.notes->marks().MarkOf(run), true);
    } else if (const auto* const mark = context_.notes->marks().AddedFor(run)) {
      CollectText(mark->format, mark->text, true);
    } else if (!picture && !run.format.hidden) {
      const bool field = verbatim->source.starts_with("{\\field");
      if (field) CollectText(run.format, verbatim->shown_text, true);
      if (!field) CollectShown(run.format, verbatim->shown_text, &run == &paragraph_.runs.back());
    }
  }
  if (picture && !run.format.hidden) {
    CloseText();
    const double width = place_.right - place_.left;
    PlacedPicture placed = context_.pictures.Place(*picture, width, context_.page_height);
    const FontUse& use = context_.fonts->Use(paragraph_.mark);
    const bool across = picture->across && placed.height < use.ascent - use.descent - use.leading;
    if (across) PutAcross(*picture->across, width, use, &placed);
    items_.emplace_back(PictureItem{std::move(placed), position_, across});
  }
  ++position_;
}

// False for what stands in the text.
bool ItemCollector::CollectFloating(const richtext::Run& run) {
  const auto& object = *std::get<std::shared_ptr<const richtext::Verbatim>>(run.object);
  if (!IsShown(object)) return false;
  const bool in_line = object.shape->in_line ||
                       (run.field && run.field->instruction.find("SHAPE") != std::string::npos);
  if (in_line && object.shown_picture) return false;
  if (run.format.hidden) return true;
  CloseText();
  Floating floating = LayOutShape(context_, object, place_.width);
  if (in_line) {
    floating.x = place_.left;
    floating.y = 0;
    floating.x_on_paper = floating.y_on_paper = false;
    floating.wrap = richtext::ShapeBox::Wrap::kAboveAndBelow;
  }
  items_.emplace_back(FloatItem{std::move(floating)});
  return true;
}

// A text box's text is followed by a line break: it is no part of the text it is anchored in.
void ItemCollector::CollectShown(const CharFormat& format, std::string_view text, bool last) {
  if (text.empty()) return;
  if (open_ && !open_text_.endsWith(QLatin1Char(' ')))
    AppendFragment(format, QStringLiteral(" "), position_, false, true);
  CollectText(format, text, true);
  if (last) return;
  CloseText();
  items_.emplace_back(BreakItem{&format, position_, BreakItem::Kind::kLine});
}

// `one_position`: the text stands for a single character of the document, which the caller counts.
void ItemCollector::CollectText(const CharFormat& format, std::string_view utf8,
                                bool one_position) {
  while (!utf8.empty()) {
    const std::size_t size = std::min(utf8.find_first_of("\t\v\f\r\n"), utf8.size());
    if (size > 0) {
      const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(size));
      Append(format, text, position_, one_position);
      if (!one_position) position_ += TextUnits(utf8.substr(0, size));
    } else {
      CloseText();
      if (utf8.front() == '\t') {
        items_.emplace_back(TabItem{&format, position_, {}});
      } else {
        const bool page = utf8.front() == '\f';
        items_.emplace_back(
            BreakItem{&format, position_, page ? BreakItem::Kind::kPage : BreakItem::Kind::kLine});
      }
      if (!one_position) ++position_;
    }
    utf8.remove_prefix(std::max<std::size_t>(size, 1));
  }
}

void ItemCollector::Append(const CharFormat& format, const QString& source, int position,
                           bool one_position) {
  const QString text =
      WithUnicodeSymbols(source, SymbolFontOf(context_.fonts->NameOf(format.font)));
  if (format.all_caps) {
    AppendFragment(format, Capitals(text), position, false, one_position);
  } else if (format.small_caps) {
    AppendSmallCapitals(format, text, position, one_position);
  } else {
    AppendFragment(format, text, position, false, one_position);
  }
}

void ItemCollector::AppendSmallCapitals(const CharFormat& format, const QString& text, int position,
                                        bool one_position) {
  for (qsizetype start = 0; start < text.size();) {
    const bool small = text[start].isLower();
    qsizetype next = start + 1;
    while (next < text.size() && text[next].isLower() == small) ++next;
    AppendFragment(format, Capitals(text.mid(start, next - start)),
                   one_position ? position : position + int(start), small, one_position);
    start = next;
  }
}

void ItemCollector::AppendFragment(const CharFormat& format, const QString& text, int position,
                                   bool small, bool one_position) {
  for (qsizetype start = 0; start < text.size();) {
    if (!open_) {
      open_ = std::make_shared<ShapedText>();
      open_text_.clear();
    }
    const QStringView rest = QStringView(text).mid(start);
    qsizetype part = one_position ? rest.size() : PartOf(rest, open_text_.size());
    // Each word by itself, to be set apart from the others.
    const bool words = format_.alignment == Alignment::kDistributed && !one_position;
    const qsizetype blank = words ? rest.indexOf(QLatin1Char(' ')) : -1;
    if (blank >= 0) part = std::min(part, blank + 1);
    open_->fragments.push_back({int(open_text_.size()), int(part),
                                one_position ? position : position + int(start), small,
                                one_position, &format});
    open_text_ += rest.first(part);
    start += part;
    if (blank >= 0 || LongEnough()) CloseText();
  }
}

bool ItemCollector::LongEnough() const {
  const qsizetype size = open_text_.size();
  const std::size_t formats = open_->fragments.size();
  if (size >= kLongSolidText && open_text_.indexOf(QLatin1Char(' ')) < 0) return true;
  if (size < kLongText && formats < kManyFragments) return false;
  return open_text_.back() == QLatin1Char(' ') || size >= 2 * kLongText ||
         formats >= 2 * kManyFragments;
}

// Ends the open text and applies its fonts.
void ItemCollector::CloseText() {
  if (!open_) return;
  const bool shaped = format_.right_to_left || NeedsShaping(open_text_);
  const auto use = [&](const Fragment& fragment) -> const FontUse& {
    return context_.fonts->Use(*fragment.format, shaped, fragment.small);
  };
  const FontUse& first = use(open_->fragments.front());
  const bool one_format =
      first.plain &&
      std::all_of(open_->fragments.begin(), open_->fragments.end(),
                  [&](const Fragment& fragment) { return &use(fragment) == &first; });
  QTextLayout& layout = open_->layout;
  layout.setText(open_text_);
  layout.setFont(first.font);
  layout.setCacheEnabled(true);
  open_->colour = first.colour;
  if (!one_format) {
    QList<QTextLayout::FormatRange> ranges;
    for (const Fragment& fragment : open_->fragments) {
      ranges.push_back({fragment.start, fragment.length, use(fragment).format});
    }
    layout.setFormats(ranges);
  }
  QTextOption option(Qt::AlignJustify);
  if (format_.alignment != Alignment::kJustified)
    option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
  option.setTextDirection(format_.right_to_left ? Qt::RightToLeft : Qt::LeftToRight);
  option.setUseDesignMetrics(true);
  layout.setTextOption(option);
  items_.emplace_back(TextItem{std::move(open_)});
  open_.reset();
}

}  // namespace

std::vector<ParagraphItem> CollectItems(LayoutContext& context,
                                        const richtext::Paragraph& paragraph,
                                        const ItemPlace& place) {
  return ItemCollector(context, paragraph, place).Collect();
}

}  // namespace tenora::printing
