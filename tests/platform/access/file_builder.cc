#include "platform/access/file_builder.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>

namespace tenora::test {
namespace {

constexpr std::uint32_t kCatalogue = 2, kMaps = 3, kCatalogueRows = 4;
constexpr std::size_t kMasked = 0x18;

std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

// The header is masked with the RC4 key stream of a fixed key.
void Mask(std::string& header, std::size_t size) {
  constexpr std::array<unsigned, 4> kKey{0xC7, 0xDA, 0x39, 0x6B};
  std::array<unsigned, 256> s;
  std::iota(s.begin(), s.end(), 0U);
  for (unsigned i = 0, j = 0; i < 256; ++i) {
    j = (j + s[i] + kKey[i % 4]) & 255;
    std::swap(s[i], s[j]);
  }
  for (unsigned n = 0, i = 0, j = 0; n < size; ++n) {
    i = (i + 1) & 255;
    j = (j + s[i]) & 255;
    std::swap(s[i], s[j]);
    header[kMasked + n] = static_cast<char>(header[kMasked + n] ^ s[(s[i] + s[j]) & 255]);
  }
}

}  // namespace

std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += Stored(unit);
  return bytes;
}

std::string Pointer(std::uint32_t page, std::uint8_t row) { return Stored32(page << 8 | row); }

std::string LongValueHead(std::uint32_t kind, std::size_t length, const std::string& pointer) {
  return Stored32(kind | static_cast<std::uint32_t>(length)) + pointer + Zeros(4);
}

FileBuilder::FileBuilder(int version, unsigned code_page) : version_(version) {
  clear_header_ = Stored32(0x100) + (version >= 2 ? "Standard ACE DB" : "Standard Jet DB") + '\0';
  clear_header_ += Stored32(static_cast<std::uint32_t>(version));
  clear_header_ += Zeros(0x300 - clear_header_.size());
  SetHeader(0x3C, Stored16(code_page));
  if (!jet3()) {
    // The creation date; its integer part masks the password, which is empty here.
    SetHeader(0x72, Stored(38143.5));
    for (std::size_t i = 0x42; i < 0x6A; i += 4) SetHeader(i, Stored32(38143));
  }
  for (int i = 0; i < 5; ++i) NewPage();
}

void FileBuilder::SetHeader(std::size_t offset, const std::string& clear_bytes) {
  clear_header_.replace(offset, clear_bytes.size(), clear_bytes);
}

std::uint32_t FileBuilder::NewPage() {
  pages_.push_back(Zeros(page_size()));
  return static_cast<std::uint32_t>(pages_.size() - 1);
}

void FileBuilder::SetPage(std::uint32_t page, const std::string& bytes) {
  if (bytes.size() > page_size()) throw std::length_error("more than a page");
  pages_[page].replace(0, bytes.size(), bytes);
}

std::string FileBuilder::Text(const std::string& ascii) const {
  return jet3() ? ascii : Utf16(std::u16string(ascii.begin(), ascii.end()));
}

std::string FileBuilder::Count(std::size_t number) const {
  return jet3() ? std::string(1, static_cast<char>(number))
                : Stored16(static_cast<unsigned>(number));
}

std::string FileBuilder::FixedRow(const std::vector<bool>& present,
                                  const std::string& fixed) const {
  std::string mask = Zeros((present.size() + 7) / 8);
  for (std::size_t i = 0; i < present.size(); ++i) {
    if (present[i]) mask[i / 8] = static_cast<char>(mask[i / 8] | 1 << i % 8);
  }
  return Count(present.size()) + fixed + mask;
}

std::string FileBuilder::Row(const std::vector<bool>& present, const std::string& fixed,
                             const std::vector<std::string>& variable) const {
  std::string row = Count(present.size()) + fixed;
  std::vector<std::size_t> starts;
  for (const std::string& piece : variable) {
    starts.push_back(row.size());
    row += piece;
  }
  starts.push_back(row.size());
  const std::string mask = FixedRow(present, "").substr(jet3() ? 1 : 2);
  std::string jumps;
  if (jet3()) {
    // One entry for each full 256 bytes of the finished row, jump table included.
    const std::size_t rest = row.size() + starts.size() + 1 + mask.size();
    std::size_t count = (rest - 1) / 256;
    while ((rest + count - 1) / 256 > count) ++count;
    for (std::size_t i = 1; i <= count; ++i) {
      const auto reached = std::find_if(starts.begin(), starts.end(),
                                        [&](std::size_t start) { return start >= i * 256; });
      const bool unused = reached == starts.end();
      jumps.insert(jumps.begin(), static_cast<char>(unused ? 0xFF : reached - starts.begin()));
    }
  }
  for (auto start = starts.rbegin(); start != starts.rend(); ++start) row += Count(*start % 65536);
  return row + jumps + Count(variable.size()) + mask;
}

