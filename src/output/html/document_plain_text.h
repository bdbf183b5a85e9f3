// A parsed letter as plain text, for readers without HTML.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora::html {

// UTF-8, lines ended by "\r\n" except the last: the first page's header, the text, its
// notes and the footer. Marks of notes are in brackets.
// Lists keep their marks, links are followed by their address, a table's cells stand in columns.
std::string DocumentPlainText(const richtext::Document& document);

}  // namespace tenora::html
