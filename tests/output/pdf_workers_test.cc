#include "output/pdf_workers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "platform/printing/paper.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using test::Poppler;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr PageMargins kMargins{1440, 1440, 1440, 1440};
constexpr std::size_t kLetters = 40;  // more than are drawn together, by more than one thread

// A red square, whose picture every such letter carries.
constexpr const char* kPicture =
    "{\\pict\\pngblip\\picwgoal600\\pichgoal600 "
    "89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de0000000c49444154789c63f8cfc0"
    "000003010100c9fe92ef0000000049454e44ae426082}";

std::string Rtf(const std::string& body) {
  return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}{\\f1\\fswiss Arial;}"
         "{\\f2\\fmodern Courier New;}}\\fs24 " +
         body + "}";
}

// Letters that differ in all that a PDF is made of: pages, fonts, pictures, tables, scripts.
std::string LetterSource(std::size_t number) {
  const std::string name = "Letter " + std::to_string(number) + " ";
  switch (number % 6) {
    case 0:
      return Rtf(name + "in \\b bold\\b0\\par and plain\\par");
    case 1:
      return Rtf("\\f1 " + name + std::string(kPicture) + " picture\\par");
    case 2:
      return Rtf("\\f2 " + name + "one\\page two\\page three (0 R, 12 0 R) endobj\\par");
    case 3:
      return Rtf("\\i " + name + "M\\u257?huta \\u1488?\\u1489? \\u8364?\\i0\\par");
    case 4:
      return Rtf("\\trowd\\cellx3000\\cellx6000\\intbl " + name + "\\cell right\\cell\\row\\pard");
    default:
      return Rtf("");
  }
}

std::string Pixels(const std::filesystem::path& pdf) {
  return Poppler({"pdftoppm", "-r", "40", pdf.string()});
}

std::map<std::size_t, PdfResult> ByNumber(std::vector<PdfResult> results) {
  std::map<std::size_t, PdfResult> by_number;
  for (PdfResult& result : results) by_number.emplace(result.number, std::move(result));
  return by_number;
}

TEST(PdfWorkers, MakeTheLettersThatASinglePrinterMakes) {
  const test::ScratchFolder folder;
  PdfWorkers workers(kMargins, 3);
  for (std::size_t i = 0; i < kLetters; ++i) {
    const std::string title = "Letter " + std::to_string(i) + " - M\u0101huta";
    workers.Add({i, LetterSource(i), title, folder / "letters" / (std::to_string(i) + ".pdf")});
  }
  const auto results = ByNumber(workers.Finish());
  ASSERT_EQ(results.size(), kLetters);
  for (const auto& [number, result] : results) {
    ASSERT_FALSE(result.error) << result.error->what();
    SCOPED_TRACE(result.path);
    RichTextBox box;
    box.SetTextRTF(LetterSource(number));
    const auto printers =
        printing::Printers::Create({printing::kPdfPrinterName, folder / "single.pdf"});
    PrintDocument(printers->Current(), box.Document(), result.title, kMargins);
    const auto single = printers->Current().EndJob();
    EXPECT_EQ(Poppler({"pdftotext", "-bbox", result.path.string(), "-"}).substr(400),
              Poppler({"pdftotext", "-bbox", single.string(), "-"}).substr(400));
    const std::string info = Poppler({"pdfinfo", result.path.string()});
    EXPECT_THAT(
        info, AllOf(HasSubstr(" " + result.title + "\n"), HasSubstr("Tenora"),
                    HasSubstr(number % 6 == 2 ? "Pages:           3\n" : "Pages:           1\n")));
    if (number < 6) {
      EXPECT_EQ(Pixels(result.path), Pixels(single));
    }
  }
}

TEST(PdfWorkers, KeepOtherFilesAndNameTheLetterThatFails) {
  const test::ScratchFolder folder;
  const auto taken = folder / "Letter.pdf", file = folder / "file";
  WriteWholeFile(taken, "mine");
  WriteWholeFile(file, "no folder");
  PdfWorkers workers(kMargins, 2);
  workers.Add({1, Rtf("one\\par"), "Letter to Smith", taken});
  workers.Add({2, Rtf("two\\par"), "Letter to Jones", file / "Letter.pdf"});
  workers.Add({3, Rtf("three\\par"), "Letter to Brown", taken});
  const auto results = ByNumber(workers.Finish());
  EXPECT_EQ(ReadWholeFile(taken), "mine");
  EXPECT_EQ(results.at(1).path, folder / "Letter(1).pdf");
  EXPECT_THAT(Poppler({"pdftotext", results.at(3).path.string(), "-"}), HasSubstr("three"));
  ASSERT_TRUE(results.at(2).error);
  EXPECT_THAT(std::string(results.at(2).error->description()), HasSubstr("\"Letter to Jones\""));
  EXPECT_THAT(results.at(2).path.string(), IsEmpty());

  PdfWorkers cramped({9000, 9000, 0, 0}, 1);
  cramped.Add({1, Rtf("one\\par"), "Letter to Smith", folder / "cramped.pdf"});
  const auto refused = cramped.Finish();
  ASSERT_TRUE(refused.at(0).error);
  EXPECT_THAT(std::string(refused.at(0).error->description()), HasSubstr("leave no room"));
  EXPECT_FALSE(std::filesystem::exists(folder / "cramped.pdf"));
}

TEST(PdfWorkers, EndWithLettersStillWaiting) {
  const test::ScratchFolder folder;
  {
    PdfWorkers workers(kMargins, 2);
    for (std::size_t i = 0; i < kLetters; ++i) {
      workers.Add({i, LetterSource(i), "Letter", folder / "letters/Letter.pdf"});
    }
  }
  // Letters already begun are complete and nothing else is left.
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
    if (!entry.is_regular_file()) continue;
    EXPECT_EQ(entry.path().extension(), ".pdf");
    EXPECT_THAT(Poppler({"pdfinfo", entry.path().string()}), HasSubstr("Tenora"));
  }
}

}  // namespace
}  // namespace tenora