void FileBuilder::PutRows(std::uint32_t page, std::uint32_t owner,
                          const std::vector<BuiltRow>& rows) {
  std::size_t used = (jet3() ? 10 : 14) + 2 * rows.size();
  for (const BuiltRow& row : rows) used += row.bytes.size();
  if (used > page_size()) throw std::length_error("the rows do not fit on a page");
  const auto free = static_cast<unsigned>(page_size() - used);
  std::string head = Stored16(0x0101) + Stored16(free) + Stored32(owner) + Zeros(jet3() ? 0 : 4) +
                     Stored16(static_cast<unsigned>(rows.size()));
  std::size_t end = page_size();
  for (const BuiltRow& row : rows) {
    end -= row.bytes.size();
    pages_[page].replace(end, row.bytes.size(), row.bytes);
    head += Stored16(static_cast<unsigned>(end) | row.flags);
  }
  SetPage(page, head);
}

void FileBuilder::PutLongValues(std::uint32_t page, const std::vector<std::string>& rows) {
  std::vector<BuiltRow> built;
  for (const std::string& row : rows) built.push_back({row});
  PutRows(page, 0x4C41564C, built);
}

std::string FileBuilder::Pages(const std::vector<std::uint32_t>& pages, bool indirect) {
  const std::size_t inline_bytes = jet3() ? 128 : 64, bitmap_bytes = page_size() - 4;
  // An inline map starts at its first page, rounded down, so that not every map starts at 0.
  const std::uint32_t first = indirect || pages.empty() ? 0 : pages.front() / 8 * 8;
  const std::uint32_t last = pages.empty() ? 0 : pages.back();
  std::string bits = Zeros(std::max<std::size_t>(inline_bytes, last / 8 + 1 - first / 8));
  for (const std::uint32_t page : pages) {
    char& byte = bits[(page - first) / 8];
    byte = static_cast<char>(byte | 1 << page % 8);
  }
  if (indirect) {
    std::string map = "\1";
    for (std::size_t at = 0; at < bits.size(); at += bitmap_bytes) {
      const std::uint32_t bitmap = NewPage();
      SetPage(bitmap, Stored32(0x0105) + bits.substr(at, bitmap_bytes));
      map += Stored32(bitmap);
    }
    maps_.push_back({map + Zeros(inline_bytes)});
  } else {
    maps_.push_back({'\0' + Stored32(first) + bits});
  }
  return Pointer(kMaps, static_cast<std::uint8_t>(maps_.size() - 1));
}

std::string FileBuilder::Name(const std::string& name) const {
  const std::string text = Text(name);
  return Count(text.size()) + text;
}

std::string FileBuilder::ColumnRecord(const BuiltColumn& c) const {
  const std::string number = Stored16(c.number);
  const std::string variable = Stored16(c.fixed ? 0 : c.place);
  const std::string offset = Stored16(c.fixed ? c.place : 0) + Stored16(c.length);
  const std::string flags(1, static_cast<char>(c.flags | (c.fixed ? 1U : 0U)));
  const std::string digits{static_cast<char>(c.precision), static_cast<char>(c.scale)};
  const std::string type(1, static_cast<char>(c.type));
  if (jet3()) {
    return type + number + variable + number + Stored16(0x409) + digits + Zeros(2) + flags + offset;
  }
  return type + Stored32(0x659) + number + variable + number + digits + Zeros(2) + flags +
         static_cast<char>(c.more_flags) + Zeros(4) + offset;
}

// The pointer to the usage map of an empty index, and its root page.
std::string FileBuilder::EmptyTree(std::uint32_t definition) {
  const std::uint32_t root = NewPage();
  const std::size_t entries = jet3() ? 0xF8 : 0x1E0;
  SetPage(root, Stored16(0x0104) + Stored16(static_cast<unsigned>(page_size() - entries)) +
                    Stored32(definition));
  return Pages({root}, false) + Stored32(root);
}

