#include "platform/query/sql/parser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "platform/query/sql/expression_parser.h"
#include "platform/query/sql/lexer.h"

namespace tenora::query {
namespace {

// Statements that the engine knows but that return no rows.
constexpr std::array<std::string_view, 8> kActions = {"insert", "update", "delete", "create",
                                                      "drop",   "alter",  "grant",  "revoke"};

struct Refusal {
  std::string_view word;
  std::string_view reason;
};

// Other statements of the engine, and clauses at the end of a select, that are refused by name.
constexpr std::array<Refusal, 4> kRefusedStatements = {
    {{"parameters", "a PARAMETERS clause is not supported: write the values into the statement."},
     {"transform", "a crosstab (TRANSFORM … PIVOT) is not supported: group by both fields."},
     {"execute", "EXECUTE is not supported: run the query's own statement."},
     {"procedure", "PROCEDURE is not supported: run the query's own statement."}}};
constexpr std::array<Refusal, 4> kRefusedClauses = {
    {{"into", "SELECT … INTO, which makes a table, is not supported."},
     {"in", "IN with the name of another database is not supported: open that database."},
     {"with", "WITH OWNERACCESS OPTION is not supported: leave it out."},
     {"pivot", "a crosstab (TRANSFORM … PIVOT) is not supported: group by both fields."}}};

constexpr std::int64_t kMostTopRows = std::numeric_limits<std::int32_t>::max();

class SelectParser : public SelectReader {
 public:
  explicit SelectParser(TokenStream& tokens)
      : tokens_(tokens), expressions_(tokens_, *this, depth_) {}

  ExpressionParser& expressions() { return expressions_; }

  std::unique_ptr<Select> ReadStatement() {
    std::unique_ptr<Select> select = IsTableName() ? ReadTableName() : ReadWholeSelect();
    ReadEnd();
    return select;
  }

  void ReadEnd() {
    RefuseWord(kRefusedClauses);
    tokens_.TakeSymbol(";");
    if (tokens_.Peek().kind != TokenKind::kEnd) tokens_.FailHere();
  }

  ExpressionPtr ReadExpression() {
    ExpressionPtr expression = expressions_.Read();
    if (tokens_.Peek().kind != TokenKind::kEnd) tokens_.FailHere();
    return expression;
  }

  std::unique_ptr<Select> ReadSelect() override {
    const NestingGuard guard(tokens_, depth_);
    std::unique_ptr<Select> select = ReadOne();
    while (tokens_.TakeWord("union")) {
      const bool all = tokens_.TakeWord("all");
      const bool bracketed = tokens_.TakeSymbol("(");
      select->unions.push_back({.all = all, .select = ReadOne()});
      if (bracketed) tokens_.ExpectSymbol(")");
    }
    if (tokens_.TakeWord("order")) ReadOrder(*select);
    return select;
  }

  // What follows "from", or "update".
  std::unique_ptr<Source> ReadSources() {
    std::unique_ptr<Source> sources = ReadJoins();
    for (int length = 0; tokens_.TakeSymbol(","); ++length) {
      CheckLength(length);
      sources = Join(JoinKind::kCross, std::move(sources), ReadJoins());
    }
    return sources;
  }

 private:
  void RefuseWord(const std::array<Refusal, 4>& refusals) const {
    for (const Refusal& refusal : refusals)
      if (tokens_.AtWord(refusal.word))
        tokens_.Fail(engine_error::kNotASelect,
                     "Invalid SQL statement; " + std::string(refusal.reason));
  }

  bool IsTableName() const {
    const TokenKind kind = tokens_.Peek().kind;
    return tokens_.Peek(1).kind == TokenKind::kEnd && !tokens_.AtWord("select") &&
           (kind == TokenKind::kName || kind == TokenKind::kBracketedName);
  }

  std::unique_ptr<Select> ReadTableName() {
    auto select = std::make_unique<Select>();
    select->items.emplace_back();
    select->from = std::make_unique<Source>();
    select->from->table = tokens_.Take().name;
    return select;
  }

  std::unique_ptr<Select> ReadWholeSelect() {
    if (tokens_.AtWord("select")) return ReadSelect();
    for (const std::string_view action : kActions)
      if (tokens_.AtWord(action))
        tokens_.Fail(engine_error::kInvalidOperation, "Invalid operation.");
    RefuseWord(kRefusedStatements);
    tokens_.Fail(engine_error::kNotASelect,
                 "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or "
                 "'UPDATE'.");
  }

