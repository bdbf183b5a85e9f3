#include "platform/access/read/query_definitions.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/access/read/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

// What a row says, by its attribute.
enum Attribute : std::int64_t {
  kKind = 1,
  kParameter = 2,
  kOptions = 3,
  kOtherDatabase = 4,
  kTable = 5,
  kItem = 6,
  kJoin = 7,
  kWhere = 8,
  kGroup = 9,
  kHaving = 10,
  kOrder = 11,
};

// The flags of kOptions.
constexpr std::int64_t kAllFields = 1, kDistinct = 2, kDistinctRows = 8, kTop = 16, kPercent = 32;
// The same flag as kDistinct: a union without it keeps equal rows.
constexpr std::int64_t kUnionOfDistinct = 2;

// Far more than the engine allows in a query.
constexpr std::size_t kMostRows = 4096, kMostBytes = 256 * 1024;

struct Piece {
  std::int64_t attribute = 0;
  std::string order;  // among the rows of its attribute
  std::string name, second_name, expression;
  std::int64_t flag = 0;
};

std::vector<Piece> ReadPieces(const std::shared_ptr<const TableData>& table, std::int32_t id) {
  const TableDefinition& definition = table->definition;
  const std::size_t object = RequireColumn(definition, "ObjectId", ColumnType::kLong);
  const std::size_t attribute = RequireColumn(definition, "Attribute", ColumnType::kByte);
  const std::size_t order = RequireColumn(definition, "Order", ColumnType::kBinary);
  const std::size_t name = RequireColumn(definition, "Name1", ColumnType::kText);
  const std::size_t second_name = RequireColumn(definition, "Name2", ColumnType::kText);
  const std::size_t expression = RequireColumn(definition, "Expression", ColumnType::kMemo);
  const std::size_t flag = RequireColumn(definition, "Flag", ColumnType::kInteger);
  std::vector<Piece> pieces;
  std::size_t bytes = 0;
  for (const auto rows = OpenCursor(table); rows->Next();) {
    if (rows->Integer(object) != id) continue;
    if (pieces.size() == kMostRows || bytes > kMostBytes) {
      throw Corruption(definition.page, "a query is too long");
    }
    Piece& piece = pieces.emplace_back();
    piece.attribute = rows->Integer(attribute);
    const Bytes place = rows->Bytes(order);
    piece.order.assign(reinterpret_cast<const char*>(place.data()), place.size());
    piece.name = rows->Text(name);
    piece.second_name = rows->Text(second_name);
    piece.expression = rows->Text(expression);
    piece.flag = rows->Integer(flag);
    bytes += piece.name.size() + piece.second_name.size() + piece.expression.size();
  }
  std::ranges::stable_sort(pieces, {}, &Piece::order);
  return pieces;
}

std::string Bracketed(const std::string& name) {
  return name.find_first_of("[]") == std::string::npos ? "[" + name + "]" : name;
}

// A select within the query's text, without the semicolon at its end.
std::string_view WithoutEnd(std::string_view select) {
  const std::size_t end = select.find_last_not_of("; \t\r\n");
  return select.substr(0, end == std::string_view::npos ? 0 : end + 1);
}

class QueryWriter {
 public:
  QueryWriter(const std::vector<Piece>& pieces, std::uint32_t page)
      : pieces_(pieces), page_(page) {}

  std::string Select() {
    const Piece* const options = Find(kOptions);
    const std::int64_t flags = options == nullptr ? 0 : options->flag;
    std::string text = "SELECT";
    if ((flags & kDistinct) != 0) text += " DISTINCT";
    if ((flags & kDistinctRows) != 0) text += " DISTINCTROW";
    if ((flags & kTop) != 0) text += " TOP " + options->name;
    if ((flags & kPercent) != 0) text += " PERCENT";
    text += " " + Items((flags & kAllFields) != 0) + " FROM " + Sources();
    if (const Piece* const other = Find(kOtherDatabase)) text += " IN '" + other->name + "'";
    text += Conditions(" WHERE ", kWhere);
    text += List(" GROUP BY ", kGroup);
    text += Conditions(" HAVING ", kHaving);
    return text + List(" ORDER BY ", kOrder);
  }

  std::string Union() {
    const Piece* const options = Find(kOptions);
    const bool distinct = options != nullptr && (options->flag & kUnionOfDistinct) != 0;
    std::string text;
    for (const Piece& part : Pieces(kTable)) {
      if (!text.empty()) text += distinct ? " UNION " : " UNION ALL ";
      text += WithoutEnd(part.expression);
    }
    return text + List(" ORDER BY ", kOrder);
  }

 private:
  // Tables that joins have put together.
  struct Group {
    std::vector<std::string> names;
    std::string text;
    std::string last_join;  // the names and kind of the join that its text ends with
  };

  const Piece* Find(Attribute attribute) const {
    const auto found = std::ranges::find(pieces_, attribute, &Piece::attribute);
    return found == pieces_.end() ? nullptr : &*found;
  }

  std::vector<Piece> Pieces(Attribute attribute) const {
    std::vector<Piece> found;
    std::ranges::copy_if(pieces_, std::back_inserter(found),
                         [&](const Piece& piece) { return piece.attribute == attribute; });
    return found;
  }

