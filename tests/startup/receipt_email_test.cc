// The receipt as e-mail, through the built program and a real SMTP server.
#include "agency.h"
#include "support/mail_options.h"
#include "support/smtp_server.h"

namespace tenora {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class ReceiptEmail : public test::Agency {
 protected:
  // Sixteen-bit options hold ports above 32767 as negative numbers; both forms must arrive.
  test::SmtpServer server_{"plain"};
  void SetUp() override { test::SendMailTo(server_.port(), Database()); }
};

TEST_F(ReceiptEmail, GoesToTheTenantBesideOrInsteadOfPaper) {
  const test::ProcessResult both =
      Receipt(R"(PRINTRECEIPT="T00002" FORMAT="Receipt" TOEMAIL="True")");
  EXPECT_EQ(both.status, 0) << both.errors;
  EXPECT_EQ(Printed().size(), 1U);
  const test::ProcessResult alone =
      Receipt(R"(PRINTRECEIPT="T00002" FORMAT="Receipt" TOEMAIL="True" TOPRINTER="False")");
  EXPECT_EQ(alone.status, 0) << alone.errors;
  EXPECT_EQ(Printed().size(), 1U);
  ASSERT_EQ(server_.Messages().size(), 2U);
  EXPECT_EQ(server_.Envelope(1), "office@example.test\ntenant2@example.test");
  const std::string message = test::ParseMessage(server_.MessageFile(1));
  EXPECT_THAT(message, HasSubstr("subject: Receipt\n"));
  EXPECT_THAT(message, HasSubstr("of T00002 Élodie Evans-Pike"));
  EXPECT_THAT(message, HasSubstr("\">Receipt 1637 of T00002 Élodie Evans-Pike"));
}

TEST_F(ReceiptEmail, ATenantWithoutAddressFailsAloudAndIsStillPrinted) {
  const test::ProcessResult result =
      Receipt(R"(PRINTRECEIPT="T00006" FORMAT="Receipt" TOEMAIL="True")");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("Tama O'Brien has no e-mail address"));
  EXPECT_EQ(Printed().size(), 1U);
  EXPECT_THAT(server_.Messages(), IsEmpty());
}

TEST_F(ReceiptEmail, AnImpossibleAddressIsRefusedByTheTenantsName) {
  const std::string change = "update tenancy set email = 'nobody' where reference = 'T00002'";
  ASSERT_EQ(Run({"query", "--write", Database().string(), change}).status, 0);
  const test::ProcessResult result =
      Receipt(R"(PRINTRECEIPT="T00002" FORMAT="Receipt" TOEMAIL="True")");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("Élodie Evans-Pike: 5 - 'nobody' is not an e-mail address"));
  EXPECT_EQ(Printed().size(), 1U);
  EXPECT_THAT(server_.Messages(), IsEmpty());
}

TEST_F(ReceiptEmail, CarriesThePdfWhereTheSettingSaysSo) {
  StoreSetting("Receipt", "PdfAttachment", "1");
  EXPECT_EQ(Receipt(R"(PRINTRECEIPT="T00002" FORMAT="Receipt" TOEMAIL="1" TOPRINTER="0")").status,
            0);
  const std::string message = test::ParseMessage(server_.MessageFile(1));
  EXPECT_THAT(message, HasSubstr("multipart/mixed"));
  EXPECT_THAT(message, HasSubstr("application/pdf | Receipt.pdf | None"));
  EXPECT_THAT(server_.Messages().at(0), HasSubstr("JVBERi0")) << "no PDF in base64";
  EXPECT_THAT(Printed(), IsEmpty());
}

TEST_F(ReceiptEmail, HtmlCommandConvertsALetter) {
  WriteFile(Home() / "letter.rtf", "{\\rtf1\\ansi\\b Rent\\b0  & M\\u257?huta}");
  const std::string letter = (Home() / "letter.rtf").string();
  EXPECT_EQ(Run({"html", letter}).output, "<b>Rent</b> & M?huta");
  EXPECT_EQ(Run({"html", letter, "--options", "+U+E"}).output, "<b>Rent</b> &amp; M&#257;huta");
  const std::string document = Run({"html", letter, "--document"}).output;
  EXPECT_THAT(document, HasSubstr("<b>Rent</b> &amp; M\u0101huta</p>"));
  EXPECT_EQ(Run({"html", letter, "--options", "+D"}).output, document);
  // As other programs save it.
  WriteFile(Home() / "marked.rtf", "\xEF\xBB\xBF\r\n{\\rtf1\\ansi\\b Rent}");
  const std::string marked = (Home() / "marked.rtf").string();
  EXPECT_EQ(Run({"html", marked}).output, "<b>Rent</b>");
  EXPECT_THAT(Run({"html", marked, "--document"}).output, HasSubstr("<b>Rent</b></p>"));
  EXPECT_EQ(Run({"html", Database().string()}).status, 1);
  EXPECT_THAT(Run({"html", "absent.rtf"}).errors, HasSubstr("53 - File not found: absent.rtf"));
  EXPECT_EQ(Run({"html"}).status, 2);
}

}  // namespace
}  // namespace tenora