  std::unique_ptr<Select> ReadOne() {
    tokens_.ExpectWord("select");
    auto select = std::make_unique<Select>();
    ReadPredicates(*select);
    do select->items.push_back(ReadItem());
    while (tokens_.TakeSymbol(","));
    RefuseWord(kRefusedClauses);
    if (tokens_.TakeWord("from")) select->from = ReadSources();
    RefuseWord(kRefusedClauses);
    if (tokens_.TakeWord("where")) select->where = expressions_.Read();
    if (tokens_.TakeWord("group")) {
      tokens_.ExpectWord("by");
      do select->group.push_back(expressions_.Read());
      while (tokens_.TakeSymbol(","));
    }
    if (tokens_.TakeWord("having")) select->having = expressions_.Read();
    return select;
  }

  // all, distinct, distinctrow and top, in any order.
  void ReadPredicates(Select& select) {
    for (;;) {
      if (tokens_.TakeWord("distinct")) {
        select.distinct = true;
      } else if (AtTop()) {
        tokens_.Take();
        const Token& count = tokens_.Take();
        select.top = Top{.count = std::min(std::get<std::int64_t>(count.value), kMostTopRows)};
        select.top->percent = tokens_.TakeWord("percent");
      } else if (tokens_.TakeWord("distinctrow")) {
        select.distinct_rows = true;
      } else if (!tokens_.TakeWord("all")) {
        return;
      }
    }
  }

  bool AtTop() const {
    return tokens_.AtWord("top") && tokens_.Peek(1).kind == TokenKind::kInteger &&
           std::holds_alternative<std::int64_t>(tokens_.Peek(1).value);
  }

  SelectItem ReadItem() {
    SelectItem item;
    if (tokens_.TakeSymbol("*")) return item;
    if (tokens_.AtSymbol(".", 1) && tokens_.AtSymbol("*", 2)) {
      item.qualifier = expressions_.ReadName();
      tokens_.Take();
      tokens_.Take();
      return item;
    }
    item.expression = expressions_.Read();
    if (tokens_.TakeWord("as")) item.alias = ReadAlias();
    return item;
  }

  std::string ReadAlias() {
    const Token& token = tokens_.Peek();
    if (token.kind == TokenKind::kText) {
      tokens_.Take();
      return std::get<std::string>(token.value);
    }
    return expressions_.ReadName();
  }

  void ReadOrder(Select& select) {
    tokens_.ExpectWord("by");
    do {
      OrderItem item{.expression = expressions_.Read()};
      if (tokens_.TakeWord("desc"))
        item.descending = true;
      else
        tokens_.TakeWord("asc");
      select.order.push_back(std::move(item));
    } while (tokens_.TakeSymbol(","));
  }

  void CheckLength(int length) const {
    constexpr int kMostJoins = 60;  // SQLite joins no more than 64 tables
    if (length >= kMostJoins) tokens_.Fail(engine_error::kTooComplex, "Query is too complex.");
  }

  std::unique_ptr<Source> Join(JoinKind kind, std::unique_ptr<Source> left,
                               std::unique_ptr<Source> right) const {
    auto join = std::make_unique<Source>();
    join->join = kind;
    join->left = std::move(left);
    join->right = std::move(right);
    return join;
  }

  bool TakeJoin(JoinKind& kind) {
    if (tokens_.TakeWord("inner")) {
      kind = JoinKind::kInner;
    } else if (tokens_.TakeWord("left")) {
      kind = JoinKind::kLeft;
      tokens_.TakeWord("outer");
    } else if (tokens_.TakeWord("right")) {
      kind = JoinKind::kRight;
      tokens_.TakeWord("outer");
    } else {
      return false;
    }
    tokens_.ExpectWord("join");
    return true;
  }

  std::unique_ptr<Source> ReadJoins() {
    std::unique_ptr<Source> left = ReadSource();
    JoinKind kind = JoinKind::kInner;
    for (int length = 0; TakeJoin(kind); ++length) {
      CheckLength(length);
      left = Join(kind, std::move(left), ReadSource());
      tokens_.ExpectWord("on");
      left->on = expressions_.Read();
    }
    return left;
  }

  std::unique_ptr<Source> ReadSource() {
    const NestingGuard guard(tokens_, depth_);
    if (tokens_.TakeSymbol("(")) {
      std::unique_ptr<Source> source;
      if (tokens_.AtWord("select")) {
        source = std::make_unique<Source>();
        source->select = ReadSelect();
        tokens_.ExpectSymbol(")");
        source->alias = ReadTableAlias();
        return source;
      }
      source = ReadSources();
      tokens_.ExpectSymbol(")");
      return source;
    }
    auto source = std::make_unique<Source>();
    source->table = expressions_.ReadName();
    source->alias = ReadTableAlias();
    return source;
  }

