// The footnotes and endnotes of a letter in the order of their numbers.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

class NoteList {
 public:
  using Note = const std::vector<Block>*;

  // A mark for which the letter has no place.
  struct AddedMark {
    std::string text;
    CharFormat format;
  };

  // `page` says how notes are numbered.
  explicit NoteList(const PageSetup& page);

  // Goes on with the notes of a text, those in its tables and text boxes included. The objects in
  // the text outlive this.
  void Add(std::span<const Block> blocks);

  const std::vector<Note>& footnotes() const { return footnotes_; }
  const std::vector<Note>& endnotes() const { return endnotes_; }
  // What stands for an automatic mark (IsNoteMark), in a text or in a note; empty where the mark
  // belongs to no note.
  std::string_view MarkOf(const Run& run) const;
  // A note that has neither an automatic mark nor one of the author's gets a number all the same:
  // in place of its run, and ahead of its first paragraph. Null for other runs and paragraphs.
  const AddedMark* AddedFor(const Run& run) const;
  const AddedMark* AddedAhead(const Paragraph& paragraph) const;

 private:
  struct Numbers {
    Bullet::Kind style = Bullet::Kind::kDecimal;
    int next = 1;
    int start = 1;  // of the first, and of each section's where they restart
    bool restarts = false;
  };

  static Numbers NumbersOf(const PageSetup& page, const std::string& kind);

  void Add(const Paragraph& paragraph);
  void AddNote(const Run& run, Note note, const Run* before, std::vector<const Verbatim*>* waiting);

  Numbers foot_, end_;
  std::vector<Note> footnotes_, endnotes_;
  std::unordered_map<const Verbatim*, std::string> marks_;
  std::unordered_map<const Verbatim*, AddedMark> added_;
  std::unordered_map<const Paragraph*, AddedMark> added_ahead_;
};

}  // namespace tenora::richtext
