#include "startup/shell_line.h"

#include <gmock/gmock.h>

namespace tenora {
namespace {

using testing::ElementsAreArray;

// `replaced` is what bash hands over: the line's end after the last of its break characters.
TEST(ShellLine, QuotesWhatStandsInForTheWordAtTheCursor) {
  using Texts = std::vector<std::string>;
  const struct {
    const char *line, *replaced;
    Texts candidates, completions;
  } cases[] = {
      {"tenora ", "", {"query"}, {"query"}},
      {"tenora q", "q", {"query", "check"}, {"query"}},
      {"t -r ", "", {"Rent review"}, {"Rent\\ review"}},
      {"t -r Rent\\ r", "Rent\\ r", {"Rent review", "Rent arrears"}, {"Rent\\ review"}},
      {"t -r \"Rent r", "Rent r", {"Rent review"}, {"Rent review"}},
      {"t -r Rent\\", "Rent\\", {"Rent review"}, {"Rent\\ review"}},
      {"t --r=Re", "Re", {"--r=Rent review"}, {"Rent\\ review"}},
      {"t --r=\"Re", "Re", {"--r=Rent $5"}, {"Rent \\$5"}},
      {"t -r O",
       "O",
       {"O'Brien \"T\" \\ $x `y` !"},
       {"O\\'Brien\\ \\\"T\\\"\\ \\\\\\ \\$x\\ \\`y\\`\\ \\!"}},
      {"t -r \"O", "O", {"O'B \"T\" \\ $x!y!"}, {"O'B \\\"T\\\" \\\\ \\$x\"\\!\"y!"}},
      {"t -r 'O", "O", {"O'Brien $x"}, {"O'\\''Brien $x"}},
      {"t -r \"O'B", "O'B", {"O'Brien"}, {"O'Brien"}},
      // The texts' common beginning ends where that of the names ends, never after a backslash.
      {"t -r Ta", "Ta", {"Tama O'B", "Tama Ox"}, {"Tama\\ O\"'\"B", "Tama\\ Ox"}},
      {"t -r Ta", "Ta", {"Tama O'B", "Tama O x"}, {"Tama\\ O\"'\"B", "Tama\\ O\\ x"}},
      {"t -r \"T", "T", {"T$", "T`"}, {"T\"\\$\"", "T\\`"}},
      {"t -r ", "", {"É", "È"}, {"É", "È"}},
      // Twice the same, and what would write over the terminal.
      {"t -r T", "T", {"Ta", "Ta", "T\x1b[2J", "T\nb"}, {"Ta"}},
      {"t -r x", "x", {"Ta"}, {}},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(ShellLine(c.line, c.replaced).Completions(c.candidates),
                ElementsAreArray(c.completions))
        << c.line;
  }
}

TEST(ShellLine, ReadsTheWordsAsTheShellDoes) {
  const struct {
    const char* line;
    std::vector<std::string> words;
    const char* current;
  } cases[] = {
      {"tenora", {}, "tenora"},
      {"  tenora\tlint ", {"tenora", "lint"}, ""},
      {"t 'a b'\"c d\"e\\ f '", {"t", "a bc de f"}, ""},
      {"t \"a\\\"\\x\" \"\" b\\", {"t", "a\"\\x", ""}, "b"},
      {"t --to='f", {"t"}, "--to=f"},
  };
  for (const auto& c : cases) {
    const ShellLine line(c.line, "");
    EXPECT_THAT(line.words(), ElementsAreArray(c.words)) << c.line;
    EXPECT_EQ(line.current(), c.current) << c.line;
  }
}

}  // namespace
}  // namespace tenora