std::string FileBuilder::IndexRecords(std::uint32_t definition, const BuiltTable& table) {
  std::string physical, logical, names;
  std::uint32_t position = 0;
  for (const BuiltIndex& index : table.indexes) {
    physical += Zeros(jet3() ? 0 : 4);
    for (std::size_t slot = 0; slot < 10; ++slot) {
      const bool used = slot < index.columns.size();
      physical += Stored16(used ? index.columns[slot].first : 0xFFFF);
      physical += used && !index.columns[slot].second ? '\1' : '\0';
    }
    physical += index.has_tree ? EmptyTree(definition) : Zeros(8);
    physical += Zeros(jet3() ? 0 : 4);
    physical += static_cast<char>((index.unique ? 1 : 0) | (index.leaves_out_nulls ? 2 : 0));
    physical += Zeros(jet3() ? 0 : 5);
    logical += Zeros(jet3() ? 0 : 4) + Stored32(position) + Stored32(position) + Zeros(1) +
               Stored32(0xFFFFFFFF) + Zeros(6) + (index.primary ? '\1' : '\0');
    logical += Zeros(jet3() ? 0 : 4);
    names += Name(index.name);
    ++position;
  }
  return physical + logical + names;
}

void FileBuilder::PutDefinition(std::uint32_t page, const BuiltTable& table) {
  const auto indexes = static_cast<std::uint32_t>(table.indexes.size());
  std::string body = Stored32(0);  // the length, set below
  body += jet3() ? "" : Stored32(0x659);
  body += Stored32(table.row_count) + Stored32(0) + (jet3() ? "" : Stored32(1) + Zeros(12)) + 'N';
  body += Stored16(table.max_columns) + Stored16(table.variable_columns) +
          Stored16(static_cast<unsigned>(table.columns.size())) + Stored32(indexes) +
          Stored32(indexes);
  body += Pages(table.data_pages, table.indirect_map) + Pages({}, false);
  body += Zeros((jet3() ? 8 : 12) * table.indexes.size());
  for (const BuiltColumn& column : table.columns) body += ColumnRecord(column);
  for (const BuiltColumn& column : table.columns) body += Name(column.name);
  body += IndexRecords(page, table);
  for (const BuiltColumn& column : table.columns) {
    const bool long_value = column.type == 11 || column.type == 12;
    if (long_value) body += Stored16(column.number) + Pages({}, false) + Pages({}, false);
  }
  body += Stored16(0xFFFF);
  body.replace(0, 4, Stored32(static_cast<std::uint32_t>(body.size()) + 8));
  const std::size_t room = page_size() - 8;
  for (std::size_t at = 0; at < body.size(); at += room) {
    const std::uint32_t next = at + room < body.size() ? NewPage() : 0;
    SetPage(page, Stored16(0x0102) + "VC" + Stored32(next) + body.substr(at, room));
    page = next;
  }
}

void FileBuilder::AddToCatalogue(const std::string& name, std::uint32_t definition, int type,
                                 std::uint32_t flags, const std::string& properties) {
  const std::string fixed =
      Stored32(definition) + Stored16(static_cast<unsigned>(type)) + Stored32(flags);
  std::vector<std::string> variable = {Text(name)};
  if (!properties.empty()) {
    variable.push_back(LongValueHead(0x80000000, properties.size(), Stored32(0)) + properties);
  }
  catalogue_.push_back({Row({true, true, true, true, !properties.empty()}, fixed, variable)});
}

std::string FileBuilder::Properties(const std::vector<BuiltProperty>& properties) const {
  const auto counted = [](const std::string& bytes) {
    return Stored16(static_cast<unsigned>(bytes.size())) + bytes;
  };
  const auto chunk = [](unsigned type, const std::string& bytes) {
    return Stored32(static_cast<std::uint32_t>(bytes.size() + 6)) + Stored16(type) + bytes;
  };
  std::string names, blocks;
  unsigned number = 0;
  for (const BuiltProperty& property : properties) {
    names += counted(Text(property.name));
    const std::string owner = counted(Text(property.owner));
    const std::string entry = std::string{'\0', static_cast<char>(property.type)} +
                              Stored16(number++) + counted(property.value);
    blocks += chunk(property.owner.empty() ? 0 : 1,
                    Stored32(static_cast<std::uint32_t>(owner.size() + 4)) + owner +
                        Stored16(static_cast<unsigned>(entry.size() + 2)) + entry);
  }
  return std::string(jet3() ? "KKD\0" : "MR2\0", 4) + chunk(0x80, names) + blocks;
}

void FileBuilder::AddTable(const std::string& name, BuiltTable table,
                           const std::vector<std::string>& rows, const std::string& properties) {
  const std::uint32_t definition = NewPage();
  table.max_columns = static_cast<unsigned>(table.columns.size());
  table.variable_columns = static_cast<unsigned>(
      std::ranges::count_if(table.columns, [](const BuiltColumn& c) { return !c.fixed; }));
  table.row_count = static_cast<std::uint32_t>(rows.size());
  const std::size_t room = page_size() - 14;
  std::vector<std::vector<BuiltRow>> pages(1);
  std::size_t used = 0;
  for (const std::string& row : rows) {
    if (used + row.size() + 2 > room) {
      pages.emplace_back();
      used = 0;
    }
    pages.back().push_back({row});
    used += row.size() + 2;
  }
  for (const std::vector<BuiltRow>& page : pages) {
    table.data_pages.push_back(NewPage());
    PutRows(table.data_pages.back(), definition, page);
  }
  PutDefinition(definition, table);
  AddToCatalogue(name, definition, 1, 0, properties);
}

