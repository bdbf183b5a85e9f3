#include "output/spelling_choice.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail\\Spelling";

}  // namespace

spelling::Options SpellingOptions(Session& session) {
  spelling::Options options;
  options.language = ChosenLanguage(session.settings);
  options.user_words =
      session.platform.registry.FileOf(registry::Hive::kCurrentUser).parent_path() / "words.txt";
  return options;
}

std::string ChosenLanguage(Settings& settings) {
  return settings.GetSettingText(kSection, "Language", "");
}

void ChooseLanguage(Settings& settings, const std::string& language) {
  settings.SaveSettingText(kSection, "Language", language);
}

bool UnderlinesMisspelt(Settings& settings) {
  return settings.GetSettingText(kSection, "Underline", "1") != "0";
}

void UnderlineMisspelt(Settings& settings, bool underline) {
  settings.SaveSettingText(kSection, "Underline", underline ? "1" : "0");
}

}  // namespace tenora
