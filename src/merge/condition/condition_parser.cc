#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "merge/condition.h"
#include "merge/condition/condition_node.h"
#include "merge/condition/condition_words.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using NodePtr = std::shared_ptr<const ConditionNode>;
using Node = ConditionNode;
using Operand = ConditionOperand;
using WordKind = ConditionWord::Kind;

// Deeper brackets are no condition that somebody wrote.
constexpr int kDeepest = 50;
// Nor are longer ones.
constexpr std::size_t kLongest = 10'000;

// More names are no hint.
constexpr std::size_t kMostMeant = 3;

// What is relative to today is compared as of a day.
const Date kSomeDay = Date::FromCalendar(2024, 2, 29);

// Words with a meaning of their own end a name that is none.
constexpr std::array<std::string_view, 9> kWordsBehindName{
    "and", "or", "is", "between", "contains", "starts", "within", "in", "not"};

std::string TypeName(FactType type) {
  switch (type) {
    case FactType::kText:
      return "a text";
    case FactType::kNumber:
      return "a number";
    case FactType::kMoney:
      return "an amount";
    case FactType::kDate:
      return "a date";
    case FactType::kYesNo:
      return "yes or no";
    case FactType::kField:
      return "a field";
  }
  return {};
}

std::string ComparisonsOf(FactType type) {
  switch (type) {
    case FactType::kText:
      return "= <> < > contains, starts with, is empty; a text stands in quotation marks";
    case FactType::kNumber:
    case FactType::kMoney:
      return "= <> < <= > >= with a number, between 10 and 20, is empty";
    case FactType::kDate:
      return "= <> < <= > >= with a date, as in < today + 14 days or >= 1 April 2026; within 30 "
             "days; in the last 2 weeks; is empty";
    case FactType::kYesNo:
      return "the name alone, or not and the name";
    case FactType::kField:
      return "= <> < <= > >= contains, starts with, is empty";
  }
  return {};
}

bool IsText(FactType type) { return type == FactType::kText || type == FactType::kField; }
bool IsNumeric(FactType type) { return type == FactType::kNumber || type == FactType::kMoney; }

bool Comparable(FactType left, FactType right) {
  return left == right || left == FactType::kField || right == FactType::kField ||
         (IsNumeric(left) && IsNumeric(right));
}

class Parser {
 public:
  Parser(std::string_view text, const FactNames& names, std::vector<std::string>* used)
      : names_(names), used_(used) {
    if (text.size() > kLongest) throw ConditionError("The condition is too long");
    words_ = WordsOf(text);
  }

  NodePtr Parse() {
    if (Here().kind == WordKind::kEnd) {
      throw ConditionError("There is no condition", "for example Balance Owing > 0");
    }
    NodePtr root = Either();
    if (Here().kind != WordKind::kEnd) {
      throw ConditionError("\"" + Here().text +
                           "\" cannot stand behind a whole condition; join two " +
                           "by \"and\" or \"or\"");
    }
    return root;
  }

 private:
  const ConditionWord& Here() const { return words_[at_]; }

  bool IsWord(std::size_t at, std::string_view word) const {
    return words_[at].kind == WordKind::kWord && EqualsNoCase(words_[at].text, word);
  }

  bool TakeWord(std::string_view word) {
    if (!IsWord(at_, word)) return false;
    ++at_;
    return true;
  }

  bool TakeSign(std::string_view sign) {
    if (Here().kind != WordKind::kSign || Here().text != sign) return false;
    ++at_;
    return true;
  }

  NodePtr Either() { return Joined(Node::Kind::kOr, "or", &Parser::Both); }
  NodePtr Both() { return Joined(Node::Kind::kAnd, "and", &Parser::One); }

  NodePtr Joined(Node::Kind kind, std::string_view word, NodePtr (Parser::*part)()) {
    std::vector<NodePtr> parts{(this->*part)()};
    while (TakeWord(word)) parts.push_back((this->*part)());
    if (parts.size() == 1) return parts.front();
    return std::make_shared<Node>(Node{.kind = kind, .parts = std::move(parts)});
  }

  NodePtr One() {
    if (++depth_ > kDeepest) throw ConditionError("The condition has too many brackets");
    NodePtr node;
    if (TakeWord("not")) {
      node = Not(One());
    } else if (TakeSign("(")) {
      node = Either();
      if (!TakeSign(")")) throw ConditionError("A \"(\" has no \")\"");
    } else {
      node = Comparison();
    }
    --depth_;
    return node;
  }

