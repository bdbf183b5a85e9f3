#include "platform/query/translate/translator.h"

#include "platform/query/translate/select_translator.h"

namespace tenora::query {

Plan Translate(const Select& select, std::string_view statement, Catalogue& catalogue) {
  TranslationState state{.statement = statement, .catalogue = catalogue};
  SelectTranslator translator(state);
  SelectTranslator::Result result = translator.TranslateStatement(select);
  RequireKnownNames(state, 0);
  return {.sql = std::move(result.sql),
          .columns = std::move(result.columns),
          .parameters = std::move(state.parameters),
          .top = std::move(result.top)};
}

}  // namespace tenora::query
