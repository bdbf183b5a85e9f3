// For whom an open letter is, where several recipients have its recipient's name, or where it was
// made for another one.
#pragma once

#include <string>

#include "letters/frm_letter.h"

namespace tenora {

// Where nothing says for which of several of one name a letter is, and where it was made for
// another one than its recipient, asks for that, with `use` as the end of the question ("E-mail it
// to"), and notes the answer in the letter. False when cancelled.
bool AskForRecipient(Session& session, frmLetter& letter, const std::string& use);

// For the status bar: which of several of one name a letter is for ("T00006, 12 High Street"), or
// that several have it and nothing says which; for whom it was made, where that is another one;
// empty for any other letter.
std::string WhichRecipient(const Session& session, const LetterMembers& letter);

}  // namespace tenora