  static NodePtr Not(NodePtr node) {
    return std::make_shared<Node>(Node{.kind = Node::Kind::kNot, .parts = {std::move(node)}});
  }

  NodePtr Comparison() {
    const std::size_t begin = at_;
    Operand left = TakeOperand();
    if (TakeWord("is")) return State(std::move(left));
    const bool negated = TakeWord("not");
    NodePtr node;
    if (TakeWord("between")) {
      node = Between(left);
    } else if (TakeWord("within")) {
      node = Within(left);
    } else if (TakeWord("in")) {
      node = InTheLast(left);
    } else if (TakeWord("contains")) {
      node = TextTest(Node::Kind::kContains, std::move(left));
    } else if (TakeWord("starts")) {
      if (!TakeWord("with")) throw ConditionError("Behind \"starts\" stands \"with\" and a text");
      node = TextTest(Node::Kind::kStarts, std::move(left));
    } else if (negated) {
      throw ConditionError("Behind \"not\" stands between, within, in, contains or starts with");
    } else if (const auto sign = TakeComparisonSign()) {
      return Compared(left, *sign, TakeOperand(&left));
    } else {
      return Truth(std::move(left), begin);
    }
    return negated ? Not(std::move(node)) : node;
  }

  // Behind "is": "empty", "not empty", or what stands behind "=".
  NodePtr State(Operand left) {
    const bool negated = TakeWord("not");
    NodePtr node;
    if (TakeWord("empty")) {
      node = std::make_shared<Node>(Node{.kind = Node::Kind::kEmpty, .left = std::move(left)});
    } else {
      node = Compared(left, Node::Sign::kEqual, TakeOperand(&left));
    }
    return negated ? Not(std::move(node)) : node;
  }

  NodePtr Truth(Operand left, std::size_t begin) {
    if (left.type != FactType::kYesNo && left.type != FactType::kField) {
      throw ConditionError("Behind " + WordsFrom(begin, at_) + " a comparison is missing",
                           ComparisonsOf(left.type));
    }
    return std::make_shared<Node>(Node{.kind = Node::Kind::kTrue, .left = std::move(left)});
  }

  NodePtr Compared(const Operand& left, Node::Sign sign, Operand right) {
    Require(left, right);
    return std::make_shared<Node>(
        Node{.kind = Node::Kind::kCompare, .left = left, .sign = sign, .right = std::move(right)});
  }

  NodePtr TextTest(Node::Kind kind, Operand left) {
    if (!IsText(left.type)) {
      throw ConditionError(Shown(left) + " is " + TypeName(left.type) +
                               ", of which only a text contains or starts with something",
                           ComparisonsOf(left.type));
    }
    Operand right = TakeOperand(&left);
    Require(left, right);
    return std::make_shared<Node>(
        Node{.kind = kind, .left = std::move(left), .right = std::move(right)});
  }

  NodePtr Between(const Operand& left) {
    const std::size_t begin = at_;
    const Operand low = TakeOperand(&left);
    const std::size_t end = at_;
    if (!TakeWord("and")) {
      throw ConditionError("Behind \"between\" stand two values with \"and\" between them");
    }
    const std::size_t high_begin = at_;
    const Operand high = TakeOperand(&left);
    NodePtr range = Range(left, low, high);
    if (IsAbove(low, high)) {
      const std::string first = WordsFrom(begin, end), second = WordsFrom(high_begin, at_);
      throw ConditionError(
          "Nothing is between " + first + " and " + second + ", since the first is the greater",
          "write between " + second + " and " + first);
    }
    return range;
  }

  // Of two values, as far as it is certain whatever the recipient and the day.
  static bool IsAbove(const Operand& low, const Operand& high) {
    const auto* from = std::get_if<DayExpression>(&low.what);
    const auto* to = std::get_if<DayExpression>(&high.what);
    if (from != nullptr && to != nullptr) {
      return from->fixed.has_value() == to->fixed.has_value() &&
             from->At(kSomeDay) > to->At(kSomeDay);
    }
    const auto* first = std::get_if<Fact>(&low.what);
    const auto* second = std::get_if<Fact>(&high.what);
    if (first == nullptr || second == nullptr) return false;
    const auto* number = std::get_if<double>(first);
    const auto* other = std::get_if<double>(second);
    return number != nullptr && other != nullptr && *number > *other;
  }

