#include "letters/named_filters.h"

#include <gmock/gmock.h>

#include "letters/template_library.h"
#include "platform/runtime/error.h"
#include "support/fake_platform.h"

namespace tenora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NamedFilterList : public testing::Test {
 protected:
  static NamedFilter Filter(const char* name, const char* condition,
                            std::string_view kind = kTemplates) {
    return {.name = name, .template_kind = std::string(kind), .condition = condition};
  }
  std::vector<std::string> Names(std::string_view for_template = {}) {
    std::vector<std::string> names;
    for (const NamedFilter& filter : filters.ListFor(kTemplates, for_template)) {
      names.push_back(filter.name);
    }
    return names;
  }

  FakePlatform machine;
  NamedFilters filters{*machine.registry};
};

TEST_F(NamedFilterList, KeepsFiltersByKindAndNameWithTheTemplateLastUsed) {
  EXPECT_THAT(Names(), IsEmpty());
  filters.Save(Filter("Whole rent", "Balance Owing >= Current Rent"));
  filters.Save(Filter("Arrears 14 days", "Days Behind >= 14\nand not Closed"));
  filters.Save(Filter("Arrears 14 days", "Arrears > 0", kOwnerTemplates));
  EXPECT_THAT(Names(), ElementsAre("Arrears 14 days", "Whole rent"));
  EXPECT_EQ(filters.Find(kTemplates, "ARREARS 14 days")->condition,
            "Days Behind >= 14 and not Closed");
  EXPECT_EQ(filters.Find(kOwnerTemplates, "arrears 14 days")->condition, "Arrears > 0");

  filters.Save(Filter("arrears 14 Days", "Days Behind >= 15"));
  EXPECT_THAT(Names(), ElementsAre("arrears 14 Days", "Whole rent"));
  filters.NoteUse(kTemplates, "Whole rent", "Rent review");
  filters.NoteUse(kTemplates, "no such", "Rent review");
  EXPECT_THAT(Names("Rent review"), ElementsAre("Whole rent", "arrears 14 Days"));
}

TEST_F(NamedFilterList, RenamesAndDeletes) {
  filters.Save(Filter("One", "Closed"));
  filters.Save(Filter("Two", "not Closed"));
  EXPECT_FALSE(filters.Rename(kTemplates, "One", "two"));
  EXPECT_FALSE(filters.Rename(kTemplates, "Three", "Four"));
  EXPECT_TRUE(filters.Rename(kTemplates, "One", "ONE"));
  EXPECT_THAT(Names(), ElementsAre("ONE", "Two"));
  EXPECT_TRUE(filters.Delete(kTemplates, "two"));
  EXPECT_FALSE(filters.Delete(kTemplates, "two"));
  EXPECT_THAT(Names(), ElementsAre("ONE"));
  for (const char* name : {"", "  ", "a\tb", "a\nb"}) {
    EXPECT_THROW(filters.Save(Filter(name, "Closed")), RuntimeError);
    EXPECT_THROW(filters.Rename(kTemplates, "ONE", name), RuntimeError);
  }
}

}  // namespace
}  // namespace tenora::test
