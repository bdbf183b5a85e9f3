// Builds small Access-format files byte by byte, with what the sample database does not have: Jet 3
// and ACE, every column type, overflow rows, long values, deleted rows and columns, and corruption.
// It implements the format independently and shares no code with the reader.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tenora::test {

// A number as the file stores it, little-endian.
template <typename T>
std::string Stored(T number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}
inline std::string Stored16(unsigned number) { return Stored(static_cast<std::uint16_t>(number)); }
inline std::string Stored32(std::uint32_t number) { return Stored(number); }
std::string Utf16(std::u16string_view text);
// A pointer to a row of a page.
std::string Pointer(std::uint32_t page, std::uint8_t row);
// The twelve bytes of a long value; `kind` is 0x80000000 inline, 0x40000000 single, 0 a chain.
std::string LongValueHead(std::uint32_t kind, std::size_t length, const std::string& pointer);

struct BuiltColumn {
  std::string name;
  int type;
  unsigned number;  // in the null mask
  bool fixed;
  unsigned place;  // offset of a fixed column, index of a variable one
  unsigned length = 0;
  unsigned flags = 0x02;
  unsigned precision = 0, scale = 0;
  unsigned more_flags = 0;  // not in Jet 3
};

struct BuiltIndex {
  std::string name;
  std::vector<std::pair<unsigned, bool>> columns;  // number, descending
  bool unique = false, primary = false;
  bool leaves_out_nulls = false;
  bool has_tree = false;  // an empty tree; without one, the index is only in the definition
};

struct BuiltTable {
  std::vector<BuiltColumn> columns;
  unsigned max_columns = 0, variable_columns = 0;  // deleted ones included
  std::vector<std::uint32_t> data_pages = {};      // ascending
  std::uint32_t row_count = 0;
  std::vector<BuiltIndex> indexes = {};
  bool indirect_map = false;
};

struct BuiltRow {
  std::string bytes;
  unsigned flags = 0;  // 0x8000 deleted, 0x4000 overflow
};

struct BuiltProperty {
  std::string owner;  // a column; empty: the table
  std::string name;
  int type;  // as of columns
  std::string value;
};

struct BuiltRelationship {
  std::string name, table, column, referenced, referenced_column;
  std::uint32_t flags = 0;  // 2 not enforced, 0x100 cascading changes, 0x1000 deletions
};

// A row of a saved query's definition.
struct BuiltPiece {
  int attribute;
  std::string name, second_name, expression;
  int flag = 0;
};

struct BuiltQuery {
  std::string name;
  std::vector<BuiltPiece> pieces;
  std::uint32_t flags = 0;  // in the catalogue
};

class FileBuilder {
 public:
  // Versions as in the file: 0 Jet 3, 1 Jet 4, 2 to 6 ACE.
  explicit FileBuilder(int version, unsigned code_page = 1252);

  bool jet3() const { return version_ == 0; }
  std::size_t page_size() const { return jet3() ? 2048 : 4096; }

  // Adds a page of zeros and returns its number.
  std::uint32_t NewPage();
  void SetPage(std::uint32_t page, const std::string& bytes);
  // Text as a text column of this version stores it, uncompressed; Jet 3 takes the bytes.
  std::string Text(const std::string& ascii) const;
  // `present` has a bit for each column that existed when the row was written; a boolean's is its
  // value.

  std::string Row(const std::vector<bool>& present, const std::string& fixed,
                  const std::vector<std::string>& variable) const;
  // A row of a table that never had a variable column.
  std::string FixedRow(const std::vector<bool>& present, const std::string& fixed) const;
  void PutRows(std::uint32_t page, std::uint32_t owner, const std::vector<BuiltRow>& rows);
  void PutLongValues(std::uint32_t page, const std::vector<std::string>& rows);
  // Writes the definition on `page` and as many further pages as it needs.
  void PutDefinition(std::uint32_t page, const BuiltTable& table);
  void AddToCatalogue(const std::string& name, std::uint32_t definition, int type = 1,
                      std::uint32_t flags = 0, const std::string& properties = {});
  // Properties as stored in the catalogue.
  std::string Properties(const std::vector<BuiltProperty>& properties) const;
  // Adds a table without deleted columns, on new pages. Members of `table` that follow from its
  // columns and rows are filled in.
  void AddTable(const std::string& name, BuiltTable table,
                const std::vector<std::string>& rows = {}, const std::string& properties = {});
  // Adds a table of another file, or with a `connect` text of something else.
  void AddLink(const std::string& name, const std::string& source, const std::string& database,
               const std::string& connect = {}, int type = 6);
  // The rows of the definitions are stored last first: their order is in them.
  void AddQueries(const std::vector<BuiltQuery>& queries);
  void AddRelationships(const std::vector<BuiltRelationship>& relationships);
  // Sets masked bytes of the header, such as the password or the encryption key.
  void SetHeader(std::size_t offset, const std::string& clear_bytes);

  // Returns the file; the builder must not be used after that.
  std::string Finish();

 private:
  std::string Count(std::size_t number) const;  // as wide as in a row
  std::string Name(const std::string& name) const;
  std::string Memo(const std::string& ascii) const;  // inline; nothing for an empty text
  std::string Pages(const std::vector<std::uint32_t>& pages, bool indirect);
  std::string ColumnRecord(const BuiltColumn& column) const;
  std::string IndexRecords(std::uint32_t definition, const BuiltTable& table);
  std::string EmptyTree(std::uint32_t definition);
  std::string Header() const;

  int version_;
  std::string clear_header_;
  std::vector<std::string> pages_;
  std::vector<BuiltRow> maps_;  // on page 3
  std::vector<BuiltRow> catalogue_;
};

}  // namespace tenora::test
