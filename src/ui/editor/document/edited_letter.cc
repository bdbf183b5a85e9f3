#include "ui/editor/document/edited_letter.h"

#include <QApplication>
#include <QStatusTipEvent>
#include <QTextBlock>
#include <QTextCursor>
#include <algorithm>
#include <utility>

#include "platform/richtext/editing.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/document/letter_reader.h"
#include "ui/editor/document/letter_update.h"
#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"
#include "ui/editor/text/typing_format.h"

namespace tenora {

namespace {

// Whether two heads are the same but for their tables, to which edits add.
bool SameHead(const richtext::Document& left, const richtext::Document& right) {
  return left.page == right.page && left.default_tab == right.default_tab &&
         left.title == right.title && left.info == right.info &&
         std::ranges::equal(left.head_groups, right.head_groups, {}, &richtext::HeadGroup::source,
                            &richtext::HeadGroup::source);
}

}  // namespace

EditedLetter::EditedLetter(RichTextBox& box, QTextEdit& control) : box_(box), control_(control) {
  connect(control.document(), &QTextDocument::contentsChange, this, &EditedLetter::ContentsChanged);
  connect(control.document(), &QTextDocument::modificationChanged, this, [this](bool modified) {
    if (!modified && editing_ && !pending_) emit SavedAgain();
  });
  box_.AttachView(this);
}

EditedLetter::~EditedLetter() { box_.AttachView(nullptr); }

void EditedLetter::BoxChanged(Change change) {
  const bool waiting = pending_.has_value();
  pending_is_saved_ = false;
  if (pending_ != Change::kNewLetter) pending_ = change;
  if (!waiting) QMetaObject::invokeMethod(this, &EditedLetter::ShowBox, Qt::QueuedConnection);
}

void EditedLetter::ShowBox() {
  if (!pending_) return;
  const Change change = *std::exchange(pending_, std::nullopt);
  const int start = box_.SelStart(), length = box_.SelLength();
  WithoutEdit([&] {
    if (change == Change::kNewLetter)
      Load(box_.Document());
    else
      Update(box_.Document());
    if (std::exchange(pending_is_saved_, false)) control_.document()->setModified(false);
  });
  reading_.reset();
  box_.ViewShown();
  Select({start, length});
}

void EditedLetter::Load(richtext::Document letter) {
  const std::vector<richtext::Block> blocks = std::exchange(letter.blocks, {});
  formats_.SetHead(std::move(letter));
  QTextDocument* const document = control_.document();
  document->clear();
  document->setIndentWidth(PixelsOfTwips(1));
  emit Cleared();
  document->setUndoRedoEnabled(false);
  QTextCursor cursor(document);
  cursor.beginEditBlock();
  LetterLoader(formats_).Insert(&cursor, blocks, true);
  cursor.endEditBlock();
  document->setUndoRedoEnabled(true);
}

void EditedLetter::Update(richtext::Document letter) {
  formats_.Adopt(&letter);
  const std::vector<richtext::Block> wanted = std::exchange(letter.blocks, {});
  const std::vector<richtext::Block> shown = TakeBlocks();
  const PositionMap positions = std::move(reading_->positions);
  const bool same_head = SameHead(formats_.head(), letter);
  formats_.SetHead(std::move(letter));
  UpdateLetter(control_.document(), &formats_, shown, positions, wanted);
  // Undo brings back the text only.
  if (!same_head) control_.document()->setModified(true);
}

EditedLetter::Reading& EditedLetter::Read() {
  LetterReader reader(formats_);
  reading_.emplace();
  reading_->blocks = reader.Read(*control_.document());
  reading_->positions = reader.positions();
  reading_->has_blocks = true;
  return *reading_;
}

const PositionMap& EditedLetter::Positions() { return (reading_ ? *reading_ : Read()).positions; }

// The positions stay: the box asks for the selection again and again, for the blocks once.
std::vector<richtext::Block> EditedLetter::TakeBlocks() {
  if (!reading_ || !reading_->has_blocks) Read();
  reading_->has_blocks = false;
  return std::move(reading_->blocks);
}

richtext::Document EditedLetter::Content() {
  std::vector<richtext::Block> blocks = TakeBlocks();
  richtext::Document letter = formats_.head();
  letter.blocks = std::move(blocks);
  return letter;
}

RichTextView::Range EditedLetter::Selection() {
  const QTextCursor cursor = control_.textCursor();
  const PositionMap& positions = Positions();
  const int start = positions.ToBox(cursor.selectionStart());
  return {start, positions.ToBox(cursor.selectionEnd()) - start};
}

void EditedLetter::Select(Range range) {
  const PositionMap& positions = Positions();
  const int last = control_.document()->characterCount() - 1;
  QTextCursor cursor = control_.textCursor();
  const int from = std::clamp(positions.ToQt(std::max(range.start, 0)), 0, last);
  cursor.setPosition(from);
  if (range.length > 0)
    cursor.setPosition(std::clamp(positions.ToQt(range.start + range.length), from, last),
                       QTextCursor::KeepAnchor);
  control_.setTextCursor(cursor);
}

void EditedLetter::ReplaceSelection(std::string_view utf8) {
  ShowBox();
  const QTextCursor cursor = control_.textCursor();
  if (!MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  SetTypingFormat(&control_, formats_);
  const QTextCharFormat model = FormatAtCaret(control_);
  const richtext::CharFormat format = formats_.CharOf(model);
  const auto field = SharedProperty<richtext::Field>(model, kFieldProperty);
  richtext::Document text = richtext::DocumentOfText(utf8);
  for (richtext::Block& block : text.blocks) {
    auto& paragraph = std::get<richtext::Paragraph>(block);
    paragraph.format = formats_.ParagraphOf(cursor.blockFormat());
    paragraph.mark = format;
    for (richtext::Run& run : paragraph.runs) {
      run.format = format;
      run.field = field;
    }
  }
  InsertBlocks(text.blocks);
}

void EditedLetter::InsertBlocks(const std::vector<richtext::Block>& blocks) {
  ShowBox();
  QTextCursor cursor = control_.textCursor();
  if (!MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  const bool only_text = blocks.size() == 1 && blocks.front().index() == 0;
  LetterLoader(formats_).Insert(&cursor, blocks, !only_text && cursor.block().length() == 1);
  cursor.endEditBlock();
  control_.setTextCursor(cursor);
}

bool EditedLetter::MayChange(int start, int end) {
  const bool refused = TouchesProtected(*control_.document(), start, end);
  if (refused || told_refusal_) {
    QStatusTipEvent tip(refused ? tr("This text is protected and cannot be changed.") : QString());
    QApplication::sendEvent(&control_, &tip);
  }
  told_refusal_ = refused;
  return !refused;
}

void EditedLetter::WithoutEdit(const std::function<void()>& change) {
  const bool was_editing = std::exchange(editing_, false);
  change();
  editing_ = was_editing;
}

void EditedLetter::MarkSaved() {
  pending_is_saved_ = pending_.has_value();
  if (!pending_is_saved_) WithoutEdit([&] { control_.document()->setModified(false); });
}

void EditedLetter::MarkUnsaved() {
  pending_is_saved_ = false;
  // Qt forgets the saved state only where the document is in it.
  WithoutEdit([&] {
    control_.document()->setModified(false);
    control_.document()->setModified(true);
  });
}

void EditedLetter::ContentsChanged() {
  reading_.reset();
  if (editing_) box_.ViewEdited();
}

}  // namespace tenora
