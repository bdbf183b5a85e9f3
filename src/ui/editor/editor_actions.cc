#include "ui/editor/editor_actions.h"

#include <QApplication>
#include <QClipboard>
#include <QIcon>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QPixmap>
#include <QTextDocument>
#include <algorithm>
#include <utility>

#include "ui/editor/colour_dialog.h"
#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/commands/font_boxes.h"

// The resources of a static library are linked only when they are referenced.
static void LinkEditorIcons() { Q_INIT_RESOURCE(editor); }

namespace tenora {
namespace {

using richtext::Alignment;
using richtext::Bullet;
using richtext::CharFormat;
using richtext::ParagraphFormat;
using richtext::Script;
using richtext::Underline;

constexpr int kIndentStep = 720;  // twips
constexpr int kListIndent = 360;
constexpr double kZoomStep = 1.25;

QIcon Icon(const QString& name) {
  return QIcon(QStringLiteral(":/editor/icons/") + name + QStringLiteral(".svg"));
}

auto Toggle(bool CharFormat::*member) {
  return [member](LetterEditor& editor, bool on) {
    editor.formatting().ChangeCharacters([=](CharFormat& format) { format.*member = on; });
  };
}

auto Has(bool CharFormat::*member) {
  return [member](LetterEditor& editor) { return editor.formatting().CharAtCaret().*member; };
}

void SetList(LetterEditor& editor, Bullet::Kind kind) {
  editor.formatting().ChangeParagraphs([=](ParagraphFormat& format) {
    const bool was_list = format.bullet.kind != Bullet::Kind::kNone;
    format.bullet = {};
    format.bullet.kind = kind;
    if (kind == Bullet::Kind::kNone) {
      format.left_indent = std::max(0, format.left_indent - kListIndent);
      format.first_indent = 0;
      return;
    }
    if (kind == Bullet::Kind::kBullet) format.bullet.before = "\u2022";
    if (kind == Bullet::Kind::kDecimal) format.bullet.after = ".";
    format.bullet.indent = kListIndent;
    if (!was_list) format.left_indent += kListIndent;
    format.first_indent = -kListIndent;
  });
}

bool IsList(LetterEditor& editor, bool bullets) {
  const Bullet::Kind kind = editor.formatting().ParagraphAtCaret().bullet.kind;
  return bullets ? kind == Bullet::Kind::kBullet
                 : kind != Bullet::Kind::kBullet && kind != Bullet::Kind::kNone;
}

void Indent(LetterEditor& editor, int by) {
  editor.formatting().ChangeParagraphs([=](ParagraphFormat& format) {
    format.left_indent = std::max(std::max(0, -format.first_indent), format.left_indent + by);
  });
}

QIcon Swatch(const QColor& colour) {
  QPixmap pixmap(16, 16);
  pixmap.fill(colour);
  return QIcon(pixmap);
}

}  // namespace

EditorActions::EditorActions(QObject* parent) : QObject(parent) {
  LinkEditorIcons();
  MakeEditActions();
  MakeCharacterActions();
  MakeParagraphActions();
  MakeInsertActions();
  MakeTableActions();
  MakeViewActions();
  connect(QApplication::clipboard(), &QClipboard::dataChanged, this, &EditorActions::Refresh);
  Refresh();
}

QAction* EditorActions::Add(QList<QAction*>* group, const QString& text, const char* icon,
                            const QKeySequence& shortcut, std::function<void(LetterEditor&)> run) {
  auto* action = new QAction(Icon(QString::fromLatin1(icon)), text, this);
  action->setShortcut(shortcut);
  connect(action, &QAction::triggered, this, [this, run = std::move(run)] {
    if (!editor_) return;
    if (run) run(*editor_);
    Refresh();
  });
  enabled_.append({action, [](LetterEditor&) { return true; }});
  group->append(action);
  return action;
}

QAction* EditorActions::AddReading(QList<QAction*>* group, const QString& text, const char* icon,
                                   const QKeySequence& shortcut,
                                   std::function<void(LetterEditor&)> run) {
  QAction* action = Add(group, text, icon, shortcut, std::move(run));
  reading_.insert(action);
  return action;
}

QAction* EditorActions::AddToggle(QList<QAction*>* group, const QString& text, const char* icon,
                                  const QKeySequence& shortcut,
                                  std::function<void(LetterEditor&, bool)> run,
                                  std::function<bool(LetterEditor&)> state) {
  QAction* action = Add(group, text, icon, shortcut, nullptr);
  action->setCheckable(true);
  connect(action, &QAction::triggered, this, [this, run = std::move(run)](bool on) {
    if (editor_) run(*editor_, on);
    Refresh();
  });
  states_.append({action, std::move(state)});
  return action;
}

void EditorActions::Separate(QList<QAction*>* group) {
  auto* separator = new QAction(this);
  separator->setSeparator(true);
  group->append(separator);
}

void EditorActions::EnableWhere(QAction* action, std::function<bool(LetterEditor&)> holds) {
  const auto entry = std::find_if(enabled_.begin(), enabled_.end(),
                                  [&](const auto& known) { return known.first == action; });
  entry->second = std::move(holds);
}

void EditorActions::MakeEditActions() {
  const auto selected = [](LetterEditor& editor) { return editor.textCursor().hasSelection(); };
  const auto pasteable = [](LetterEditor& editor) { return editor.canPaste(); };
  EnableWhere(Add(&edit_, tr("&Undo"), "undo", QKeySequence::Undo,
                  [](LetterEditor& editor) { editor.Undo(); }),
              [](LetterEditor& editor) { return editor.document()->isUndoAvailable(); });
  EnableWhere(Add(&edit_, tr("&Redo"), "redo", {}, [](LetterEditor& editor) { editor.Redo(); }),
              [](LetterEditor& editor) { return editor.document()->isRedoAvailable(); });
  // What users of either desktop expect. The standard key is one of the two; listed twice, a key is
  // ambiguous and does nothing.
  edit_.last()->setShortcuts(
      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
  Separate(&edit_);
  EnableWhere(
      Add(&edit_, tr("Cu&t"), "cut", QKeySequence::Cut, [](LetterEditor& editor) { editor.Cut(); }),
      selected);
  EnableWhere(AddReading(&edit_, tr("&Copy"), "copy", QKeySequence::Copy,
                         [](LetterEditor& editor) { editor.copy(); }),
              selected);
  EnableWhere(Add(&edit_, tr("&Paste"), "paste", QKeySequence::Paste,
                  [](LetterEditor& editor) { editor.paste(); }),
              pasteable);
  EnableWhere(Add(&edit_, tr("Paste &Without Formatting"), "paste-plain",
                  QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_V),
                  [](LetterEditor& editor) { editor.PastePlainText(); }),
              pasteable);
  Separate(&edit_);
  AddReading(&edit_, tr("Select &All"), "select-all", QKeySequence::SelectAll,
             [](LetterEditor& editor) { editor.selectAll(); });
}

void EditorActions::MakeCharacterActions() {
  AddToggle(&format_, tr("&Bold"), "bold", QKeySequence::Bold, Toggle(&CharFormat::bold),
            Has(&CharFormat::bold));
  AddToggle(&format_, tr("&Italic"), "italic", QKeySequence::Italic, Toggle(&CharFormat::italic),
            Has(&CharFormat::italic));
  AddToggle(
      &format_, tr("&Underline"), "underline", QKeySequence::Underline,
      [](LetterEditor& editor, bool on) {
        editor.formatting().ChangeCharacters([=](CharFormat& format) {
          format.underline = on ? Underline::kSingle : Underline::kNone;
        });
      },
      [](LetterEditor& editor) {
        return editor.formatting().CharAtCaret().underline != Underline::kNone;
      });
  AddToggle(&format_, tr("Stri&ke Through"), "strike",
            QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_X), Toggle(&CharFormat::strike),
            Has(&CharFormat::strike));
  const auto script = [this](const QString& text, const char* icon, const QKeySequence& shortcut,
                             Script wanted) {
    AddToggle(
        &format_, text, icon, shortcut,
        [wanted](LetterEditor& editor, bool on) {
          editor.formatting().ChangeCharacters(
              [=](CharFormat& format) { format.script = on ? wanted : Script::kNormal; });
        },
        [wanted](LetterEditor& editor) {
          return editor.formatting().CharAtCaret().script == wanted;
        });
  };
  script(tr("Su&perscript"), "superscript", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Period),
         Script::kSuper);
  script(tr("Subs&cript"), "subscript", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Comma),
         Script::kSub);
  AddToggle(
      &format_, tr("Protected from T&yping"), "protect", {},
      [](LetterEditor& editor, bool on) { editor.formatting().ProtectCharacters(on); },
      Has(&CharFormat::protect));
  Separate(&format_);
  AddColourMenu(tr("Te&xt Colour"), "text-colour", tr("&Automatic"), &CharFormat::colour);
  AddColourMenu(tr("&Highlight"), "highlight", tr("&None"), &CharFormat::highlight);
  Separate(&format_);
}

