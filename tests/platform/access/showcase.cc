#include "platform/access/showcase.h"

#include "platform/access/file_builder.h"

namespace tenora::test {
namespace {

using Bits = std::vector<bool>;

void AddAllTypes(FileBuilder& builder, int version, const std::string& name) {
  const bool has_decimal = version >= 1, has_large = version >= 5;
  const std::uint32_t definition = builder.NewPage(), data = builder.NewPage();
  BuiltTable table;
  table.columns = {
      {"flag", 1, 0, true, 0, 1},       {"tiny", 2, 1, true, 0, 1},
      {"short", 3, 2, true, 1, 2},      {"number", 4, 3, true, 3, 4, 0x06},
      {"money", 5, 4, true, 7, 8},      {"single", 6, 5, true, 15, 4},
      {"double", 7, 6, true, 19, 8},    {"when", 8, 7, true, 27, 8},
      {"bytes", 9, 8, false, 0, 20},    {"text", 10, 9, false, 1, 40},
      {"letters", 10, 10, true, 35, 6}, {"guid", 15, 11, true, 41, 16},
  };
  if (has_decimal) table.columns.push_back({"exact", 16, 12, true, 57, 17, 2, 18, 4});
  if (has_large) {
    table.columns.push_back({"large", 19, 13, true, 74, 8});
    table.columns.push_back({"moment", 20, 14, true, 82, 42});
    table.columns.push_back({"list", 18, 15, true, 124, 4, 7});
  }
  table.max_columns = static_cast<unsigned>(table.columns.size());
  table.variable_columns = 2;
  table.data_pages = {data};
  table.row_count = 3;
  table.indexes = {{"PrimaryKey", {{3, false}}, true, true},
                   {"by_text", {{9, false}, {7, true}}, false, false}};

  const auto row = [&](bool flag, int sign, double when, const std::string& text,
                       const std::string& moment) {
    std::string fixed = std::string(1, static_cast<char>(200)) +
                        Stored(static_cast<std::int16_t>(sign * 12345)) +
                        Stored(sign * 2000000000) + Stored(sign * std::int64_t{123456789012345}) +
                        Stored(static_cast<float>(sign) * 0.375F) + Stored(sign * 1.0625e100) +
                        Stored(when) + builder.Text(builder.jet3() ? "abcdef" : "abc");
    for (char c = 1; c <= 16; ++c) fixed += c;
    // 2^64 + 12345, four decimals.
    if (has_decimal) {
      fixed += std::string(1, sign < 0 ? '\x80' : '\0') + Stored32(0) + Stored32(1) + Stored32(0) +
               Stored32(12345);
    }
    if (has_large) fixed += Stored(sign * std::int64_t{9007199254740993}) + moment + Stored32(7);
    Bits present(table.max_columns, true);
    present[0] = flag;
    return builder.Row(present, fixed, {"\1\x80\xFF", text});
  };
  const std::string compressed = builder.jet3() ? "plain" : "\xFF\xFEplain";
  const std::string fixed_nulls(has_large ? 128 : has_decimal ? 74 : 57, '\0');
  builder.PutRows(data, definition,
                  {{row(true, 1, 46347.75, compressed,
                        "0000000000000739940:0000000648000000000:7" + std::string(1, '\0'))},
                   {row(false, -1, -243249.25, builder.Text("1234"),
                        "0000000000000000000:0000000000000000001:7" + std::string(1, '\0'))},
                   {row(true, 1, 0, compressed, std::string(42, ' ')), 0xC000},
                   {builder.Row(Bits(table.max_columns, false), fixed_nulls, {"", ""})}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue(name, definition);
}

void AddLongValues(FileBuilder& builder, const std::string& name) {
  const std::uint32_t definition = builder.NewPage(), data = builder.NewPage();
  const std::uint32_t values = builder.NewPage(), more = builder.NewPage();
  BuiltTable table;
  table.columns = {{"id", 4, 0, true, 0, 4}, {"memo", 12, 1, false, 0}, {"ole", 11, 2, false, 1}};
  table.max_columns = 3;
  table.variable_columns = 2;
  table.data_pages = {data};
  table.row_count = 4;
  const std::string inside = builder.Text("within the row");
  const std::string single = builder.Text("on a page of its own");
  const std::string chained = builder.Text(ChainedText());
  const std::size_t half = builder.page_size() - 200;
  builder.PutLongValues(values, {single, Pointer(more, 1) + chained.substr(0, half)});
  builder.PutLongValues(more, {"another's", Stored32(0) + chained.substr(half)});
  const auto row = [&](std::uint32_t id, const std::string& value) {
    return BuiltRow{builder.Row({true, true, true}, Stored32(id), {value, value})};
  };
  builder.PutRows(data, definition,
                  {row(1, LongValueHead(0x80000000, inside.size(), Stored32(0)) + inside),
                   row(2, LongValueHead(0x40000000, single.size(), Pointer(values, 0))),
                   row(3, LongValueHead(0, chained.size(), Pointer(values, 1))),
                   {builder.Row({true, false, false}, Stored32(4), {"", ""})}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue(name, definition);
}

void AddChanged(FileBuilder& builder, const std::string& name) {
  const std::uint32_t definition = builder.NewPage(), first = builder.NewPage(),
                      second = builder.NewPage(), third = builder.NewPage();
  BuiltTable table;
  // Column 1 and variable column 0 are deleted; column 4 was added after the first row was written.
  table.columns = {{"id", 4, 0, true, 0, 4},
                   {"kept", 10, 2, false, 1, 40},
                   {"last", 10, 3, false, 2, 40},
                   {"young", 3, 4, true, 8, 2}};
  table.max_columns = 5;
  table.variable_columns = 3;
  table.data_pages = {first, second, third};
  table.row_count = 4;
  table.indirect_map = true;
  const auto text = [&](const char* ascii) { return builder.Text(ascii); };
  const std::string gap = Stored32(99);
  builder.PutRows(
      first, definition,
      {{builder.Row({true, true, true, true}, Stored32(1) + gap, {"xx", text("one"), text("end")})},
       {"", 0xC000},
       {builder.Row({true, false, true, false, true}, Stored32(2) + gap + Stored16(22),
                    {"", text("two"), ""})}});
  // A moved row keeps its size in its old place; only the start is the pointer.
  builder.PutRows(second, definition,
                  {{builder.Row({true, false, false, true, true}, Stored32(3) + gap + Stored16(33),
                                {"", "", text("three")})},
                   {Pointer(third, 0) + "what is left", 0x4000}});
  builder.PutRows(third, definition,
                  {{builder.Row({true, false, true, false, true}, Stored32(4) + gap + Stored16(44),
                                {"", text("moved"), ""}),
                    0x8000}});
  builder.PutDefinition(definition, table);
  builder.AddToCatalogue(name, definition);
}

}  // namespace

std::string ChainedText() {
  std::string text;
  for (int i = 0; text.size() < 2500; ++i) text += "piece " + std::to_string(i) + ", ";
  return text;
}

std::string Showcase(int version, const ShowcaseNames& names) {
  FileBuilder builder(version);
  AddAllTypes(builder, version, names.all_types);
  AddLongValues(builder, names.long_values);
  AddChanged(builder, names.changed);
  return builder.Finish();
}

}  // namespace tenora::test
