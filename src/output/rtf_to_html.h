// Turns the rich text of a letter into an HTML fragment for the body of an e-mail.
//
// It understands what the letter editor writes (bold, italic, underline, strike, super- and
// subscript, colour, font face and size, bullets, centred and right-aligned paragraphs, breaks,
// tabs, character escapes) and silently drops everything else. Any input gives an answer, in time
// and memory proportional to its size, and the tags written always nest.
#pragma once

#include <string>
#include <string_view>

namespace tenora {

// `rtf` is a whole RTF document; bytes beyond ASCII are taken as UTF-8, or as Windows-1252 where
// they are no valid UTF-8. The answer is UTF-8. Raises no errors. `options` is searched for these
// switches, letter case counting:
//   +CR   ends every break with "\r\n", for readable HTML
//   +F=3  the reader's default font size; a font tag never carries this size
//   -FF   no font faces
//   +I    accepted, without effect
//   +U    Unicode escapes are written as character references, their fallback is left out
//   +E    "<", ">" and "&" of the text are written as entities
// Without +E the text's own angle brackets are written unchanged: untrusted text needs +E.
std::string RtfToHtml(std::string_view rtf, std::string_view options);

}  // namespace tenora