void EditorActions::AddColourMenu(const QString& text, const char* icon, const QString& none,
                                  int CharFormat::*member) {
  QAction* action = Add(&format_, text, icon, {}, nullptr);
  auto* menu = new QMenu;
  connect(this, &QObject::destroyed, menu, &QObject::deleteLater);
  const auto apply = [this, member](const QColor& colour) {
    if (!editor_) return;
    const int number = editor_->formats().ColourNumber(colour);
    editor_->formatting().ChangeCharacters([=](CharFormat& format) { format.*member = number; });
    Refresh();
  };
  connect(menu->addAction(none), &QAction::triggered, this, [apply] { apply(QColor()); });
  const QPair<QString, QColor> colours[] = {
      {tr("Black"), Qt::black},         {tr("Grey"), QColor(128, 128, 128)},
      {tr("Red"), QColor(192, 0, 0)},   {tr("Orange"), QColor(230, 120, 0)},
      {tr("Yellow"), Qt::yellow},       {tr("Green"), QColor(0, 128, 0)},
      {tr("Blue"), QColor(0, 64, 192)}, {tr("Purple"), QColor(112, 48, 160)}};
  for (const auto& [name, colour] : colours) {
    QAction* item = menu->addAction(Swatch(colour), name);
    connect(item, &QAction::triggered, this, [apply, chosen = colour] { apply(chosen); });
  }
  const QString title = QString(text).remove('&');
  connect(menu->addAction(tr("&More…")), &QAction::triggered, this, [this, apply, member, title] {
    if (!editor_) return;
    const QColor now = editor_->formats().ColourAt(editor_->formatting().CharAtCaret().*member);
    const QColor chosen = AskColour(editor_, now.isValid() ? now : QColor(Qt::black), title);
    if (chosen.isValid()) apply(chosen);
  });
  action->setMenu(menu);
}

