#include "letters/letter_preview.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class PreviewOfLetters : public testing::Test {
 protected:
  PreviewOfLetters() {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  }
  fs::path Home() const { return machine_.ProgramFolder(); }

  std::unique_ptr<LetterPreview> Of(const std::string& text, std::string_view kind = kTemplates) {
    RichTextBox box;
    box.SetTextRTF("{\\rtf1\\ansi " + text + "\\par}");
    auto preview = std::make_unique<LetterPreview>(session_, std::string(kind), "Notice");
    EXPECT_EQ(preview->Load(), "");
    preview->SetTemplate(box);
    return preview;
  }
  static std::string TextOf(const PreviewedLetter& letter) {
    EXPECT_EQ(letter.problem, "");
    RichTextBox box;
    box.SetTextRTF(letter.source);
    return std::string(TrimBlanks(ReplaceAll(box.Text(), "\r\n", " ")));
  }
  static std::vector<std::string> Findings(const PreviewedLetter& letter) {
    std::vector<std::string> texts;
    for (const LetterFinding& finding : letter.findings) {
      texts.push_back(finding.code + ": " + finding.sentence);
    }
    return texts;
  }
  // Every file of the program folder with its bytes, and every folder.
  std::map<std::string, std::string> Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(Home())) {
      files[entry.path().string()] = entry.is_directory() ? "" : ReadWholeFile(entry.path());
    }
    return files;
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
};

TEST_F(PreviewOfLetters, ShowsWhatARunSaves) {
  const TemplateLibrary library(Home());
  for (const std::string_view kind : {kTemplates, kOwnerTemplates}) {
    for (const std::string& name : library.Names(kind)) {
      SCOPED_TRACE(name);
      LetterPreview preview(session_, std::string(kind), name);
      ASSERT_EQ(preview.Load(), "");
      RichTextBox text;
      text.LoadFile(library.PathOf(kind, name), RichTextBox::FileType::kRtf);
      preview.SetTemplate(text);
      PromptAnswers given;
      for (const std::string& question : preview.Questions()) given[question] = "Friday";
      preview.SetAnswers(given);
      const std::vector<RecipientRow> rows = preview.Recipients({.closed = true});
      ASSERT_GT(rows.size(), 3U);
      for (const std::size_t i : {std::size_t{0}, std::size_t{3}, rows.size() - 1}) {
        const Recipient& recipient = rows[i].recipient;
        SCOPED_TRACE(rows[i].text);
        // First: a run takes a building's receipt number.
        const PreviewedLetter shown = preview.Show(recipient);
        GenerationRequest request;
        request.template_kind = kind;
        request.template_name = name;
        request.answers = given;
        request.recipients = {recipient};
        struct : GenerationObserver {
          void Saved(const fs::path& file) override { path = file; }
          fs::path path;
        } observer;
        GenerateSelection(session_, request, observer);
        ASSERT_FALSE(observer.path.empty());
        EXPECT_EQ(shown.source, ReadWholeFile(observer.path));
      }
    }
  }
}

TEST_F(PreviewOfLetters, ChangesNothingAndTakesNoReceiptNumber) {
  // T00007 and T00009 live in one building, whose first number is 1000; T00006 in none.
  const std::string text = "[<<BuildingReceiptNumber>>] <<Tenant Name>>: <<Balance Owing>>";
  const Recipient first{"", "T00007"}, second{"", "T00009"};
  const auto number = [](const PreviewedLetter& letter) { return TextOf(letter).substr(0, 6); };
  const std::map<std::string, std::string> before = Files();
  const auto preview = Of(text);
  EXPECT_EQ(number(preview->Show(first)), "[1000]");
  const PreviewedLetter again = preview->Show(second);
  EXPECT_EQ(number(again), "[1000]");
  EXPECT_THAT(Findings(again),
              Contains(HasSubstr("1000 is the next receipt number; a preview does not take it")));
  // A look-up that fails is not logged either.
  preview->Show({"Nobody", "T99999"});
  Of("<<TCustom:Pet>> <<FutureDate:x:Days>>")->Show(first);
  const std::map<std::string, std::string> after = Files();
  for (const auto& [file, bytes] : after) {
    const auto found = before.find(file);
    EXPECT_TRUE(found != before.end() && found->second == bytes) << file;
  }
  EXPECT_EQ(after.size(), before.size());
  EXPECT_THAT(machine_.dialogs.Texts(), IsEmpty());

  // What a run takes is seen at once.
  WriteWholeFile(Home() / "Templates/Notice.rtf", "{\\rtf1\\ansi " + text + "\\par}");
  GenerationObserver nobody;
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = "Notice";
  request.recipients = {{"Mei Huang", "T00007"}};
  ASSERT_TRUE(GenerateSelection(session_, request, nobody).complete());
  EXPECT_EQ(number(preview->Show(second)), "[1001]");
}

