#include "merge/forms/form_builder.h"

#include <algorithm>
#include <utility>

#include "merge/forms/form_scope.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/nearest_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using FindingKind = FormFinding::Kind;
using MarkerKind = FormMarker::Kind;
using NodeKind = FormNode::Kind;
using PieceKind = FormPiece::Kind;

constexpr int kDeepest = 20;
constexpr std::size_t kMostFindings = 100;
// A longer list of what could stand there helps nobody in a message.
constexpr std::size_t kLongestAdvice = 250;
// Days without a year are read against a day with a 29 February.
const Date kSomeDay = Date::FromCalendar(2024, 2, 29);

std::string InBrackets(std::string_view code) {
  return std::string(kCodeStart).append(code).append(kCodeEnd);
}

bool IsElse(const FormMarker& marker) {
  return marker.kind == MarkerKind::kElse || marker.kind == MarkerKind::kElseIf;
}

std::string EndOf(const FormMarker& opener) {
  return opener.kind == MarkerKind::kIf ? "<<End If>>" : "<<End Each>>";
}

bool IsLedger(const FormPiece& piece) {
  if (!piece.IsMarker() || piece.marker->kind != MarkerKind::kEach) return false;
  try {
    const Collection* const found = FindCollection(ReadEach(piece.marker->rest).collection);
    return found != nullptr && found->kind == CollectionKind::kLedgerEntry;
  } catch (const ConditionError&) {
    return false;
  }
}

bool HasLedger(const FormPieces& pieces) {
  return std::ranges::any_of(pieces, [](const FormPiece& piece) {
    return IsLedger(piece) || HasLedger(piece.rows) || std::ranges::any_of(piece.cells, HasLedger);
  });
}

class Builder {
 public:
  Builder(const FormPieces& pieces, TemplateKind kind, std::vector<FormFinding>* findings,
          std::vector<std::size_t>* codes)
      : scope_(kind, HasLedger(pieces)), findings_(*findings), codes_(*codes) {
    tree_.nodes = All(pieces, "");
    tree_.complete = !gave_up_;
  }

  FormTree Take() { return std::move(tree_); }

 private:
  // `within`: " in its table" and the like, for what does not end there.
  FormNodes All(const FormPieces& pieces, const std::string& within) {
    FormNodes nodes;
    std::size_t at = 0;
    while (true) {
      Sequence(pieces, at, within, &nodes);
      if (at >= pieces.size() || gave_up_) return nodes;
      const FormPiece& stray = pieces[at++];
      NoteCode(stray);
      Add(stray, FindingKind::kOutside,
          InBrackets(stray.code) + " has nothing that it " +
              (stray.marker->Ends() ? "ends" : "belongs to") + within,
          stray.marker->kind == MarkerKind::kEndEach
              ? "write <<Each …>> where the repetition begins, or take it out"
              : "write <<If …>> where the condition begins, or take it out");
    }
  }

  // Up to the end of the pieces, or to an end or else of what is open around.
  void Sequence(const FormPieces& pieces, std::size_t& at, const std::string& within,
                FormNodes* nodes) {
    while (at < pieces.size() && !gave_up_) {
      const FormPiece& piece = pieces[at];
      if (!piece.IsMarker()) {
        Plain(piece, nodes);
        ++at;
      } else if (!piece.marker->Begins()) {
        return;
      } else {
        Form(pieces, at, within, nodes);
      }
    }
  }

  void Form(const FormPieces& pieces, std::size_t& at, const std::string& within,
            FormNodes* nodes) {
    const FormPiece& opener = pieces[at++];
    NoteCode(opener);
    if (++depth_ > kDeepest) {
      Add(opener, FindingKind::kTooDeep,
          InBrackets(opener.code) + " stands inside " + std::to_string(kDeepest) + " others",
          "nest fewer conditions and repetitions");
      gave_up_ = true;
      return;
    }
    if (opener.crossed) {
      Add(opener, FindingKind::kCrossed,
          InBrackets(opener.code) + " begins in a row of a table in which another one ends",
          "give what ends and what begins rows of their own");
    }
    FormNode node;
    if (opener.marker->kind == MarkerKind::kIf) {
      node.kind = NodeKind::kIf;
      Branches(pieces, at, within, opener, &node);
    } else {
      node.kind = NodeKind::kEach;
      Repeat(pieces, at, within, opener, &node);
    }
    --depth_;
    nodes->push_back(std::move(node));
  }

