// The main window's print command, without the window.
#pragma once

#include <functional>

#include "letters/frm_letter.h"
#include "rental/session.h"

namespace tenora {

// Prints the letter in front through `print`, which prints what it is given (chooser, job and its
// end) and says whether it did. A template with unfilled codes is refused with a message; of a
// cheque template the user is asked whether to print a sample, which is made from a copy: the open
// template keeps its codes. False when nothing was printed.
bool PrintFromWindow(Session& session, frmLetter& letter,
                     const std::function<bool(frmLetter& printed)>& print);

}  // namespace tenora
