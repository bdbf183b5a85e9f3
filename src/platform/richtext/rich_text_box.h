// The control that letters live in, without a window. Its rich text is RTF source in one canonical
// form, the plain form that the classic control writes: one font table, one colour table,
// paragraphs, runs of equal format joined. docs/rich-text.md describes it.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/rich_text_view.h"

namespace tenora {

class RichTextBox {
 public:
  enum class FileType { kRtf, kText };
  enum FindOption { kNoOptions = 0, kWholeWord = 2, kMatchCase = 4, kNoHighlight = 8 };

  RichTextBox();
  ~RichTextBox();
  RichTextBox(RichTextBox&&) noexcept;

  // The RTF source: ASCII, characters beyond it as "\'xx" where the code page has them, else as
  // Unicode escapes with their fallback.
  const std::string& TextRTF() const;
  // Takes RTF source unchanged and parses nothing yet: merges rewrite the source many times, the
  // document is parsed once when it is needed. Characters beyond ASCII (UTF-8) are escaped.
  void SetTextRTF(std::string source);
  // A text as it would appear in this document's source: only characters beyond ASCII are escaped,
  // so a backslash or brace keeps its RTF meaning.
  std::string SourceForm(std::string_view text) const;
  // The text that a piece of this document's source shows: "Gr\'f6\'dfe" is "Größe".
  std::string ShownForm(std::string_view source) const;

  // The parsed document; lives until the next change.
  const richtext::Document& Document() const;
  // Plain text in UTF-8, paragraphs ended by "\r\n", tables as tabs and line ends.
  std::string Text() const;
  void SetText(std::string_view text);

  // Positions and lengths count UTF-16 units of the text with "\r\n" counted as one.
  int SelStart() const;
  int SelLength() const;
  void Select(int start, int length);
  std::string SelText() const;
  // Replaces the selection by plain text in the format at its start; the caret ends up after it.
  void SetSelText(std::string_view text);
  // Replaces the selection by the first object of a piece of RTF: a picture, or an embedded object.
  // Raises 321 (Invalid file format) when the piece contains none.
  void InsertObject(std::string_view rtf_group);
  // Changes the page margins that the letter itself names, twips, 0 for none; those beyond 22
  // inches are cut. Sections that had the first one's margin go with it. The selection stays.
  void SetMargins(int left, int top, int right, int bottom);
  // Replaces every occurrence that Find finds, as one change, and gives their number. What is put
  // in is not searched again; an occurrence that touches one of the ranges to skip (from, to)
  // stays. Selection start and length keep their values.
  int ReplaceEvery(std::string_view text, std::string_view with, int options = kNoOptions,
                   const std::vector<std::pair<int, int>>& skip = {});
  // Position of the first occurrence between start and end (-1: the end of the text), or -1.
  // Selects it unless kNoHighlight is given. Letter case is ignored unless kMatchCase is given.
  int Find(std::string_view text, int start, int end = -1, int options = kNoOptions);

  // Brings the file into canonical form. A file that is not RTF raises 321 (Invalid file format),
  // one that cannot be read 53, 70 or 75, each with the path in the description; the box then keeps
  // what it held.
  void LoadFile(const std::filesystem::path& path, FileType type = FileType::kRtf);
  // Whole or not at all; raises the errors of WriteWholeFile.
  void SaveFile(const std::filesystem::path& path, FileType type = FileType::kRtf) const;

  // Called after every change of the content.
  void OnChange(std::function<void()> listener);

  // Attaches an editor, which first takes the box's letter; null detaches it, the box keeps what
  // was typed. The editor outlives its attachment.
  void AttachView(RichTextView* view);
  // Called by the attached editor after the user has changed the letter.
  void ViewEdited();
  // Called by the attached editor once it shows the box's letter and selection.
  void ViewShown();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tenora