  void Branches(const FormPieces& pieces, std::size_t& at, const std::string& within,
                const FormPiece& opener, FormNode* node) {
    const FormPiece* branch = &opener;
    bool otherwise = false;
    while (!gave_up_) {
      node->conditions.push_back(ConditionOf(*branch));
      Sequence(pieces, at, within, &node->parts.emplace_back());
      if (at >= pieces.size() || !IsElse(*pieces[at].marker)) break;
      branch = &pieces[at++];
      NoteCode(*branch);
      if (otherwise) {
        Add(*branch, FindingKind::kOutside, InBrackets(branch->code) + " stands behind <<Else>>",
            "leave one <<Else>>, as the last branch");
      }
      otherwise = branch->marker->kind == MarkerKind::kElse;
    }
    End(pieces, at, within, opener);
  }

  void Repeat(const FormPieces& pieces, std::size_t& at, const std::string& within,
              const FormPiece& opener, FormNode* node) {
    const auto each = RepetitionOf(opener);
    node->each = each;
    FormNodes* const body = &node->parts.emplace_back();
    Sequence(pieces, at, within, body);
    while (at < pieces.size() && !gave_up_ && IsElse(*pieces[at].marker)) {
      NoteCode(pieces[at]);
      Add(pieces[at], FindingKind::kOutside,
          InBrackets(pieces[at].code) + " stands in a repetition, and not in a condition in it",
          "write <<If …>> before it, or " + EndOf(*opener.marker));
      Sequence(pieces, ++at, within, body);
    }
    if (each->collection != nullptr) scope_.Leave();
    End(pieces, at, within, opener);
  }

  // Takes the end of a form. That of another one stays where a form around may have it.
  void End(const FormPieces& pieces, std::size_t& at, const std::string& within,
           const FormPiece& opener) {
    if (gave_up_) return;
    if (at >= pieces.size()) {
      return Add(opener, FindingKind::kUnclosed,
                 InBrackets(opener.code) + " has no " + EndOf(*opener.marker) + within,
                 "write " + EndOf(*opener.marker) + " where its text ends");
    }
    const FormPiece& end = pieces[at];
    const bool own =
        (end.marker->kind == MarkerKind::kEndIf) == (opener.marker->kind == MarkerKind::kIf);
    if (own && end.marker->Ends()) {
      NoteCode(end);
      ++at;
      return;
    }
    // It is taken for the end that is missing, which then comes where this one should be: one
    // message is enough for both.
    crossed_ = !crossed_;
    if (crossed_) {
      Add(end, FindingKind::kCrossed,
          InBrackets(end.code) + " stands inside " + InBrackets(opener.code) +
              ", which has not ended",
          "write " + EndOf(*opener.marker) + " before it");
    }
    NoteCode(end);
    ++at;
  }

  std::optional<Condition> ConditionOf(const FormPiece& piece) {
    if (piece.marker->kind == MarkerKind::kElse) {
      if (!piece.marker->rest.empty()) {
        Add(piece, FindingKind::kCondition,
            InBrackets(piece.code) + " has something behind \"Else\"",
            "write <<Else>>, or <<Else If …>> with a condition");
      }
      return std::nullopt;
    }
    return ReadCondition(piece, piece.marker->rest);
  }

  // `misplaced`: a word in it that belongs before it.
  std::optional<Condition> ReadCondition(const FormPiece& piece, const std::string& text,
                                         const std::string& misplaced = "") {
    try {
      Condition condition(text, scope_.Names());
      for (const std::string& name : condition.Names()) UseSum(name);
      return condition;
    } catch (const ConditionError& error) {
      AddError(piece, FindingKind::kCondition,
               misplaced.empty() ? error
                                 : ConditionError("\"" + misplaced + "\" stands before \"where\"",
                                                  std::string(kEachExample)));
      return std::nullopt;
    }
  }

  void AddError(const FormPiece& piece, FindingKind kind, const ConditionError& error) {
    std::string advice = error.possible();
    if (advice.size() > kLongestAdvice || advice.empty()) {
      advice =
          "write names as the Insert menu has them, texts in quotation marks and days as "
          "1 April 2026";
    }
    Add(piece, kind, InBrackets(piece.code) + " cannot be read: " + error.what(), advice);
  }

  // Enters the scope where the collection is known.
  std::shared_ptr<const Repetition> RepetitionOf(const FormPiece& piece) {
    auto each = std::make_shared<Repetition>();
    try {
      const EachWords words = ReadEach(piece.marker->rest);
      each->collection = FindCollection(words.collection);
      if (each->collection == nullptr) {
        AddUnknownCollection(piece, words.collection);
        return each;
      }
      const std::string refusal = scope_.Refusal(*each->collection);
      if (!refusal.empty()) {
        Add(piece, FindingKind::kCollection, refusal, "repeat " + CollectionList());
      }
      scope_.Enter(*each->collection);
      ReadClauses(piece, words, each.get());
    } catch (const ConditionError& error) {
      AddError(piece, FindingKind::kCollection, error);
    }
    if (each->collection != nullptr && each->collection->kind == CollectionKind::kLedgerEntry &&
        tree_.ledger == nullptr) {
      tree_.ledger = each;
    }
    return each;
  }