TEST_F(PreviewOfLetters, AsksEachQuestionOnceForEveryone) {
  const auto preview =
      Of("<<?Which day?>>, <<Tenant Code>>, <<?Which day?>> <<?Key of <<Tenant Code>>?>> <<?ab?>>");
  EXPECT_THAT(preview->Questions(), ElementsAre("Which day", "Key of <<Tenant Code>>"));
  const Recipient mei{"Mei Huang", "T00007"}, tama{"Tama O'Brien", "T00006"};

  PreviewedLetter shown = preview->Show(mei);
  EXPECT_EQ(TextOf(shown), "<<?Which day?>>, T00007, <<?Which day?>> <<?Key of T00007?>> <<?ab?>>");
  EXPECT_THAT(Findings(shown),
              AllOf(Contains(HasSubstr("Which day: this question has no answer yet")),
                    Contains(HasSubstr("Key of T00007: this question has no answer yet")),
                    Contains(HasSubstr("\"ab\" was not asked and stands in the letter")),
                    Not(Contains(HasSubstr("\"Which day\" was not asked")))));

  preview->SetAnswers({{"Which day", "Friday"}, {"Key of <<Tenant Code>>", "no. 4"}});
  EXPECT_EQ(TextOf(preview->Show(tama)), "Friday, T00006, Friday no. 4 <<?ab?>>");
  // The template is changed; what is still asked has its answer.
  RichTextBox changed;
  changed.SetTextRTF("{\\rtf1\\ansi <<?Which day?>> <<?Which hour?>>\\par}");
  preview->SetTemplate(changed);
  EXPECT_EQ(TextOf(preview->Show(mei)), "Friday <<?Which hour?>>");
}

TEST_F(PreviewOfLetters, SaysWhyThereIsNoLetter) {
  const auto preview = Of("Dear <<Tenant Name>>");
  const PreviewedLetter gone = preview->Show({"Nobody", "T99999"});
  EXPECT_EQ(gone.problem, "the rental database has no such tenancy");
  EXPECT_THAT(gone.source, HasSubstr("<<Tenant Name>>"));
  const auto unsound = Of("<<If Balance Owing > 0>> Please pay.");
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(unsound->Show({"Mei Huang", "T00007"}).problem, HasSubstr("<<If Balance Owing"));
  }

  fs::remove(Home() / "property.mdb");
  const PreviewedLetter unread = preview->Show({"Mei Huang", "T00007"});
  EXPECT_THAT(unread.problem, AllOf(HasSubstr("The rental database could not be read: "),
                                    HasSubstr("property.mdb"), Not(HasSubstr("\n"))));
  EXPECT_THAT(preview->Load(), HasSubstr("property.mdb"));
  fs::copy(test::SourceDir() / "examples/agency/property.mdb", Home());
  EXPECT_EQ(TextOf(preview->Show({"Mei Huang", "T00007"})), "Dear Mei Huang");
  EXPECT_THAT(machine_.dialogs.Texts(), IsEmpty());
}

TEST_F(PreviewOfLetters, ListsOpenRecipientsFirst) {
  const auto preview = Of("Dear <<Tenant Name>>");
  const auto open = preview->Recipients({}), all = preview->Recipients({.closed = true});
  ASSERT_FALSE(open.empty());
  EXPECT_LT(open.size(), all.size());
  EXPECT_EQ(all.front().text, open.front().text);
  EXPECT_TRUE(all.back().text.starts_with("(Closed) "));
  EXPECT_EQ(preview->Recipients({.search = "mei"}).size(), 1U);
}

}  // namespace
}  // namespace tenora
