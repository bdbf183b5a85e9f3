// What an editor holds and nobody touched is written as it was.
#include <gtest/gtest.h>

#include <QTextDocument>

#include "editor_fixture.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/document/letter_reader.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

struct Converted {
  std::string source;
  std::string before, after;
  bool positions_agree = true;
};

Converted ThroughQt(const std::string& rtf) {
  Converted result;
  const richtext::Document letter = richtext::ReadRtf(rtf);
  result.before = richtext::WriteRtf(letter);
  LetterFormats formats;
  formats.SetHead(letter);
  QTextDocument shown;
  QTextCursor cursor(&shown);
  LetterLoader(formats).Insert(&cursor, letter.blocks, true);
  LetterReader reader(formats);
  richtext::Document back = formats.head();
  back.blocks = reader.Read(shown);
  result.after = richtext::WriteRtf(back);

  // Every character that is shown as itself is at the position that the map gives. The end of a
  // covered cell is not shown: it has the position of what follows.
  const std::u16string text = richtext::PositionText(letter.blocks);
  for (int i = 0; i < static_cast<int>(text.size()); ++i) {
    const QChar character = text[static_cast<std::size_t>(i)];
    const int place = reader.positions().ToQt(i);
    const QChar there = shown.characterAt(place);
    if (!character.isLetterOrNumber() || !there.isLetterOrNumber()) continue;
    if (there != character || reader.positions().ToBox(place) != i) result.positions_agree = false;
  }
  return result;
}

std::vector<fs::path> Letters() {
  std::vector<fs::path> letters;
  for (const char* folder : {"examples", "tests/fuzz", "tests/ui/editor"}) {
    for (const auto& entry : fs::recursive_directory_iterator(test::SourceDir() / folder)) {
      if (entry.is_regular_file() && richtext::IsRtf(ReadWholeFile(entry.path())))
        letters.push_back(entry.path());
    }
  }
  return letters;
}

TEST(RoundTrip, WritesEveryUntouchedLetterAsItWas) {
  const std::vector<fs::path> letters = Letters();
  EXPECT_GT(letters.size(), 10u);
  for (const fs::path& path : letters) {
    const Converted letter = ThroughQt(ReadWholeFile(path));
    EXPECT_EQ(letter.before, letter.after) << path;
    EXPECT_TRUE(letter.positions_agree) << path;
  }
}

}  // namespace
}  // namespace tenora
