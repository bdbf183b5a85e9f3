#include "platform/access/write/table_editor.h"

#include <algorithm>
#include <limits>

#include "platform/access/format/field_codec.h"
#include "platform/access/write/free_space.h"
#include "platform/access/write/long_value_writer.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Recordset";

RowPointer Pointer(RowId row) { return {row.page, row.slot}; }
RowId Id(RowPointer row) { return {row.page, row.row}; }

bool IsLongValue(const Column& column) {
  return column.type == ColumnType::kMemo || column.type == ColumnType::kOle;
}

}  // namespace

// Turns Corruption and NotEncodable into errors that name the table.
template <typename Step>
auto TableEditor::Guarded(Step step) const {
  try {
    return NamingCorruption(context_.pages().path(), name(), step);
  } catch (const NotEncodable& why) {
    Refuse(why.what());
  }
}

// Runs the part of a change that modifies pages.
template <typename Step>
auto TableEditor::ChangingPages(Step step) {
  if (context_.spoiled) Refuse("an earlier change in this transaction failed half way");
  context_.spoiled = true;
  step();
  context_.spoiled = false;
}

TableEditor::TableEditor(WriteContext& context, std::shared_ptr<const TableData> table)
    : context_(context),
      table_(std::move(table)),
      finder_(table_, context.codec()),
      references_(context, table_),
      properties_(context.Properties(*table_)) {
  for (const Column& column : columns()) {
    if (column.calculated) Refuse("column '" + column.name + "' is a calculated column");
  }
  ReadTrees();
}

void TableEditor::ReadTrees() {
  const TableDefinition& definition = table_->definition;
  for (std::size_t i = 0; i < definition.physical_indexes.size(); ++i) {
    Tree& tree = trees_.emplace_back();
    tree.index = &definition.physical_indexes[i];
    tree.position = i;
    tree.required = (tree.index->flags & kIndexRequired) != 0;
    for (const LogicalIndex& logical : definition.logical_indexes) {
      if (logical.physical != i) continue;
      if (tree.name.empty() || logical.primary) tree.name = logical.name;
      tree.required = tree.required || logical.primary;
    }
    try {
      tree.encoder = std::make_unique<IndexKeyEncoder>(definition, *tree.index, context_.codec());
    } catch (const NotEncodable& why) {
      tree.why_not = why.what();
    }
  }
}

void TableEditor::Refuse(const std::string& why, const std::string& index) const {
  throw NotUpdatable(name(), why, index);
}

RuntimeError TableEditor::Error(int number, const std::string& text) const {
  return RuntimeError(number, text, kSource);
}

std::size_t TableEditor::ColumnNamed(std::string_view wanted) const {
  const auto found = std::ranges::find_if(
      columns(), [&](const Column& column) { return EqualsNoCase(column.name, wanted); });
  if (found == columns().end()) {
    throw Error(engine_error::kNoSuchColumn,
                "The INSERT INTO statement contains the following "
                "unknown field name: '" +
                    std::string(wanted) + "'. Table '" + name() + "'.");
  }
  return static_cast<std::size_t>(found - columns().begin());
}

std::string TableEditor::DefaultValue(std::size_t column) const {
  return properties_.columns.at(column).default_value;
}

std::vector<RowId> TableEditor::Find(const std::vector<ColumnValue>& equal) {
  return Guarded([&] {
    std::vector<std::size_t> positions;
    std::vector<Field> fields;
    for (const ColumnValue& wanted : equal) {
      const std::size_t column = ColumnNamed(wanted.column);
      if (IsLongValue(columns()[column])) {
        Refuse("rows cannot be found by column '" + columns()[column].name + "'");
      }
      positions.push_back(column);
      fields.push_back(
          EncodeField(columns()[column], table_->definition.places[column], wanted.value));
    }
    std::vector<RowId> rows;
    for (const RowPointer row : finder_.Find(positions, fields)) rows.push_back(Id(row));
    return rows;
  });
}

std::vector<RowId> TableEditor::All() {
  return Guarded([&] {
    std::vector<RowId> rows;
    for (const RowPointer row : finder_.All()) rows.push_back(Id(row));
    return rows;
  });
}

std::vector<Value> TableEditor::Read(RowId row) {
  return Guarded([&] {
    finder_.Locate(Pointer(row));
    const auto cursor = OpenCursorAt(table_, {Pointer(row)});
    cursor->Next();
    std::vector<Value> values;
    for (std::size_t i = 0; i < columns().size(); ++i) values.push_back(cursor->Field(i));
    return values;
  });
}