std::string FileBuilder::Memo(const std::string& ascii) const {
  const std::string text = Text(ascii);
  return text.empty() ? text : LongValueHead(0x80000000, text.size(), Stored32(0)) + text;
}

void FileBuilder::AddLink(const std::string& name, const std::string& source,
                          const std::string& database, const std::string& connect, int type) {
  const std::string fixed =
      Stored32(0) + Stored16(static_cast<unsigned>(type)) + Stored32(0x200000);
  catalogue_.push_back(
      {Row({true, true, true, true, false, true, !database.empty(), !connect.empty()}, fixed,
           {Text(name), "", Text(source), Text(database), Text(connect)})});
}

void FileBuilder::AddQueries(const std::vector<BuiltQuery>& queries) {
  BuiltTable table;
  table.columns = {{"Attribute", 2, 0, true, 0, 1}, {"Expression", 12, 1, false, 0, 0},
                   {"Flag", 3, 2, true, 1, 2},      {"Name1", 10, 3, false, 1, 510},
                   {"Name2", 10, 4, false, 2, 510}, {"ObjectId", 4, 5, true, 3, 4},
                   {"Order", 9, 6, false, 3, 255}};
  std::vector<std::string> rows;
  std::uint32_t id = 0x80000000;
  for (const BuiltQuery& query : queries) {
    AddToCatalogue(query.name, ++id, 5, query.flags);
    char order = 0;
    for (const BuiltPiece& piece : query.pieces) {
      const std::string fixed = static_cast<char>(piece.attribute) +
                                Stored16(static_cast<unsigned>(piece.flag)) + Stored32(id);
      const std::vector<bool> present = {true,
                                         !piece.expression.empty(),
                                         true,
                                         !piece.name.empty(),
                                         !piece.second_name.empty(),
                                         true,
                                         true};
      rows.insert(rows.begin(), Row(present, fixed,
                                    {Memo(piece.expression), Text(piece.name),
                                     Text(piece.second_name), std::string(3, '\0') + ++order}));
    }
  }
  AddTable("MSysQueries", table, rows);
}

void FileBuilder::AddRelationships(const std::vector<BuiltRelationship>& relationships) {
  BuiltTable table;
  table.columns = {{"grbit", 4, 0, true, 0, 4}, {"icolumn", 4, 1, true, 4, 4}};
  unsigned place = 0;
  for (const char* name :
       {"szRelationship", "szObject", "szColumn", "szReferencedObject", "szReferencedColumn"}) {
    table.columns.push_back({name, 10, place + 2, false, place, 100});
    ++place;
  }
  std::vector<std::string> rows;
  for (const BuiltRelationship& one : relationships) {
    rows.push_back(Row(std::vector<bool>(7, true), Stored32(one.flags) + Stored32(0),
                       {Text(one.name), Text(one.table), Text(one.column), Text(one.referenced),
                        Text(one.referenced_column)}));
  }
  AddTable("MSysRelationships", table, rows);
}

std::string FileBuilder::Header() const {
  std::string header = clear_header_;
  Mask(header, jet3() ? 126 : 128);
  return header;
}

std::string FileBuilder::Finish() {
  BuiltTable objects;
  objects.columns = {{"Id", 4, 0, true, 0, 4},           {"Type", 3, 1, true, 4, 2},
                     {"Flags", 4, 2, true, 6, 4},        {"Name", 10, 3, false, 0, 128},
                     {"LvProp", 11, 4, false, 1, 0},     {"ForeignName", 10, 5, false, 2, 128},
                     {"Database", 10, 6, false, 3, 510}, {"Connect", 10, 7, false, 4, 510}};
  objects.max_columns = 8;
  objects.variable_columns = 5;
  objects.data_pages = {kCatalogueRows};
  AddToCatalogue("MSysObjects", kCatalogue, 1, 0x80000000);
  objects.row_count = static_cast<std::uint32_t>(catalogue_.size());
  PutDefinition(kCatalogue, objects);
  PutRows(kCatalogueRows, kCatalogue, catalogue_);
  PutRows(kMaps, 0, maps_);
  PutRows(1, 1, {{Zeros(69)}});
  SetPage(0, Header());
  std::string file;
  for (const std::string& page : pages_) file += page;
  return file;
}

}  // namespace tenora::test