  // "within 30 days": from today on.
  NodePtr Within(const Operand& left) {
    const Stretch stretch = RequireStretch("within 30 days");
    return Range(left, Today({}), Today(stretch));
  }

  NodePtr InTheLast(const Operand& left) {
    if (!TakeWord("the") || !TakeWord("last")) {
      throw ConditionError("Behind \"in\" stands \"the last\", as in \"in the last 2 weeks\"");
    }
    const Stretch stretch = RequireStretch("in the last 2 weeks");
    return Range(left, Today(stretch.Back()), Today({}));
  }

  NodePtr Range(const Operand& left, const Operand& low, const Operand& high) {
    return std::make_shared<Node>(Node{.kind = Node::Kind::kAnd,
                                       .parts = {Compared(left, Node::Sign::kAtLeast, low),
                                                 Compared(left, Node::Sign::kAtMost, high)}});
  }

  static Operand Today(Stretch stretch) {
    return {FactType::kDate, DayExpression{.fixed = {}, .added = {stretch}}};
  }

  Stretch RequireStretch(std::string_view example) {
    const std::optional<Stretch> stretch = TakeStretch(words_, at_);
    if (!stretch) {
      throw ConditionError("A number of days, weeks, months or years is missing, as in \"" +
                           std::string(example) + "\"");
    }
    return *stretch;
  }

  std::optional<Node::Sign> TakeComparisonSign() {
    static constexpr std::pair<std::string_view, Node::Sign> kSigns[] = {
        {"=", Node::Sign::kEqual},   {"<>", Node::Sign::kNotEqual}, {"<", Node::Sign::kLess},
        {"<=", Node::Sign::kAtMost}, {">", Node::Sign::kMore},      {">=", Node::Sign::kAtLeast}};
    for (const auto& [written, sign] : kSigns) {
      if (TakeSign(written)) return sign;
    }
    return std::nullopt;
  }

  // `left`: what it is compared with, where something is.
  Operand TakeOperand(const Operand* left = nullptr) {
    if (Here().kind == WordKind::kText) return {FactType::kText, Fact(words_[at_++].text)};
    if (Here().kind == WordKind::kName) {
      const std::string& name = words_[at_].text;
      if (auto named = Named(name)) {
        ++at_;
        return WithAdded(std::move(*named));
      }
      RefuseName(name, left);
    }
    if (auto named = TakeName()) return WithAdded(std::move(*named));
    if (const auto day = TakeDay(words_, at_)) return CheckedDay(*day);
    if (TakeWord("yes") || TakeWord("true")) return {FactType::kYesNo, Fact(true)};
    if (TakeWord("no") || TakeWord("false")) return {FactType::kYesNo, Fact(false)};
    if (auto number = TakeNumber()) return std::move(*number);
    RefuseHere(left);
  }

  // The name with the most words that begins here.
  std::optional<Operand> TakeName() {
    std::size_t count = 0;
    while (count < names_.LongestWords() && words_[at_ + count].kind == WordKind::kWord) ++count;
    for (; count > 0; --count) {
      std::string name = WordsFrom(at_, at_ + count);
      // A field that the names do not have whole ends with its first word.
      if (count > 1 && names_.Find(name) == nullptr) continue;
      std::optional<Operand> named = Named(name);
      if (!named) continue;
      at_ += count;
      return named;
    }
    return std::nullopt;
  }

  std::optional<Operand> Named(const std::string& name) {
    const FactNames::Name* const found = names_.Find(name);
    if (found == nullptr && !names_.IsField(name)) return std::nullopt;
    const std::string& whole = found != nullptr ? found->name : name;
    if (std::ranges::find(*used_, whole) == used_->end()) used_->push_back(whole);
    return Operand{found != nullptr ? found->type : FactType::kField, Operand::Named{whole, {}}};
  }

  Operand WithAdded(Operand operand) {
    if (operand.type == FactType::kDate) {
      std::get<Operand::Named>(operand.what).added = TakeAdded(words_, at_);
    }
    return operand;
  }

  static Operand CheckedDay(const DayExpression& day) {
    if (day.month != 0 && !day.fixed) {
      throw ConditionError("A date in a comparison needs its year, as in 1 April 2026");
    }
    return {FactType::kDate, day};
  }

