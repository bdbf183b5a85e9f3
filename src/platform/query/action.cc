#include "platform/query/action.h"

#include "platform/query/expression_parser.h"
#include "platform/query/token_stream.h"

namespace tenora::query {
namespace {

class ActionParser : public SelectReader {
 public:
  ActionParser(std::string_view statement, const std::vector<Token>& tokens)
      : tokens_(statement, tokens), expressions_(tokens_, *this, depth_) {}

  Action Read() {
    if (tokens_.TakeWord("insert")) {
      ReadInsert();
    } else if (tokens_.TakeWord("update")) {
      ReadUpdate();
    } else {
      tokens_.ExpectWord("delete");
      ReadDelete();
    }
    tokens_.TakeSymbol(";");
    if (tokens_.Peek().kind != TokenKind::kEnd) tokens_.FailHere();
    return std::move(action_);
  }

  std::unique_ptr<Select> ReadSelect() override {
    tokens_.Fail(engine_error::kInvalidOperation,
                 "Invalid operation. A select within an insert, update or delete is not run.");
  }

 private:
  void ReadInsert() {
    action_.kind = ActionKind::kInsert;
    tokens_.ExpectWord("into");
    action_.table = expressions_.ReadName();
    if (tokens_.TakeSymbol("(")) {
      do AddColumn(expressions_.ReadName());
      while (tokens_.TakeSymbol(","));
      tokens_.ExpectSymbol(")");
    }
    if (tokens_.AtWord("select")) ReadSelect();
    tokens_.ExpectWord("values");
    tokens_.ExpectSymbol("(");
    do action_.values.push_back(expressions_.Read());
    while (tokens_.TakeSymbol(","));
    tokens_.ExpectSymbol(")");
    if (!action_.columns.empty() && action_.columns.size() != action_.values.size()) {
      tokens_.Fail(kDifferentCounts,
                   "Number of query values and destination fields are not the same.");
    }
  }

  void ReadUpdate() {
    action_.kind = ActionKind::kUpdate;
    action_.table = expressions_.ReadName();
    tokens_.ExpectWord("set");
    do {
      std::string column = expressions_.ReadName();
      if (tokens_.TakeSymbol(".")) column = expressions_.ReadName();
      AddColumn(std::move(column));
      tokens_.ExpectSymbol("=");
      action_.values.push_back(expressions_.Read());
    } while (tokens_.TakeSymbol(","));
    ReadWhere();
  }

  void ReadDelete() {
    action_.kind = ActionKind::kDelete;
    std::string all_of;  // "delete t.* from t"
    if (!tokens_.TakeSymbol("*") && !tokens_.AtWord("from")) {
      all_of = expressions_.ReadName();
      tokens_.ExpectSymbol(".");
      tokens_.ExpectSymbol("*");
    }
    tokens_.ExpectWord("from");
    action_.table = expressions_.ReadName();
    if (!all_of.empty() && !EqualsNoCase(all_of, action_.table)) tokens_.FailHere();
    ReadWhere();
  }

  void AddColumn(std::string name) {
    for (const std::string& column : action_.columns) {
      if (!EqualsNoCase(column, name)) continue;
      tokens_.Fail(kDuplicateDestination, "Duplicate output destination '" + name + "'.");
    }
    action_.columns.push_back(std::move(name));
  }

  void ReadWhere() {
    if (tokens_.TakeWord("where")) action_.where = expressions_.Read();
  }

  static constexpr int kDifferentCounts = 3346, kDuplicateDestination = 3063;

  TokenStream tokens_;
  int depth_ = 0;
  ExpressionParser expressions_;
  Action action_;
};

}  // namespace

Action ParseAction(std::string_view statement, const std::vector<Token>& tokens) {
  return ActionParser(statement, tokens).Read();
}

bool ReadPlainTests(const Expression& condition, std::string_view table,
                    std::vector<PlainTest>& tests) {
  if (condition.kind == ExpressionKind::kAnd) {
    for (const ExpressionPtr& part : condition.arguments) {
      if (!ReadPlainTests(*part, table, tests)) return false;
    }
    return true;
  }
  if (condition.kind != ExpressionKind::kCompare || condition.operation != "=") return false;
  const Expression& column = *condition.arguments.at(0);
  const Expression& literal = *condition.arguments.at(1);
  if (column.kind != ExpressionKind::kColumn || literal.kind != ExpressionKind::kLiteral) {
    return false;
  }
  if (!column.qualifier.empty() && !EqualsNoCase(column.qualifier, table)) return false;
  tests.push_back({column.name, literal.token});
  return true;
}

}  // namespace tenora::query