void EditorActions::MakeParagraphActions() {
  const auto align = [this](const QString& text, const char* icon, const QKeySequence& shortcut,
                            Alignment wanted) {
    AddToggle(
        &format_, text, icon, shortcut,
        [wanted](LetterEditor& editor, bool) {
          editor.formatting().ChangeParagraphs(
              [=](ParagraphFormat& format) { format.alignment = wanted; });
        },
        [wanted](LetterEditor& editor) {
          return editor.formatting().ParagraphAtCaret().alignment == wanted;
        });
  };
  align(tr("Align &Left"), "align-left", QKeySequence(Qt::CTRL | Qt::Key_L), Alignment::kLeft);
  align(tr("C&entre"), "align-centre", QKeySequence(Qt::CTRL | Qt::Key_E), Alignment::kCentre);
  align(tr("Align &Right"), "align-right", QKeySequence(Qt::CTRL | Qt::Key_R), Alignment::kRight);
  align(tr("&Justify"), "align-justify", QKeySequence(Qt::CTRL | Qt::Key_J), Alignment::kJustified);
  Separate(&format_);
  AddToggle(
      &format_, tr("Bullet&s"), "bullets", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_8),
      [](LetterEditor& editor, bool on) {
        SetList(editor, on ? Bullet::Kind::kBullet : Bullet::Kind::kNone);
      },
      [](LetterEditor& editor) { return IsList(editor, true); });
  AddToggle(
      &format_, tr("&Numbering"), "numbering", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_7),
      [](LetterEditor& editor, bool on) {
        SetList(editor, on ? Bullet::Kind::kDecimal : Bullet::Kind::kNone);
      },
      [](LetterEditor& editor) { return IsList(editor, false); });
  Add(&format_, tr("In&dent Less"), "indent-less", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M),
      [](LetterEditor& editor) { Indent(editor, -kIndentStep); });
  Add(&format_, tr("Indent &More"), "indent-more", QKeySequence(Qt::CTRL | Qt::Key_M),
      [](LetterEditor& editor) { Indent(editor, kIndentStep); });
  Separate(&format_);
  AddLineSpacingMenu();
  Add(&format_, tr("P&aragraph Spacing…"), "paragraph-space", {}, [](LetterEditor& editor) {
    ParagraphFormat wanted = editor.formatting().ParagraphAtCaret();
    if (!AskSpacing(&editor, &wanted)) return;
    editor.formatting().ChangeParagraphs([&](ParagraphFormat& format) {
      format.space_before = wanted.space_before;
      format.space_after = wanted.space_after;
      format.automatic_before = wanted.automatic_before;
      format.automatic_after = wanted.automatic_after;
      format.line_spacing = wanted.line_spacing;
      format.line_spacing_multiple = wanted.line_spacing_multiple;
    });
  });
  Add(&format_, tr("Tab St&ops…"), "tab-stops", {}, [](LetterEditor& editor) {
    const auto tabs = AskTabStops(&editor, editor.formatting().ParagraphAtCaret().tabs);
    if (tabs)
      editor.formatting().ChangeParagraphs([&](ParagraphFormat& format) { format.tabs = *tabs; });
  });
}