  void ReadClauses(const FormPiece& piece, const EachWords& words, Repetition* each) {
    each->since = words.since.value_or("");
    each->until = words.until.value_or("");
    each->newest_first = words.newest_first;
    if (each->collection->day.empty() && (words.since || words.until || words.newest_first)) {
      throw ConditionError(std::string(each->collection->plural) + " have no day",
                           "leave out since, until and newest first; where takes a condition");
    }
    for (const std::string* day : {&each->since, &each->until}) {
      if (!day->empty()) ReadDay(*day, kSomeDay);
    }
    if (words.where) each->where = ReadCondition(piece, *words.where, words.behind_where);
  }

  void AddUnknownCollection(const FormPiece& piece, const std::string& name) {
    std::vector<std::string_view> names;
    for (const Collection& one : Collections()) {
      names.push_back(one.name);
      names.push_back(one.plural);
    }
    const std::string near = NearestName(name, names);
    const auto meant = std::ranges::find_if(Collections(), [&](const Collection& one) {
      return near == one.name || near == one.plural;
    });
    Add(piece, FindingKind::kCollection,
        InBrackets(piece.code) + (name.empty() ? " does not say what it repeats for"
                                               : ": there is no \"" + name + "\" to repeat for"),
        meant == Collections().end() ? "repeat " + CollectionList()
                                     : "write <<Each " + std::string(meant->name) + ">>");
  }

  std::string CollectionList() const {
    std::string list;
    for (const std::string_view name : CollectionNames(scope_.kind())) {
      list.append(list.empty() ? "" : ", ").append(name);
    }
    return list;
  }

  void Plain(const FormPiece& piece, FormNodes* nodes) {
    switch (piece.kind) {
      case PieceKind::kCode:
        return Code(piece, nodes);
      case PieceKind::kTable:
        nodes->push_back(NodeOf(piece, NodeKind::kTable));
        nodes->back().parts.push_back(All(piece.rows, " in its table"));
        return;
      case PieceKind::kRow: {
        FormNode row = NodeOf(piece, NodeKind::kRow);
        for (const FormPieces& cell : piece.cells) row.parts.push_back(All(cell, " in its cell"));
        nodes->push_back(std::move(row));
        return;
      }
      case PieceKind::kText:
        nodes->push_back(NodeOf(piece, NodeKind::kText));
        return;
      case PieceKind::kMark:
        nodes->push_back(NodeOf(piece, NodeKind::kMark));
        return;
      case PieceKind::kLineEnd:
        nodes->push_back(NodeOf(piece, NodeKind::kLineEnd));
        return;
      case PieceKind::kParagraphEnd:
        nodes->push_back(NodeOf(piece, NodeKind::kParagraphEnd));
        return;
    }
  }

  static FormNode NodeOf(const FormPiece& piece, NodeKind kind) {
    FormNode node;
    node.kind = kind;
    node.paragraph = piece.paragraph;
    node.run = piece.run;
    node.begin = piece.begin;
    node.end = piece.end;
    node.mark = piece.mark;
    node.row = piece.row;
    node.marked = piece.marked;
    node.paragraph_marked = piece.paragraph_marked;
    return node;
  }

  // A code that is no form stays in the text; the part of one that goes on in the next run too.
  void Code(const FormPiece& piece, FormNodes* nodes) {
    FormNode value = NodeOf(piece, NodeKind::kValue);
    const bool is_value = FindValue(piece, &value);
    if (is_value) {
      NoteCode(piece);
      UseSum(value.name);
      nodes->push_back(std::move(value));
      return;
    }
    nodes->push_back(NodeOf(piece, NodeKind::kText));
    for (const FormPiece& rest : piece.rest) nodes->push_back(NodeOf(rest, NodeKind::kText));
  }

  // What the code's name means here; false where it is no form, or a wrong one.
  bool FindValue(const FormPiece& piece, FormNode* value) {
    const std::string& code = piece.code;
    if (const FactNames::Name* const name = scope_.FindOfRows(code)) {
      value->name = name->name;
      return true;
    }
    if (scope_.InTenancyRow() && FindCollection("Tenancy")->Names().IsField(code)) {
      value->name = code;
      return true;
    }
    if (!TemplateForms::IsForm(code, scope_.kind())) return false;
    const std::size_t colon = code.rfind(':');
    if (colon != std::string::npos) return FindFormatted(piece, colon, value);
    const std::vector<std::string_view> facts = PrintedFacts(scope_.kind());
    const auto fact =
        std::ranges::find_if(facts, [&](std::string_view one) { return EqualsNoCase(one, code); });
    if (fact != facts.end()) {
      value->name = *fact;
      return true;
    }
    NoteCode(piece);
    AddOutsideName(piece, code);
    return false;
  }

