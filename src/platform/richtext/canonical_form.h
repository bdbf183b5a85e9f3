// Puts a document that was edited into canonical form.
#pragma once

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The document as writing and reading it back would leave it: runs of equal format joined, no marks
// inside merge codes, only fonts and colours in use in the tables. Tables that the document shares
// with others are copied, not changed.
Document InCanonicalForm(Document document);

}  // namespace tenora::richtext