void EditorActions::AddLineSpacingMenu() {
  QAction* action = Add(&format_, tr("Line Spacin&g"), "line-spacing", {}, nullptr);
  auto* menu = new QMenu;
  connect(this, &QObject::destroyed, menu, &QObject::deleteLater);
  for (const int percent : {100, 115, 150, 200}) {
    const QString text = percent == 100   ? tr("&Single")
                         : percent == 150 ? tr("1½ &Lines")
                         : percent == 200 ? tr("&Double")
                                          : QLocale().toString(percent / 100.0);
    connect(menu->addAction(text), &QAction::triggered, this, [this, percent] {
      if (!editor_) return;
      editor_->formatting().ChangeParagraphs([=](ParagraphFormat& format) {
        format.line_spacing = percent == 100 ? 0 : percent * 240 / 100;
        format.line_spacing_multiple = percent != 100;
      });
    });
  }
  action->setMenu(menu);
}

void EditorActions::MakeInsertActions() {
  QList<QAction*> picture;
  picture_ = Add(&picture, tr("Picture Si&ze and Place…"), "picture", {},
                 [](LetterEditor& editor) { editor.pictures().Ask(); });
  EnableWhere(picture_, [](LetterEditor& editor) { return editor.pictures().Selected() >= 0; });
  Add(&insert_, tr("T&able…"), "table", {}, [](LetterEditor& editor) {
    if (const auto size = AskTableSize(&editor))
      editor.tables().InsertTable(size->rows, size->columns, editor.paper().TableWidth());
  });
  Add(&insert_, tr("Page &Break"), "page-break", QKeySequence(Qt::CTRL | Qt::Key_Return),
      [](LetterEditor& editor) { editor.InsertPageBreak(); });
}

void EditorActions::MakeTableActions() {
  const auto add = [this](const QString& text, const char* icon,
                          std::function<void(LetterEditor&)> run) {
    EnableWhere(Add(&table_, text, icon, {}, std::move(run)),
                [](LetterEditor& editor) { return editor.tables().CaretInTable(); });
  };
  add(tr("Insert Row &Above"), "row-above",
      [](LetterEditor& editor) { editor.tables().InsertRow(Side::kBefore); });
  add(tr("Insert Row &Below"), "row-below",
      [](LetterEditor& editor) { editor.tables().InsertRow(Side::kAfter); });
  add(tr("Insert Column &Left"), "column-left",
      [](LetterEditor& editor) { editor.tables().InsertColumn(Side::kBefore); });
  add(tr("Insert Column R&ight"), "column-right",
      [](LetterEditor& editor) { editor.tables().InsertColumn(Side::kAfter); });
  Separate(&table_);
  EnableWhere(Add(&table_, tr("&Merge Selected Cells"), "cells-merge", {},
                  [](LetterEditor& editor) { editor.tables().MergeSelected(); }),
              [](LetterEditor& editor) { return editor.textCursor().hasComplexSelection(); });
  add(tr("Merge with &Next Cell"), "merge-across",
      [](LetterEditor& editor) { editor.tables().MergeAcross(); });
  add(tr("Merge with Cell &Underneath"), "merge-down",
      [](LetterEditor& editor) { editor.tables().MergeDown(); });
  add(tr("&Split Cell"), "cell-split", [](LetterEditor& editor) { editor.tables().SplitCell(); });
  Separate(&table_);
  add(tr("Remove &Rows"), "row-remove", [](LetterEditor& editor) { editor.tables().RemoveRows(); });
  add(tr("Remove &Columns"), "column-remove",
      [](LetterEditor& editor) { editor.tables().RemoveColumns(); });
}

