#include "merge/merge_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "merge/form_names.h"
#include "merge/template_forms.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::ElementsAreArray;

// The codes in one section of the guide.
std::set<std::string> CodesInGuide(std::string_view heading) {
  const std::string guide = ReadWholeFile(test::SourceDir() / "docs/merge-codes.md");
  const std::size_t begin = guide.find(std::string("\n## ").append(heading).append("\n"));
  EXPECT_NE(begin, std::string::npos) << heading;
  const std::string section = guide.substr(begin, guide.find("\n## ", begin + 1) - begin);
  std::set<std::string> names;
  for (std::size_t at = section.find(kCodeStart); at != std::string::npos;
       at = section.find(kCodeStart, at)) {
    at += kCodeStart.size();
    names.insert(section.substr(at, section.find(kCodeEnd, at) - at));
  }
  return names;
}

TEST(MergeCodes, AreExactlyThoseOfTheGuide) {
  const struct {
    TemplateKind kind;
    std::string_view heading;
    std::set<std::string> others;
  } sections[] = {
      {TemplateKind::kTenant, "Tenant codes", {std::string(kBuildingReceiptNumber)}},
      {TemplateKind::kOwner, "Owner codes", {}},
      {TemplateKind::kCheque, "Cheque codes", {}},
  };
  for (const auto& section : sections) {
    std::set<std::string> names = section.others;
    for (const MergeCode& code : MergeCodesOf(section.kind)) {
      if (code.source == CodeSource::kMenuCommand) continue;
      EXPECT_TRUE(names.emplace(code.name).second) << code.name << " is listed twice";
    }
    EXPECT_THAT(CodesInGuide(section.heading), ElementsAreArray(names));
  }
}

TEST(FormNames, AreExactlyThoseOfTheGuide) {
  constexpr std::string_view kHeading = "Text that depends on the recipient";
  const std::set<std::string> written = CodesInGuide(kHeading);
  const std::string guide = ReadWholeFile(test::SourceDir() / "docs/merge-codes.md");
  const std::size_t begin = guide.find(std::string("\n## ").append(kHeading));
  const std::string section = guide.substr(begin, guide.find("\n## ", begin + 1) - begin);
  std::set<std::string> names;
  const auto names_it = [&](std::string_view name) {
    EXPECT_THAT(section, testing::HasSubstr("`" + std::string(name) + "`"));
  };
  for (const Collection& collection : Collections()) {
    names_it(collection.name);
    names.insert(collection.CountName());
    for (const CollectionColumn& column : collection.columns) names.emplace(column.name);
    for (const std::string& total : collection.TotalNames()) names.insert(total);
    EXPECT_EQ(FindCollection(ToLower(collection.name)), &collection);
  }
  names.emplace(kOpeningBalance);
  for (const std::string& name : names) {
    EXPECT_TRUE(name.starts_with(kTotalStart) || written.contains(name)) << name;
  }
  for (const FormatName& format : FormatNames()) names_it(format.name);
  for (const TemplateKind kind : {TemplateKind::kTenant, TemplateKind::kOwner}) {
    for (const std::string_view fact : PrintedFacts(kind)) names_it(fact);
  }
  // And none besides, of those that look like columns and sums.
  for (const std::string& name : written) {
    const bool is_form = TemplateForms::IsForm(name, TemplateKind::kTenant) ||
                         TemplateForms::IsForm(name, TemplateKind::kOwner);
    const bool is_code =
        std::ranges::any_of(MergeCodesOf(TemplateKind::kTenant),
                            [&](const MergeCode& code) { return code.name == name; });
    EXPECT_TRUE(is_form || is_code || name == "Each …" || name == "If …") << name;
  }
}

TEST(MergeCodes, KeepTheirPositions) {
  const auto name = [](TemplateKind kind, std::size_t position) {
    return MergeCodesOf(kind)[position - 1].name;
  };
  EXPECT_EQ(name(TemplateKind::kTenant, 1), "Print Date");
  EXPECT_EQ(name(TemplateKind::kTenant, 16), "Tenancy End Date");
  EXPECT_EQ(name(TemplateKind::kTenant, 29), kPromptMessageItem);
  EXPECT_EQ(name(TemplateKind::kTenant, 33), "Contact Address1");
  EXPECT_EQ(name(TemplateKind::kTenant, 45), kFutureDateItem);
  EXPECT_EQ(name(TemplateKind::kCheque, 5), "Value in numbers");
  EXPECT_EQ(name(TemplateKind::kOwner, 12), "Mobile Phone");
  EXPECT_EQ(name(TemplateKind::kOwner, 20), kFutureDateItem);
}

}  // namespace
}  // namespace tenora