  std::optional<Operand> TakeNumber() {
    std::string digits = Here().kind == WordKind::kWord ? Here().text : "";
    if (digits.starts_with('$')) digits.erase(0, 1);
    std::erase(digits, ',');
    const auto is_part = [](char c) { return IsDigit(c) || c == '.' || c == '-'; };
    if (digits.empty() || !std::ranges::all_of(digits, is_part)) return std::nullopt;
    try {
      const double number = ToDouble(Value(digits));
      // As an amount: every number that people compare is one.
      Currency::FromDouble(number);
      ++at_;
      return Operand{FactType::kNumber, Fact(number)};
    } catch (const RuntimeError&) {
      throw ConditionError("\"" + Here().text + "\" is no number that can be compared");
    }
  }

  void Require(const Operand& left, const Operand& right) const {
    if (Comparable(left.type, right.type)) return;
    throw ConditionError(Shown(left) + " is " + TypeName(left.type) +
                             " and cannot be compared with " + Shown(right) + ", which is " +
                             TypeName(right.type),
                         ComparisonsOf(left.type));
  }

  static std::string Shown(const Operand& operand) {
    if (const auto* named = std::get_if<Operand::Named>(&operand.what)) return named->name;
    if (std::holds_alternative<DayExpression>(operand.what)) return "the day";
    const Fact& fact = std::get<Fact>(operand.what);
    if (const auto* text = std::get_if<std::string>(&fact)) return "\"" + *text + "\"";
    if (const auto* number = std::get_if<double>(&fact)) return NumberText(*number);
    return "yes or no";
  }

  std::string WordsFrom(std::size_t begin, std::size_t end) const {
    std::string text;
    for (std::size_t at = begin; at < end; ++at) text += (at == begin ? "" : " ") + words_[at].text;
    return text;
  }

  bool EndsName(std::size_t at) const {
    return words_[at].kind != WordKind::kWord ||
           std::ranges::any_of(kWordsBehindName,
                               [&](std::string_view word) { return IsWord(at, word); });
  }

  [[noreturn]] void RefuseHere(const Operand* left) const {
    std::size_t end = at_;
    while (!EndsName(end)) ++end;
    if (end > at_) RefuseName(WordsFrom(at_, end), left);
    const std::string before =
        at_ == 0 ? "At the beginning" : "Behind \"" + words_[at_ - 1].text + "\"";
    throw ConditionError(before + " a name or value is missing", "for example Balance Owing > 0");
  }

  [[noreturn]] void RefuseName(const std::string& name, const Operand* left) const {
    std::vector<std::string_view> all;
    std::string possible = "the names are ";
    for (const FactNames::Name& one : names_.Names()) {
      if (!all.empty()) possible += ", ";
      // As they are to be written.
      const bool blank = one.type == FactType::kField && one.name.find(' ') != std::string::npos;
      possible += blank ? "[" + one.name + "]" : one.name;
      all.push_back(one.name);
    }
    std::string near = NearestName(name, all);
    if (near.empty()) near = NamesWith(name, all);
    std::string problem = "\"" + name + "\" is no name or value";
    if (!near.empty()) {
      problem += "; is " + near + " meant?";
    } else if (left != nullptr) {
      problem += ValueMissing(left->type);
    }
    throw ConditionError(problem, possible);
  }

  // What something is compared with is more often a value, wrongly written, than a name.
  static std::string ValueMissing(FactType type) {
    if (IsText(type)) return "; a text stands in quotation marks";
    if (type == FactType::kNumber || type == FactType::kMoney) {
      return "; a number is missing, in figures, as in 14 or 50.25";
    }
    return type == FactType::kDate ? "; a date is missing, as in 1 April 2026 or today" : "";
  }

  // Those that have it as a word, "A or B"; empty where they are too many to be a hint.
  static std::string NamesWith(const std::string& word, const std::vector<std::string_view>& all) {
    std::string named;
    std::size_t count = 0;
    for (const std::string_view one : all) {
      const bool has = std::ranges::any_of(
          Split(one, " "), [&](const std::string& part) { return EqualsNoCase(part, word); });
      if (!has) continue;
      named.append(named.empty() ? "" : " or ").append(one);
      if (++count > kMostMeant) return {};
    }
    return named;
  }

  const FactNames& names_;
  std::vector<std::string>* used_;
  std::vector<ConditionWord> words_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

NodePtr ParseCondition(std::string_view text, const FactNames& names,
                       std::vector<std::string>* used) {
  return Parser(text, names, used).Parse();
}

}  // namespace tenora