void EditorActions::MakeViewActions() {
  AddReading(&view_, tr("Zoom &In"), "zoom-in", QKeySequence::ZoomIn, [](LetterEditor& editor) {
    editor.paper().SetZoom(editor.paper().Zoom() * kZoomStep);
  });
  AddReading(&view_, tr("Zoom &Out"), "zoom-out", QKeySequence::ZoomOut, [](LetterEditor& editor) {
    editor.paper().SetZoom(editor.paper().Zoom() / kZoomStep);
  });
  AddReading(&view_, tr("&Actual Size"), "zoom-reset", QKeySequence(Qt::CTRL | Qt::Key_0),
             [](LetterEditor& editor) { editor.paper().SetZoom(1); });
  Separate(&view_);
  show_ruler_ = new QAction(Icon(QStringLiteral("ruler")), tr("R&uler"), this);
  show_ruler_->setCheckable(true);
  show_ruler_->setChecked(true);
  view_.append(show_ruler_);
}

QWidget* EditorActions::FontBox(QWidget* parent) {
  auto* box = new FontNameBox(parent);
  const auto fill = [this, box] { box->SetFonts(preselected_fonts_, fonts_); };
  connect(this, &EditorActions::FontsChanged, box, fill);
  fill();
  connect(box, &FontNameBox::Chosen, this, [this](const QString& family) {
    if (!editor_ || family.isEmpty()) return Refresh();
    const int font = editor_->formats().FontNumber(family);
    editor_->formatting().ChangeCharacters([=](CharFormat& format) { format.font = font; });
    editor_->setFocus();
  });
  const auto refresh = [this, box] {
    box->setEnabled(MayWrite());
    if (!editor_ || box->hasFocus()) return;
    box->setEditText(editor_->formats().FontName(editor_->formatting().CharAtCaret().font));
  };
  connect(this, &EditorActions::StateChanged, box, refresh);
  refresh();
  return box;
}

void EditorActions::SetFonts(const QStringList& preselected, const QStringList& families) {
  preselected_fonts_ = preselected;
  fonts_ = families;
  emit FontsChanged();
}

QWidget* EditorActions::SizeBox(QWidget* parent) {
  auto* box = new FontSizeBox(parent);
  connect(box, &FontSizeBox::Chosen, this, [this](int half_points) {
    if (!editor_ || half_points == 0) return Refresh();
    editor_->formatting().ChangeCharacters(
        [=](CharFormat& format) { format.half_points = half_points; });
    editor_->setFocus();
  });
  const auto refresh = [this, box] {
    box->setEnabled(MayWrite());
    if (!editor_ || box->hasFocus()) return;
    box->ShowSize(editor_->formatting().CharAtCaret().half_points);
  };
  connect(this, &EditorActions::StateChanged, box, refresh);
  refresh();
  return box;
}

void EditorActions::SetEditor(LetterEditor* editor) {
  for (const QMetaObject::Connection& connection : std::as_const(connections_))
    disconnect(connection);
  connections_.clear();
  editor_ = editor;
  if (editor != nullptr) {
    connections_ = {
        connect(editor, &QTextEdit::cursorPositionChanged, this, &EditorActions::Refresh),
        connect(editor, &QTextEdit::selectionChanged, this, &EditorActions::Refresh),
        connect(editor, &QTextEdit::currentCharFormatChanged, this, &EditorActions::Refresh),
        connect(editor, &LetterEditor::MenuWanted, this, &EditorActions::ShowMenu),
        connect(editor->document(), &QTextDocument::undoAvailable, this, &EditorActions::Refresh),
        connect(editor->document(), &QTextDocument::redoAvailable, this, &EditorActions::Refresh),
        connect(editor, &QObject::destroyed, this, [this] {
          // Only its QObject is left.
          editor_.clear();
          Refresh();
        })};
  }
  Refresh();
}

void EditorActions::ShowMenu(const QPoint& on_screen) {
  QMenu menu(editor_);
  editor_->AddSpellingTo(menu);
  menu.addActions(edit_);
  if (editor_->pictures().Selected() >= 0) {
    menu.addSeparator();
    menu.addAction(picture_);
  }
  if (editor_->tables().CaretInTable()) {
    menu.addSeparator();
    menu.addActions(table_);
  }
  Refresh();
  menu.exec(on_screen);
}

bool EditorActions::MayWrite() const { return editor_ && !editor_->isReadOnly(); }

void EditorActions::Refresh() {
  // The pointer is null once the editor is being destroyed.
  LetterEditor* const editor = editor_.data();
  for (const auto& [action, holds] : std::as_const(enabled_))
    action->setEnabled(editor != nullptr && (MayWrite() || reading_.contains(action)) &&
                       holds(*editor));
  for (const auto& [action, state] : std::as_const(states_))
    action->setChecked(editor != nullptr && state(*editor));
  emit StateChanged();
}

}  // namespace tenora