RowId TableEditor::Insert(const std::vector<ColumnValue>& values) {
  return Guarded([&] {
    Plan plan;
    plan.row.emplace().fields.resize(columns().size());
    plan.changed.assign(columns().size(), true);
    Assign(values, plan);
    AssignAutoNumbers(plan);
    Check(plan, {});
    RowPointer place;
    ChangingPages([&] {
      StoreLongValues(plan);
      const TableDefinition& definition = table_->definition;
      place = FreeSpace(context_.pages(), definition.owned_pages, definition.free_pages,
                        definition.page)
                  .Add(plan.row->Join(definition), 0);
      ApplyKeys(plan, place);
      AddToCount(context_.pages().layout().tdef_rows, 1);
      if (plan.auto_number) {
        Store(&context_.pages().Change(definition.page)[kTdefAutoNumber], *plan.auto_number);
      }
    });
    return Id(place);
  });
}

void TableEditor::Update(RowId row, const std::vector<ColumnValue>& values) {
  Guarded([&] {
    const LocatedRow located = finder_.Locate(Pointer(row));
    Plan plan;
    plan.before = finder_.Split(located);
    plan.row = plan.before;
    plan.changed.assign(columns().size(), false);
    Assign(values, plan);
    Check(plan, located.home);
    ChangingPages([&] {
      StoreLongValues(plan);
      Rewrite(located, plan.row->Join(table_->definition));
      ApplyKeys(plan, located.home);
    });
  });
}

void TableEditor::Delete(RowId row) {
  Guarded([&] {
    const LocatedRow located = finder_.Locate(Pointer(row));
    Plan plan;
    plan.before = finder_.Split(located);
    plan.changed.assign(columns().size(), true);
    for (std::size_t i = 0; i < columns().size(); ++i) {
      if (columns()[i].type == ColumnType::kComplex) {
        Refuse("column '" + columns()[i].name + "' is multi-valued, which is not supported");
      }
    }
    Check(plan, located.home);
    ChangingPages([&] {
      StoreLongValues(plan);
      for (const RowPointer hop : located.hops) DeleteSlot(hop);
      DeleteSlot(located.home);
      ApplyKeys(plan, located.home);
      AddToCount(context_.pages().layout().tdef_rows, -1);
    });
  });
}

void TableEditor::Assign(const std::vector<ColumnValue>& values, Plan& plan) {
  for (const ColumnValue& value : values) {
    const std::size_t column = ColumnNamed(value.column);
    if (plan.before && columns()[column].auto_number) {
      Refuse("the AutoNumber column '" + columns()[column].name + "' cannot be changed");
    }
    plan.row->fields[column] =
        EncodeField(columns()[column], table_->definition.places[column], value.value);
    plan.changed[column] = true;
  }
}

std::int32_t TableEditor::NextNumber(const Column& column, std::int32_t last) const {
  if (!table_->definition.counts_up) {
    Refuse("the AutoNumber column '" + column.name + "' is random, which is not supported");
  }
  if (last == std::numeric_limits<std::int32_t>::max()) {
    Refuse("the AutoNumber column '" + column.name + "' has reached its highest value");
  }
  return last + 1;
}

void TableEditor::AssignAutoNumbers(Plan& plan) {
  for (std::size_t i = 0; i < columns().size(); ++i) {
    const Column& column = columns()[i];
    Field& field = plan.row->fields[i];
    if (column.type == ColumnType::kComplex ||
        (column.auto_number && column.type != ColumnType::kLong && !field)) {
      Refuse("cannot generate a value for column '" + column.name + "'");
    }
    if (!column.auto_number || column.type != ColumnType::kLong) continue;
    PageBuffer definition;
    context_.pages().Read(table_->definition.page, definition);
    const auto last = Load<std::int32_t>(&definition.bytes[kTdefAutoNumber]);
    const std::int32_t given = field ? Load<std::int32_t>(field->data()) : NextNumber(column, last);
    // Numbering continues from the highest value, even if that was set explicitly.
    if (given > last) plan.auto_number = given;
    field.emplace(sizeof given);
    Store(field->data(), given);
  }
}

void TableEditor::Check(Plan& plan, RowPointer place) {
  if (plan.row) {
    RequireAllowed(plan);
    RequireFits(plan);
  }
  for (std::size_t i = 0; i < columns().size(); ++i) {
    if (plan.changed[i] && IsLongValue(columns()[i])) MapsOf(i);
  }
  PlanKeys(plan, place);
  const StoredRow* const before = plan.before ? &*plan.before : nullptr;
  const StoredRow* const after = plan.row ? &*plan.row : nullptr;
  if (after != nullptr) references_.RequireReferenced(before, *after);
  if (before != nullptr) references_.RequireUnreferenced(*before, after, place);
}

