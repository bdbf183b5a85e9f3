// Any sequence of forms, text, paragraphs and tables is read; one in which lint finds nothing wrong
// is filled, and the letter is in canonical form.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "merge/template_forms.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "rental/session.h"
#include "support/fake_platform.h"

namespace {

using namespace tenora;

constexpr const char* kPieces[] = {
    "<<If Current Rent > 0>>",
    "<<If Closed>>",
    "<<Else>>",
    "<<Else If Days Behind > 5>>",
    "<<End If>>",
    "<<Each Payment where Payment Number < 60>>",
    "<<Each Rent Change>>",
    "<<Each Inspection newest first>>",
    "<<End Each>>",
    "<<Payment Date:short>>",
    "<<Total Payment Amount>>",
    "<<Current Rent:words>>",
    "<<Tenant Name>>",
    "word ",
    "\\b ",
    "\\b0 ",
    "\\par ",
    "\\par\\par ",
    "\\line ",
    "\\page ",
    "\\tab ",
    "\\sect\\sectd\\pgwsxn9000 ",
    "\\trowd\\cellx2000\\cellx4000\\pard\\intbl ",
    "\\cell ",
    "\\row ",
    "\\pard ",
    "\\pard\\intbl\\itap2 ",
    "\\nestcell ",
    "{\\*\\nesttableprops\\trowd\\cellx1000\\nestrow}",
    "{\\*\\bkmkstart m}",
    "{\\*\\bkmkend m}",
    "{\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt ",
    "}}",
    "{\\footnote ",
    "}",
    "{\\pntext 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec}",
    "{\\header ",
    "\\'e9",
    "<<",
    ">>",
};

// A tenancy of the sample agency.
struct Agency {
  Agency() {
    machine.InstallSampleDatabase();
    session.database.OpenDatabase();
    session.caches.Load(session.database);
  }
  test::FakePlatform machine;
  Session session{machine.Parts()};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Agency* const agency = new Agency;
  std::string source = R"({\rtf1\ansi\deff0{\fonttbl{\f0\fnil Arial;}}\pard )";
  for (std::size_t i = 0; i < size && i < 300; ++i) source += kPieces[data[i] % std::size(kPieces)];
  RichTextBox letter;
  letter.SetTextRTF(richtext::WriteRtf(richtext::ReadRtf(source + "}")));
  static_cast<void>(TemplateForms::MayHold(source, TemplateKind::kTenant));
  const TemplateForms forms(letter.TextRTF(), TemplateKind::kTenant);
  if (!forms.Findings().empty()) return 0;
  LetterMembers members;
  members.TenantCode = "T00001";
  forms.Fill({agency->session, members, letter}, *agency->session.caches.FindTenant("T00001"));
  const std::string& filled = letter.TextRTF();
  const std::string canonical = richtext::WriteRtf(richtext::ReadRtf(filled));
  if (filled == canonical) return 0;
  std::fprintf(stderr, "not canonical:\n%s\n---\n%s\n--- of\n%s\n", filled.c_str(),
               canonical.c_str(), source.c_str());
  std::abort();
}
