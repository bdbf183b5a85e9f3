// The head of a letter while it is read: its tables and settings.
#pragma once

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/read/list_table.h"
#include "platform/richtext/read/page_words.h"
#include "platform/richtext/read/reader_group.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class DocumentHead {
 public:
  DocumentHead() : fonts_(&code_pages_) {}

  FontTable& fonts() { return fonts_; }
  ColourTable& colours() { return colours_; }
  ListTable& lists() { return lists_; }
  PageWords& page() { return page_; }
  CodePages& code_pages() { return code_pages_; }
  const CodePage& DocumentPage() { return code_pages_.Get(fonts_.document_code_page()); }

  // The first word of a group in a table. True when the word is used up; otherwise it is a Word of
  // the table too.
  bool OpenGroup(const Token& word, ReaderGroup* group);
  // The group of a table has closed.
  void EndGroup(const ReaderGroup& group);
  // A word in the group of a table.
  void Word(Destination destination, const Token& word);
  // The word with the number of a list mark's font or colour as a position in the document's.
  Token WithPosition(Token word);
  // Code page, default font and default language; false for other words.
  bool Setting(const Token& word);
  // Moves everything into the document.
  void Take(Document* document);

 private:
  bool OpenInLists(const Token& word, ReaderGroup* group);

  CodePages code_pages_;
  FontTable fonts_;
  ColourTable colours_;
  ListTable lists_;
  PageWords page_;
  int default_language_ = 0;
};

}  // namespace tenora::richtext
