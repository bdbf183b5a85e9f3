#include "agency/bulk_table.h"

#include <algorithm>
#include <stdexcept>

#include "platform/access/format/field_codec.h"
#include "platform/access/read/index_tree.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/read/usage_map.h"

namespace tenora {

using access::IndexEntry;

void BulkTable::Begin(const std::shared_ptr<access::ChangedPages>& pages) {
  pages_ = pages;
  const access::CatalogueEntry* const entry = access::SystemCatalogue(pages_).Find(name_);
  if (entry == nullptr) throw std::runtime_error("there is no table " + name_);
  table_ = access::ReadTable(pages_, name_, entry->definition_page);
  codec_ = std::make_unique<access::TextCodec>(pages_->header());
  keys_.resize(table_->definition.physical_indexes.size());
}

void BulkTable::End() {
  if (page_ != nullptr) page_->Save();
  page_.reset();
}

void BulkTable::NewPage() {
  End();
  const access::TableDefinition& definition = table_->definition;
  access::UsageMapEditor maps(*pages_);
  const std::uint32_t number = maps.Allocate();
  maps.Add(definition.owned_pages, number);
  access::DataPageEditor::Format(*pages_, number, definition.page);
  page_ = std::make_unique<access::DataPageEditor>(*pages_, number, definition.page);
}

void BulkTable::Add(const std::vector<Value>& values) {
  const access::TableDefinition& definition = table_->definition;
  access::StoredRow row;
  for (std::size_t i = 0; i < definition.columns.size(); ++i) {
    const Value number = std::int64_t{definition.last_auto_number} + rows_ + 1;
    const Value& value = definition.columns[i].auto_number ? number : values.at(i);
    row.fields.push_back(access::EncodeField(definition.columns[i], definition.places[i], value));
  }
  const std::vector<std::byte> bytes = row.Join(definition);
  if (page_ == nullptr || !page_->HasSpaceFor(bytes.size())) NewPage();
  const access::RowPointer place{page_->number(), page_->Add(bytes, 0)};
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    access::IndexKeyEncoder encoder(definition, definition.physical_indexes[i], *codec_);
    encoder.Encode(row.Pick(encoder.columns()), keys_[i].emplace_back().key);
    keys_[i].back().row = place;
  }
  ++rows_;
}

void BulkTable::BuildIndexes() {
  const access::TableDefinition& definition = table_->definition;
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    const access::PhysicalIndex& index = definition.physical_indexes[i];
    access::IndexWalk walk(*pages_, index.root_page);
    while (const IndexEntry* const entry = walk.Next()) keys_[i].push_back(*entry);
    std::sort(keys_[i].begin(), keys_[i].end());
    BuildIndex(index, keys_[i]);
    keys_[i].clear();
  }
  std::byte* const counts = pages_->Change(definition.page).data();
  const access::Layout& layout = pages_->layout();
  access::Store32(counts + layout.tdef_rows, access::Load32(counts + layout.tdef_rows) + rows_);
  if (std::ranges::none_of(definition.columns, &access::Column::auto_number)) return;
  access::Store32(counts + layout.tdef_auto_number,
                  access::Load32(counts + layout.tdef_auto_number) + rows_);
}

void BulkTable::BuildIndex(const access::PhysicalIndex& index, std::vector<IndexEntry>& entries) {
  FreePages(index);
  bool leaf = true;
  do {
    entries = BuildLevel(index, entries, leaf);
    leaf = false;
  } while (!entries.empty());
}

// The pages of the old tree but for its root, which never moves.
void BulkTable::FreePages(const access::PhysicalIndex& index) {
  access::UsageMapEditor maps(*pages_);
  const access::UsageMap owned(*pages_, index.owned_pages);
  for (std::uint32_t page = owned.NextFrom(0); page != access::PageBuffer::kNone;
       page = owned.NextFrom(page + 1)) {
    if (page == index.root_page) continue;
    if (maps.Release(page)) {
      maps.Remove(index.owned_pages, page);
    } else {
      std::ranges::fill(pages_->Change(page), std::byte{0});
    }
  }
}

// Writes the pages of a level and returns the entries for them in the level above; none when the
// level is the root.
std::vector<IndexEntry> BulkTable::BuildLevel(const access::PhysicalIndex& index,
                                              const std::vector<IndexEntry>& entries, bool leaf) {
  const access::Layout& layout = pages_->layout();
  const std::size_t capacity = layout.page_size - layout.index_page_entries;
  const std::size_t pointers = leaf ? 4 : 8;
  std::vector<std::vector<IndexEntry>> contents(1);
  std::size_t used = 0;
  for (const IndexEntry& entry : entries) {
    const std::size_t size = entry.key.size() + pointers;
    if (used + size > capacity) {
      contents.emplace_back();
      used = 0;
    }
    contents.back().push_back(entry);
    used += size;
  }
  access::UsageMapEditor maps(*pages_);
  std::vector<std::uint32_t> numbers{index.root_page};
  if (contents.size() > 1) {
    for (std::uint32_t& number : numbers = std::vector<std::uint32_t>(contents.size())) {
      number = maps.Allocate();
      maps.Add(index.owned_pages, number);
    }
  }
  std::vector<IndexEntry> above;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    access::IndexPage page;
    page.leaf = leaf;
    page.owner = table_->definition.page;
    page.previous = i == 0 ? 0 : numbers[i - 1];
    page.next = i + 1 == contents.size() ? 0 : numbers[i + 1];
    page.entries = std::move(contents[i]);
    IndexEntry last = page.entries.empty() ? IndexEntry() : page.entries.back();
    if (!leaf) {
      page.tail = last.child;
      page.entries.pop_back();
    }
    if (!access::ComposeIndexPage(layout, page, pages_->Change(numbers[i]))) {
      throw std::runtime_error("the entries of an index page do not fit");
    }
    last.child = numbers[i];
    above.push_back(std::move(last));
  }
  if (above.size() == 1) above.clear();
  return above;
}

}  // namespace tenora
