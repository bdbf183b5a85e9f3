#include "merge/merge_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "platform/runtime/files.h"
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
