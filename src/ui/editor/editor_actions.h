// The commands on the letter being written, as actions for menus and tool bars. They act on the
// current editor, are disabled without one, and show the state at its caret.
#pragma once

#include <QAction>
#include <QList>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <functional>

#include "ui/editor/letter_editor.h"

namespace tenora {

class EditorActions : public QObject {
  Q_OBJECT

 public:
  explicit EditorActions(QObject* parent = nullptr);

  // Null disables all actions; a read-only letter leaves those that only read it.
  void SetEditor(LetterEditor* editor);
  LetterEditor* Editor() const { return editor_; }

  // Undo, redo; cut, copy, paste, paste as plain text; select all. With separators between them.
  const QList<QAction*>& EditActions() const { return edit_; }
  // Bold to subscript, colours; alignment; bullets, numbers, indents, spacing, tab stops.
  const QList<QAction*>& FormatActions() const { return format_; }
  const QList<QAction*>& InsertActions() const { return insert_; }
  const QList<QAction*>& TableActions() const { return table_; }
  // Size and place of the selected picture.
  QAction* PictureAction() const { return picture_; }
  // Zoom and ruler.
  const QList<QAction*>& ViewActions() const { return view_; }
  // Font and size boxes; each parent gets its own.
  QWidget* FontBox(QWidget* parent);
  // What the font boxes list: the preselected ones first, then a separator and the others.
  void SetFonts(const QStringList& preselected, const QStringList& families);
  QWidget* SizeBox(QWidget* parent);

  QAction* ShowRuler() const { return show_ruler_; }

 signals:
  // The caret's format has changed.
  void StateChanged();
  void FontsChanged();

 private:
  QAction* Add(QList<QAction*>* group, const QString& text, const char* icon,
               const QKeySequence& shortcut, std::function<void(LetterEditor&)> run);
  // One that leaves the letter as it is.
  QAction* AddReading(QList<QAction*>* group, const QString& text, const char* icon,
                      const QKeySequence& shortcut, std::function<void(LetterEditor&)> run);
  QAction* AddToggle(QList<QAction*>* group, const QString& text, const char* icon,
                     const QKeySequence& shortcut, std::function<void(LetterEditor&, bool)> run,
                     std::function<bool(LetterEditor&)> state);
  void Separate(QList<QAction*>* group);
  void EnableWhere(QAction* action, std::function<bool(LetterEditor&)> holds);
  void AddColourMenu(const QString& text, const char* icon, const QString& none,
                     int richtext::CharFormat::*member);
  void AddLineSpacingMenu();
  void MakeEditActions();
  void MakeCharacterActions();
  void MakeParagraphActions();
  void MakeInsertActions();
  void MakeTableActions();
  void MakeViewActions();
  void ShowMenu(const QPoint& on_screen);
  void Refresh();
  bool MayWrite() const;

  QPointer<LetterEditor> editor_;
  QList<QMetaObject::Connection> connections_;
  QList<QAction*> edit_, format_, insert_, table_, view_;
  QSet<QAction*> reading_;
  QList<QPair<QAction*, std::function<bool(LetterEditor&)>>> states_, enabled_;
  QStringList preselected_fonts_, fonts_;
  QAction* picture_ = nullptr;
  QAction* show_ruler_ = nullptr;
};

}  // namespace tenora
