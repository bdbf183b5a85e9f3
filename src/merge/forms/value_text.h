// A fact as text in a letter.
#pragma once

#include <string>

#include "merge/fact.h"
#include "merge/form_names.h"
#include "rental/session.h"

namespace tenora {

// In the format, or as the merge codes print a value of its kind: amounts without a sign, long
// dates. A missing value prints nothing. An amount that cannot be said in words is printed in
// figures.
std::string ValueText(Session& session, const Fact& fact, ValueFormat format);

}  // namespace tenora
