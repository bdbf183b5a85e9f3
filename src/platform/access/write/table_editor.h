// Changes the rows of one table together with everything that depends on them: indexes, long
// values, usage maps and the counts in the definition. A change is checked completely before any
// page is modified.
#pragma once

#include "platform/access/database_writer.h"
#include "platform/access/read/row_finder.h"
#include "platform/access/write/index_editor.h"
#include "platform/access/write/referential_integrity.h"
#include "platform/access/write/write_context.h"

namespace tenora::access {

class TableEditor final : public WritableTable {
 public:
  // Raises 3073 for a table that cannot be written. `context` must outlive the editor.
  TableEditor(WriteContext& context, std::shared_ptr<const TableData> table);

  const std::string& name() const override { return table_->name; }
  const std::vector<Column>& columns() const override { return table_->definition.columns; }
  const std::vector<Index>& indexes() const override { return table_->definition.indexes; }

  std::string DefaultValue(std::size_t column) const override;

  std::vector<RowId> Find(const std::vector<ColumnValue>& equal) override;
  std::vector<RowId> All() override;
  std::unique_ptr<RowCursor> Rows() const override { return OpenCursor(table_); }
  std::vector<Value> Read(RowId row) override;
  RowId Insert(const std::vector<ColumnValue>& values) override;
  void Update(RowId row, const std::vector<ColumnValue>& values) override;
  void Delete(RowId row) override;

 private:
  // A physical index of the table and how to encode its keys.
  struct Tree {
    const PhysicalIndex* index;
    std::string name;
    std::size_t position;
    bool required;  // its columns must not be null
    std::unique_ptr<IndexKeyEncoder> encoder;
    std::string why_not;  // why there is no encoder
  };
  // The effect of a change on one index.
  struct KeyChange {
    const Tree* tree;
    std::optional<IndexKey> old_key, new_key;  // empty: no entry
  };
  // A change that has been prepared but not applied. Changed long values are in `row` as content.
  struct Plan {
    std::optional<StoredRow> before;
    std::optional<StoredRow> row;
    std::vector<bool> changed;  // by column
    std::vector<KeyChange> keys;
    std::optional<std::int32_t> auto_number;  // the new last one
  };

  void ReadTrees();
  std::size_t ColumnNamed(std::string_view name) const;
  [[noreturn]] void Refuse(const std::string& why, const std::string& index = {}) const;
  RuntimeError Error(int number, const std::string& text) const;
  template <typename Step>
  auto Guarded(Step step) const;
  template <typename Step>
  auto ChangingPages(Step step);

  void Assign(const std::vector<ColumnValue>& values, Plan& plan);
  std::int32_t NextNumber(const Column& column, std::int32_t last) const;
  void AssignAutoNumbers(Plan& plan);
  void RequireAllowed(const Plan& plan) const;
  void RequireFits(const Plan& plan) const;
  void PlanKeys(Plan& plan, RowPointer row);
  bool Affects(const Tree& tree, const Plan& plan) const;
  std::optional<IndexKey> KeyOf(const Tree& tree, const StoredRow& row) const;
  void RequireUnique(const KeyChange& change, const StoredRow& row, RowPointer place) const;
  void Check(Plan& plan, RowPointer place);

  const LongValueMaps& MapsOf(std::size_t column) const;
  void StoreLongValues(Plan& plan);
  void ApplyKeys(const Plan& plan, RowPointer row);
  void Rewrite(const LocatedRow& located, Bytes row);
  void DeleteSlot(RowPointer row);
  void AddToCount(std::size_t offset, int change);

  WriteContext& context_;
  std::shared_ptr<const TableData> table_;
  RowFinder finder_;
  ReferentialIntegrity references_;
  TableProperties properties_;
  std::vector<Tree> trees_;
};

}  // namespace tenora::access
