// Recipients as they are named on the command line.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "letters/recipients.h"

namespace tenora {

// A choice that cannot be carried out, described for the user.
class WrongChoice : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Nobody is to be written to.
class NothingSelected : public WrongChoice {
 public:
  using WrongChoice::WrongChoice;
};

// The row for each asked text: by its code, its whole text as --list prints it, or its name; letter
// case counts only where it makes the difference. A row named twice is
// chosen once. `closed_too` are the rows with closed recipients, for the hint that one of them was
// meant. Raises WrongChoice for a text that matches none or more than one, naming the nearest or
// all of them.
std::vector<Recipient> ChooseByNames(const std::vector<std::string>& asked,
                                     std::span<const RecipientRow> rows,
                                     std::span<const RecipientRow> closed_too);

}  // namespace tenora
