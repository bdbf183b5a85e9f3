// A template's text as a tree: what is put into every letter, and the forms around and between.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "merge/condition.h"
#include "merge/form_names.h"
#include "platform/richtext/document.h"

namespace tenora {

// Of <<Each …>>.
struct Repetition {
  const Collection* collection = nullptr;
  std::string since, until;  // days as they are written; empty for none
  std::optional<Condition> where;
  bool newest_first = false;
};

struct FormNode {
  enum class Kind { kText, kMark, kValue, kLineEnd, kParagraphEnd, kTable, kRow, kIf, kEach };
  using Nodes = std::vector<FormNode>;

  Kind kind = Kind::kText;
  // As in FormPiece.
  const richtext::Paragraph* paragraph = nullptr;
  const richtext::Run* run = nullptr;
  std::size_t begin = 0, end = 0;
  const richtext::Mark* mark = nullptr;
  const richtext::Row* row = nullptr;
  bool marked = false, paragraph_marked = false;

  std::string name = {};  // of a value, as FactNames has it
  ValueFormat format = ValueFormat::kUsual;
  // The cells of a row; the rows of a table; what stands in each branch of an If; in an Each.
  std::vector<Nodes> parts = {};
  std::vector<std::optional<Condition>> conditions = {};  // of the branches; none: else
  std::shared_ptr<const Repetition> each = {};
};

using FormNodes = FormNode::Nodes;

// What a tree needs to know of itself before it is filled.
struct FormTree {
  FormNodes nodes;
  std::set<std::string, std::less<>> sums;  // "Total …" and "Number of …" that are used
  // The first Each over the ledger, whose opening balance counts ahead of it; null for none.
  std::shared_ptr<const Repetition> ledger = {};
  bool complete = true;  // false: it ends where there was too much wrong
};

}  // namespace tenora
