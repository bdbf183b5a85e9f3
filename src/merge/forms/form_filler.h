// Walks a template's tree and writes what a recipient's values make of it.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "merge/forms/form_sink.h"
#include "merge/forms/form_tree.h"
#include "merge/forms/form_values.h"
#include "merge/merge_notes.h"
#include "platform/richtext/document.h"

namespace tenora {

// Bounds a letter: what is repeated in repetitions grows with every level.
class FormBudget {
 public:
  // Raises 7 when the letter has become too long.
  void Spend(std::size_t bytes);

 private:
  std::size_t pieces_ = 0, bytes_ = 0;
};

class FormFiller {
 public:
  // Told of each value before it is put in. All outlive this.
  using Told = std::function<void(std::string_view name, const std::string& text)>;
  FormFiller(Session& session, FormValues& values, const FactNames& recipients, FormBudget& budget,
             MergeNotes& notes, Told told)
      : session_(session),
        values_(values),
        recipients_(recipients),
        budget_(budget),
        notes_(notes),
        told_(std::move(told)) {}

  // `blocks` is what the tree was made of.
  std::vector<richtext::Block> Fill(const FormTree& tree,
                                    const std::vector<richtext::Block>& blocks);

 private:
  using Rows = std::vector<richtext::Row>;

  // Rows go to `rows`, everything else to the sink.
  void Walk(const FormNodes& nodes, FormSink* sink, Rows* rows);
  void Visit(const FormNode& node, FormSink* sink, Rows* rows);
  void AddText(const FormNode& node, FormSink* sink);
  void AddValue(const FormNode& node, FormSink* sink);
  void NoteMissing(const std::string& name);
  void AddMark(const FormNode& node, FormSink* sink);
  void Branch(const FormNode& node, FormSink* sink, Rows* rows);
  void Repeat(const FormNode& node, FormSink* sink, Rows* rows);
  void KeepSections(const FormNodes& nodes, FormSink* sink);
  richtext::Row RowOf(const FormNode& node);
  std::shared_ptr<const richtext::Field> FieldHere(
      const std::shared_ptr<const richtext::Field>& field);

  Session& session_;
  FormValues& values_;
  const FactNames& recipients_;
  FormBudget& budget_;
  MergeNotes& notes_;
  const Told told_;
  // In a repetition each turn has fields of its own: two that follow each other would be one.
  using Fields = std::map<const richtext::Field*, std::shared_ptr<const richtext::Field>>;
  Fields* fields_ = nullptr;
  std::set<const richtext::Mark*> bookmarks_;  // those that are in the letter
};

// Takes out bookmarks of which only the beginning or the end is left.
void DropHalfBookmarks(std::vector<richtext::Block>* blocks);

}  // namespace tenora