void TableEditor::RequireAllowed(const Plan& plan) const {
  for (std::size_t i = 0; i < columns().size(); ++i) {
    if (!plan.changed[i]) continue;
    const ColumnType type = columns()[i].type;
    const ColumnProperties& properties = properties_.columns[i];
    const std::string field = name() + "." + columns()[i].name;
    const bool nullable = (table_->definition.places[i].flags & kColumnNullable) != 0;
    if (type != ColumnType::kBoolean && !plan.row->fields[i] &&
        (!nullable || properties.required)) {
      throw Error(engine_error::kValueRequired,
                  "You must enter a value in the '" + field + "' field.");
    }
    const bool text = type == ColumnType::kText || type == ColumnType::kMemo;
    if (text && !properties.allow_zero_length && plan.row->fields[i] &&
        plan.row->fields[i]->empty()) {
      throw Error(engine_error::kZeroLength,
                  "Field '" + field + "' cannot be a zero-length string.");
    }
    if (!properties.validation_rule.empty()) {
      Refuse("column '" + columns()[i].name + "' has the validation rule " +
             properties.validation_rule + ", which cannot be evaluated");
    }
  }
  if (!properties_.validation_rule.empty()) {
    Refuse("its rows have the validation rule " + properties_.validation_rule +
           ", which cannot be evaluated");
  }
}

void TableEditor::RequireFits(const Plan& plan) const {
  StoredRow sized = *plan.row;
  for (std::size_t i = 0; i < columns().size(); ++i) {
    Field& field = sized.fields[i];
    if (!plan.changed[i] || !field || !IsLongValue(columns()[i])) continue;
    field.emplace(LongValueWriter::SizeInRow(field->size()));
  }
  if (sized.Join(table_->definition).size() > kLargestRow) {
    throw Error(engine_error::kRecordTooLarge, "Record is too large. Table '" + name() + "'.");
  }
}

bool TableEditor::Affects(const Tree& tree, const Plan& plan) const {
  if (!plan.before || !plan.row) return true;
  return std::ranges::any_of(tree.index->parts, [&](const PhysicalIndex::Part& part) {
    const auto column = std::ranges::find(columns(), part.column_number, &Column::number);
    if (column == columns().end()) return true;
    const auto position = static_cast<std::size_t>(column - columns().begin());
    return plan.before->fields[position] != plan.row->fields[position];
  });
}

std::optional<IndexKey> TableEditor::KeyOf(const Tree& tree, const StoredRow& row) const {
  const std::vector<StoredField> fields = row.Pick(tree.encoder->columns());
  if (!tree.encoder->Includes(fields)) return std::nullopt;
  IndexKey key;
  try {
    tree.encoder->Encode(fields, key);
  } catch (const NotEncodable& why) {
    Refuse(why.what(), tree.name);
  }
  return key;
}

void TableEditor::PlanKeys(Plan& plan, RowPointer place) {
  for (const Tree& tree : trees_) {
    // An index whose columns do not change needs no key.
    if (!Affects(tree, plan)) continue;
    if (tree.encoder == nullptr) Refuse(tree.why_not, tree.name);
    KeyChange change{&tree, {}, {}};
    if (plan.before) change.old_key = KeyOf(tree, *plan.before);
    if (plan.row) {
      change.new_key = KeyOf(tree, *plan.row);
      RequireUnique(change, *plan.row, place);
    }
    if (change.old_key == change.new_key) continue;
    plan.keys.push_back(std::move(change));
  }
}

void TableEditor::RequireUnique(const KeyChange& change, const StoredRow& row,
                                RowPointer place) const {
  const Tree& tree = *change.tree;
  std::size_t nulls = 0;
  for (const std::size_t column : tree.encoder->columns()) {
    const bool null = !row.fields[column] && columns()[column].type != ColumnType::kBoolean;
    nulls += null ? 1 : 0;
  }
  if (nulls > 0 && tree.required) {
    throw Error(engine_error::kNullInKey,
                "Index or primary key cannot contain a Null value. Table '" + name() +
                    "', index '" + tree.name + "'.");
  }
  // Keys that are entirely null are not duplicates of one another.
  const bool all_null = nulls == tree.encoder->columns().size();
  if (!change.new_key || all_null || (tree.index->flags & kIndexUnique) == 0) return;
  const IndexEditor index(context_.pages(), *tree.index, table_->definition.page);
  if (!index.HasKeyOfOther(*change.new_key, place)) return;
  throw Error(engine_error::kDuplicateKey,
              "The changes you requested to the table were not successful because they would "
              "create duplicate values in the index, primary key, or relationship. Change the data "
              "in the field or fields that contain duplicate data, remove the index, or redefine "
              "the index to permit duplicate entries and try again. Table '" +
                  name() + "', index '" + tree.name + "'.");
}