  bool FindFormatted(const FormPiece& piece, std::size_t colon, FormNode* value) {
    const std::string base = piece.code.substr(0, colon);
    const std::string word(TrimBlanks(piece.code.substr(colon + 1)));
    const FactNames names = scope_.Names();
    const FactNames::Name* const name = names.Find(base);
    const FormatName* const format = FindFormat(word);
    if (name != nullptr && format != nullptr && Fits(*format, name->type)) {
      value->name = name->name;
      value->format = format->format;
      return true;
    }
    NoteCode(piece);
    if (name == nullptr) {
      AddOutsideName(piece, base);
      return false;
    }
    const std::string formats = FormatsFor(name->type);
    const std::string plain = "write " + InBrackets(name->name);
    Add(piece, FindingKind::kFormat,
        InBrackets(piece.code) + (format == nullptr
                                      ? " has no format that there is: \"" + word + "\""
                                      : ": \"" + word + "\" does not fit " + name->name),
        formats.empty() ? plain : plain + ", or one of these behind the colon: " + formats);
    return false;
  }

  // A name of a row or sum that has no meaning here, or of nothing at all.
  void AddOutsideName(const FormPiece& piece, const std::string& name) {
    const FactNames names = scope_.Names();
    std::string problem = InBrackets(piece.code), advice;
    const auto owner = std::ranges::find_if(Collections(), [&](const Collection& one) {
      return one.kind != CollectionKind::kTenancy && one.Names().Find(name) != nullptr;
    });
    const auto summed = std::ranges::find_if(Collections(), [&](const Collection& one) {
      return EqualsNoCase(one.CountName(), name) ||
             std::ranges::any_of(one.TotalNames(), [&](const std::string& total) {
               return EqualsNoCase(total, name);
             });
    });
    if (owner != Collections().end()) {
      const std::string each = "<<Each " + std::string(owner->name) + ">>";
      problem += " has a value only inside " + each;
      advice = "write it between " + each + " and <<End Each>>";
    } else if (summed != Collections().end()) {
      const std::string each = "<<Each " + std::string(summed->name) + ">>";
      problem += " is a sum and stands before what it adds up";
      advice = "write it behind " + each + ", or inside it";
    } else if (EqualsNoCase(name, kOpeningBalance)) {
      problem += " has a value only in a text with <<Each Ledger Entry since …>>";
      advice = "add the ledger, or write <<Balance Owing>>";
    } else {
      const std::string near = NearestName(name, names.All());
      problem += ": \"" + name + "\" is no value here";
      advice = near.empty() ? "the Insert menu lists the codes"
                            : "write " + InBrackets(near) + " if that is what you mean";
    }
    Add(piece, FindingKind::kName, problem, advice);
  }

  void UseSum(const std::string& name) {
    if (name.starts_with(kTotalStart) || name.starts_with(kCountStart)) tree_.sums.insert(name);
  }

  void NoteCode(const FormPiece& piece) {
    codes_.push_back(piece.offset);
    if (!piece.split) return;
    Add(piece, FindingKind::kSplit, InBrackets(piece.code) + " has more than one format",
        "select the whole code and give it one format, or retype it");
  }

  void Add(const FormPiece& piece, FindingKind kind, std::string problem, std::string advice) {
    if (findings_.size() >= kMostFindings) gave_up_ = true;
    if (gave_up_) return;
    findings_.push_back({.kind = kind,
                         .offset = piece.offset,
                         .size = piece.size,
                         .code = InBrackets(piece.code),
                         .problem = std::move(problem),
                         .advice = std::move(advice)});
  }

  FormScope scope_;
  std::vector<FormFinding>& findings_;
  std::vector<std::size_t>& codes_;
  FormTree tree_;
  int depth_ = 0;
  bool crossed_ = false;  // the second half of a crossing is still to come
  bool gave_up_ = false;
};

}  // namespace

FormTree BuildForms(const FormPieces& pieces, TemplateKind kind, std::vector<FormFinding>* findings,
                    std::vector<std::size_t>* codes) {
  return Builder(pieces, kind, findings, codes).Take();
}

std::vector<std::string_view> CollectionNames(TemplateKind kind) {
  std::vector<std::string_view> names;
  for (const Collection& one : Collections()) {
    if (one.of_tenancy || kind == TemplateKind::kOwner) names.push_back(one.name);
  }
  return names;
}

}  // namespace tenora
