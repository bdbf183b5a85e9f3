// The spelling settings.
#pragma once

#include <string>

#include "platform/spelling/spelling.h"
#include "rental/session.h"

namespace tenora {

// The user's language, else the locale's; the user dictionary is next to the user's settings.
spelling::Options SpellingOptions(Session& session);

// Empty: as the locale says.
std::string ChosenLanguage(Settings& settings);
void ChooseLanguage(Settings& settings, const std::string& language);

// Whether misspelt words are underlined while a letter is written.
bool UnderlinesMisspelt(Settings& settings);
void UnderlineMisspelt(Settings& settings, bool underline);

}  // namespace tenora