const LongValueMaps& TableEditor::MapsOf(std::size_t column) const {
  const auto maps = std::ranges::find(table_->definition.long_values, columns()[column].number,
                                      &LongValueMaps::column_number);
  if (maps == table_->definition.long_values.end() || maps->owned_pages.page == 0 ||
      maps->free_pages.page == 0) {
    Refuse("the definition has no usage maps for column '" + columns()[column].name + "'");
  }
  return *maps;
}

void TableEditor::StoreLongValues(Plan& plan) {
  LongValueWriter writer(context_.pages());
  for (std::size_t i = 0; i < columns().size(); ++i) {
    if (!plan.changed[i] || !IsLongValue(columns()[i])) continue;
    if (plan.before && plan.before->fields[i]) writer.Free(MapsOf(i), *plan.before->fields[i]);
    if (plan.row && plan.row->fields[i]) {
      plan.row->fields[i] = writer.Store(MapsOf(i), *plan.row->fields[i]);
    }
  }
}

void TableEditor::ApplyKeys(const Plan& plan, RowPointer row) {
  for (const KeyChange& change : plan.keys) {
    IndexEditor index(context_.pages(), *change.tree->index, table_->definition.page);
    // The definition has the number of distinct keys of each index.
    const Layout& layout = context_.pages().layout();
    const std::size_t count = layout.tdef_first_index +
                              change.tree->position * layout.index_head_size + kTdefIndexEntries;
    if (change.old_key) {
      index.Remove(*change.old_key, row);
      if (!index.HasKey(*change.old_key)) AddToCount(count, -1);
    }
    if (change.new_key) {
      if (!index.HasKey(*change.new_key)) AddToCount(count, 1);
      index.Insert(*change.new_key, row);
    }
  }
}

// Stores the new bytes where the old ones are, else in the row's first slot, else on another page.
void TableEditor::Rewrite(const LocatedRow& located, Bytes row) {
  const TableDefinition& definition = table_->definition;
  ChangedPages& pages = context_.pages();
  FreeSpace free_space(pages, definition.owned_pages, definition.free_pages, definition.page);
  const RowPointer place = located.place();
  DataPageEditor page(pages, place.page, definition.page);
  if (page.CanReplace(place.row, row.size())) {
    page.Replace(place.row, row, page.Flags(place.row));
    page.Save();
    return free_space.NoteFreed(page);
  }
  for (const RowPointer hop : located.hops) DeleteSlot(hop);
  if (DataPageEditor home(pages, located.home.page, definition.page);
      home.CanReplace(located.home.row, row.size())) {
    home.Replace(located.home.row, row, 0);
    return home.Save();
  }
  std::array<std::byte, 4> pointer;
  free_space.Add(row, kRowHidden).Store(pointer.data());
  DataPageEditor home(pages, located.home.page, definition.page);
  if (!home.CanReplace(located.home.row, pointer.size())) {
    throw Corruption(located.home.page, "a row has no space for a pointer");
  }
  home.Replace(located.home.row, pointer, kRowOverflow);
  home.Save();
  free_space.NoteFreed(home);
}

void TableEditor::DeleteSlot(RowPointer row) {
  const TableDefinition& definition = table_->definition;
  DataPageEditor page(context_.pages(), row.page, definition.page);
  page.Row(row.row);
  page.Delete(row.row);
  page.Save();
  FreeSpace(context_.pages(), definition.owned_pages, definition.free_pages, definition.page)
      .NoteFreed(page);
}

// Adds to a count in the definition. Other programs may have left it too low: it stops at 0.
void TableEditor::AddToCount(std::size_t offset, int change) {
  std::byte* const at = &context_.pages().Change(table_->definition.page)[offset];
  const std::uint32_t count = Load32(at);
  Store32(at, change < 0 && count == 0 ? 0 : count + static_cast<std::uint32_t>(change));
}

}  // namespace tenora::access
