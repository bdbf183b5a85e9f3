// Turns the rich text of a letter into an HTML fragment for the body of an e-mail.
//
// Unless told otherwise it understands what the letter editor writes (bold, italic, underline,
// strike, super- and subscript, colour, font face and size, bullets, centred and right-aligned
// paragraphs, breaks, tabs, character escapes) and silently drops everything else. Any input gives
// an answer, in time and memory proportional to its size, and the tags written always nest.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora {

// The address under which a picture is shown, "cid:…" or "data:…"; empty for a picture that cannot
// be shown, which is named instead.
using PictureSource = std::function<std::string(const richtext::Picture&)>;

// `rtf` is a whole RTF document; bytes beyond ASCII are taken as UTF-8, or as Windows-1252 where
// they are no valid UTF-8. The answer is UTF-8. Raises no errors. `options` is searched for these
// switches, letter case counting:
//   +CR   ends every break with "\r\n", for readable HTML
//   +F=3  the reader's default font size; a font tag never carries this size
//   -FF   no font faces
//   +I    accepted, without effect
//   +U    Unicode escapes are written as character references, their fallback is left out
//   +E    "<", ">" and "&" of the text are written as entities
//   +D    the letter is parsed and converted as a document, as e-mails carry it: with its lists,
//         tables, links and pictures. +CR and -FF count then too, and +U writes all characters
//         beyond ASCII as references.
// Without +E or +D the text's own angle brackets are written unchanged: untrusted text needs one.
// Only +D shows pictures; without `pictures` none.
std::string RtfToHtml(std::string_view rtf, std::string_view options,
                      const PictureSource& pictures = {});

}  // namespace tenora