  std::string Items(bool all_fields) const {
    std::string text;
    for (const Piece& item : Pieces(kItem)) {
      text += (text.empty() ? "" : ", ") + item.expression;
      if (!item.name.empty()) text += " AS " + Bracketed(item.name);
    }
    if (!all_fields) return text;
    return text.empty() ? "*" : text + ", *";
  }

  std::string Sources() {
    for (const Piece& table : Pieces(kTable)) {
      const std::string& name = table.second_name.empty() ? table.name : table.second_name;
      std::string text = table.name.empty() ? "(" + std::string(WithoutEnd(table.expression)) + ")"
                                            : Bracketed(table.name);
      if (!table.second_name.empty()) text += " AS " + Bracketed(table.second_name);
      groups_.push_back({.names = {name}, .text = std::move(text), .last_join = {}});
    }
    for (const Piece& join : Pieces(kJoin)) AddJoin(join);
    std::string text;
    for (const Group& group : groups_) text += (text.empty() ? "" : ", ") + group.text;
    return text;
  }

  std::size_t GroupOf(const std::string& name) const {
    const auto found = std::ranges::find_if(groups_, [&](const Group& group) {
      return std::ranges::any_of(
          group.names, [&](const std::string& member) { return EqualsNoCase(member, name); });
    });
    if (found == groups_.end()) {
      throw Corruption(page_, "a query joins '" + name + "', which is none of its tables");
    }
    return static_cast<std::size_t>(found - groups_.begin());
  }

  // The engine keeps a join with several conditions as several rows.
  void AddJoin(const Piece& join) {
    constexpr std::array<std::string_view, 3> kWords = {" INNER JOIN ", " LEFT JOIN ",
                                                        " RIGHT JOIN "};
    if (join.flag < 1 || join.flag > static_cast<std::int64_t>(kWords.size())) {
      throw Corruption(page_, "a query has a join of kind " + std::to_string(join.flag));
    }
    const std::string key =
        ToLower(join.name + "\n" + join.second_name) + std::to_string(join.flag);
    const std::size_t left = GroupOf(join.name), right = GroupOf(join.second_name);
    const std::string condition = "(" + join.expression + ")";
    if (left == right) {
      Group& group = groups_[left];
      constexpr std::int64_t kInner = 1;
      if (group.last_join == key) {
        group.text += " AND " + condition;
      } else if (join.flag == kInner) {
        conditions_.push_back(condition);
      } else {
        throw Corruption(page_, "a query joins '" + join.second_name + "' in a circle");
      }
      return;
    }
    const auto bracketed = [](const Group& group) {
      return group.names.size() == 1 ? group.text : "(" + group.text + ")";
    };
    Group joined{.names = groups_[left].names,
                 .text = bracketed(groups_[left])
                             .append(kWords[static_cast<std::size_t>(join.flag - 1)])
                             .append(bracketed(groups_[right]))
                             .append(" ON ")
                             .append(condition),
                 .last_join = key};
    joined.names.insert(joined.names.end(), groups_[right].names.begin(),
                        groups_[right].names.end());
    groups_[std::min(left, right)] = std::move(joined);
    groups_.erase(groups_.begin() + static_cast<std::ptrdiff_t>(std::max(left, right)));
  }

  std::string Conditions(std::string_view clause, Attribute attribute) const {
    std::vector<std::string> conditions;
    if (attribute == kWhere) conditions = conditions_;
    for (const Piece& piece : Pieces(attribute)) conditions.push_back("(" + piece.expression + ")");
    std::string text;
    for (const std::string& condition : conditions) {
      text += (text.empty() ? std::string(clause) : " AND ") + condition;
    }
    return text;
  }

  std::string List(std::string_view clause, Attribute attribute) const {
    std::string text;
    for (const Piece& piece : Pieces(attribute)) {
      text += (text.empty() ? std::string(clause) : ", ") + piece.expression;
      if (attribute == kOrder && EqualsNoCase(piece.name, "D")) text += " DESC";
    }
    return text;
  }

  const std::vector<Piece>& pieces_;
  std::uint32_t page_;
  std::vector<Group> groups_;
  std::vector<std::string> conditions_;  // of joins, that apply to all of them
};

}  // namespace

SavedQuery ReadQuery(const std::shared_ptr<const TableData>& table, const QueryEntry& entry) {
  const std::vector<Piece> pieces = ReadPieces(table, entry.id);
  SavedQuery query{.name = entry.name, .kind = QueryKind::kSelect, .text = {}, .parameters = {}};
  for (const Piece& piece : pieces) {
    if (piece.attribute == kParameter) query.parameters.push_back(piece.name);
    if (piece.attribute != kKind) continue;
    if (piece.flag < static_cast<std::int64_t>(QueryKind::kSelect) ||
        piece.flag > static_cast<std::int64_t>(QueryKind::kUnion)) {
      throw Corruption(table->definition.page,
                       "query '" + entry.name + "' is of kind " + std::to_string(piece.flag));
    }
    query.kind = static_cast<QueryKind>(piece.flag);
  }
  QueryWriter writer(pieces, table->definition.page);
  if (query.kind == QueryKind::kSelect) query.text = writer.Select();
  if (query.kind == QueryKind::kUnion) query.text = writer.Union();
  return query;
}

}  // namespace tenora::access