  std::string ReadTableAlias() {
    if (tokens_.TakeWord("as")) return expressions_.ReadName();
    const Token& token = tokens_.Peek();
    // "set" follows the tables of an update.
    const bool alias = token.kind == TokenKind::kBracketedName ||
                       (token.kind == TokenKind::kName && !tokens_.AtWord("set") &&
                        !ExpressionParser::IsReserved(token.source));
    return alias ? tokens_.Take().name : std::string();
  }

  int depth_ = 0;
  TokenStream& tokens_;
  ExpressionParser expressions_;
};

class ActionParser {
 public:
  explicit ActionParser(TokenStream& tokens) : tokens_(tokens), selects_(tokens) {}

  Action Read() {
    if (tokens_.TakeWord("insert")) {
      ReadInsert();
    } else if (tokens_.TakeWord("update")) {
      ReadUpdate();
    } else {
      for (const std::string_view word : {"create", "drop", "alter", "grant", "revoke"})
        if (tokens_.AtWord(word))
          tokens_.Fail(engine_error::kInvalidOperation,
                       "Invalid operation. " + ToUpper(word) +
                           " is not supported: tables and rights are changed in Access.");
      if (tokens_.AtWord("select") || tokens_.AtWord("explain"))
        tokens_.Fail(engine_error::kExecutedSelect, "Cannot execute a select query.");
      tokens_.ExpectWord("delete");
      ReadDelete();
    }
    selects_.ReadEnd();
    return std::move(action_);
  }

 private:
  void ReadInsert() {
    action_.kind = ActionKind::kInsert;
    tokens_.ExpectWord("into");
    action_.table = expressions().ReadName();
    if (tokens_.AtSymbol("(") && !tokens_.AtWord("select", 1)) {
      tokens_.Take();
      do AddColumn(expressions().ReadName());
      while (tokens_.TakeSymbol(","));
      tokens_.ExpectSymbol(")");
    }
    if (!tokens_.AtWord("values")) {
      const bool bracketed = tokens_.TakeSymbol("(");
      action_.select = selects_.ReadSelect();
      if (bracketed) tokens_.ExpectSymbol(")");
      return;
    }
    tokens_.Take();
    tokens_.ExpectSymbol("(");
    do action_.values.push_back(expressions().Read());
    while (tokens_.TakeSymbol(","));
    tokens_.ExpectSymbol(")");
    if (!action_.columns.empty() && action_.columns.size() != action_.values.size()) {
      tokens_.Fail(kDifferentCounts,
                   "Number of query values and destination fields are not the same.");
    }
  }

  void ReadUpdate() {
    action_.kind = ActionKind::kUpdate;
    tokens_.TakeWord("distinctrow");  // changes each row once anyway
    action_.from = selects_.ReadSources();
    tokens_.ExpectWord("set");
    do {
      std::string column = expressions().ReadName(), table;
      if (tokens_.TakeSymbol(".") || tokens_.TakeSymbol("!"))
        table = std::exchange(column, expressions().ReadName());
      AddColumn(std::move(column));
      action_.qualifiers.push_back(std::move(table));
      tokens_.ExpectSymbol("=");
      action_.values.push_back(expressions().Read());
    } while (tokens_.TakeSymbol(","));
    ReadWhere();
  }

  void ReadDelete() {
    action_.kind = ActionKind::kDelete;
    tokens_.TakeWord("distinctrow");  // deletes each row once anyway
    // "delete t.* from t"
    if (!tokens_.TakeSymbol("*") && !tokens_.AtWord("from")) {
      action_.table = expressions().ReadName();
      tokens_.ExpectSymbol(".");
      tokens_.ExpectSymbol("*");
    }
    tokens_.ExpectWord("from");
    action_.from = selects_.ReadSources();
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
    if (tokens_.TakeWord("where")) action_.where = expressions().Read();
  }

  ExpressionParser& expressions() { return selects_.expressions(); }

  static constexpr int kDifferentCounts = 3346, kDuplicateDestination = 3063;

  TokenStream& tokens_;
  SelectParser selects_;
  Action action_;
};

}  // namespace

std::unique_ptr<Select> ParseSelect(std::string_view statement, const std::vector<Token>& tokens) {
  TokenStream stream(statement, tokens);
  return SelectParser(stream).ReadStatement();
}

ExpressionPtr ParseExpression(std::string_view expression, const std::vector<Token>& tokens) {
  TokenStream stream(expression, tokens);
  return SelectParser(stream).ReadExpression();
}

Action ParseAction(std::string_view statement, const std::vector<Token>& tokens) {
  TokenStream stream(statement, tokens);
  return ActionParser(stream).Read();
}

}  // namespace tenora::query
