// The from clause; the rest of selects is in select_translator.cc.

#include "platform/query/select_translator.h"

namespace tenora::query {

std::string SelectTranslator::TranslateSources(const Source& source, Scope& scope) {
  if (source.left != nullptr) return TranslateJoin(source, scope);
  return source.select != nullptr ? TranslateDerived(source, scope) : TranslateTable(source, scope);
}

std::string SelectTranslator::TranslateJoin(const Source& join, Scope& scope) {
  const std::string left = TranslateSources(*join.left, scope);
  const std::string right = TranslateSources(*join.right, scope);
  // A chain of joins on the left needs no brackets of its own.
  const bool left_is_join = join.left->left != nullptr;
  const bool right_is_join = join.right->left != nullptr;
  if (join.join == JoinKind::kCross)
    return left + " join " + (right_is_join ? "(" + right + ")" : right);
  ExpressionTranslator expressions(state_, *this, scope, Place::kRow);
  const std::string on = " on " + expressions.TranslateCondition(*join.on).sql;
  if (join.join == JoinKind::kRight)
    return right + " left join " + (left_is_join ? "(" + left + ")" : left) + on;
  return left + (join.join == JoinKind::kLeft ? " left join " : " join ") +
         (right_is_join ? "(" + right + ")" : right) + on;
}

std::string SelectTranslator::TranslateTable(const Source& source, Scope& scope) {
  const Catalogue::Entry entry = state_.catalogue.FindTable(source.table);
  if (entry.table == nullptr)
    state_.Fail(engine_error::kNoSuchTable,
                "The database engine cannot find the input table or query '" + source.table +
                    "'. Make sure it exists and that its name is spelled "
                    "correctly.");
  const std::string alias = "s" + std::to_string(state_.next_source++);
  ScopeSource added{.name = source.alias.empty() ? entry.table->name() : source.alias};
  for (std::size_t i = 0; i < entry.table->columns().size(); ++i) {
    const MirrorColumn& column = entry.table->columns()[i];
    added.columns.push_back(
        {.name = column.name(), .type = column.type(), .sql = alias + ".c" + std::to_string(i)});
  }
  added.row_number = {
      .name = std::string(kRowNumberName), .type = Type::kInteger, .sql = alias + ".rowid"};
  if (scope.FindSource(added.name) != nullptr)
    state_.Fail(engine_error::kSyntax,
                "The table name '" + added.name + "' stands twice in the FROM clause.");
  scope.Add(std::move(added));
  return "t" + std::to_string(entry.number) + " as " + alias;
}

std::string SelectTranslator::TranslateDerived(const Source& source, Scope& scope) {
  // A select in the from clause sees nothing of the one it stands in.
  const Result result = Translate(*source.select, nullptr);
  const std::string alias = "s" + std::to_string(state_.next_source++);
  ScopeSource added{.name = source.alias};
  for (std::size_t i = 0; i < result.columns.size(); ++i)
    added.columns.push_back({.name = result.columns[i].name,
                             .type = result.columns[i].type,
                             .sql = alias + ".r" + std::to_string(i)});
  scope.Add(std::move(added));
  return "(" + result.sql + ") as " + alias;
}

}  // namespace tenora::query
