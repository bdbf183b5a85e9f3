#include "letters/recipients.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "letters/template_library.h"

namespace tenora {
namespace {

using testing::ElementsAre;

TenantRecord Tenant(const char* code, const char* name, bool closed, const char* email) {
  TenantRecord tenant;
  tenant.Reference = code;
  tenant.KeyName = name;
  tenant.PropertyCode = std::string("P") + code;
  tenant.Closed = closed;
  tenant.Email = email;
  return tenant;
}

class Recipients : public testing::Test {
 protected:
  Recipients() {
    caches_.Tenants = {Tenant("1", "Élodie Māhuta", false, "e@x.test"),
                       Tenant("2", "Old Bert", true, ""),
                       Tenant("3", "Ann", false, ""),
                       Tenant("4", "Ann (Trust)", false, ""),
                       Tenant("5", "Smith; Jones", true, ""),
                       Tenant("6", "Ann", false, "ann@x.test")};
    caches_.Tenants[0].PropertyAddress1 = "12 Pūriri Street";
    caches_.Tenants[0].PropertyAddress3 = "Auckland";
    caches_.Owners.resize(2);
    caches_.Owners[0].Name = "Kauri; Rimu";
    caches_.Owners[1].Name = "Zoe";
    caches_.Owners[1].ClosedStatus = true;
    caches_.Properties = {{"P1", "Zoe", "O1", false, "z@x.test"}, {"P2", "Zoe", "O1", true, ""}};
  }
  std::vector<std::string> Texts(std::string_view kind, const RecipientFilter& filter) const {
    std::vector<std::string> texts;
    for (const auto& row : ListRecipients(caches_, kind, filter)) texts.push_back(row.text);
    return texts;
  }

  Caches caches_;
};

TEST_F(Recipients, AreListedOpenOnesFirstByTheKindOfTheTemplate) {
  EXPECT_THAT(Texts(kTemplates, {}),
              ElementsAre("Élodie Māhuta (P1)", "Ann (P3)", "Ann (Trust) (P4)", "Ann (P6)"));
  EXPECT_THAT(Texts(kTemplates, {.closed = true}),
              ElementsAre("Élodie Māhuta (P1)", "Ann (P3)", "Ann (Trust) (P4)", "Ann (P6)",
                          "(Closed) Old Bert (P2)", "(Closed) Smith; Jones (P5)"));
  EXPECT_THAT(Texts(kOwnerTemplates, {.closed = true}), ElementsAre("Kauri; Rimu", "(Closed) Zoe"));
  EXPECT_THAT(Texts(kOwnerTemplates, {.closed = true, .by_property = true}),
              ElementsAre("Zoe (P1)", "(Closed) Zoe (P2)"));
  EXPECT_THAT(Texts("Tenant Letter", {}), ElementsAre());
}

TEST_F(Recipients, WithoutAnAddressAreLeftOutOnlyWhileTheBoxIsAvailableAndTicked) {
  for (const bool available : {false, true}) {
    for (const bool ticked : {false, true}) {
      const RecipientFilter filter{.closed = true,
                                   .exclude_no_email_available = available,
                                   .exclude_no_email_ticked = ticked};
      EXPECT_EQ(Texts(kTemplates, filter).size(), available && ticked ? 2U : 6U);
    }
  }
}

TEST_F(Recipients, AreFoundWithoutAccentsAndLetterCase) {
  for (const char* search :
       {"ELODIE", "mahuta éLO", " māhuta  p1 ", "(p1", "puriri ST", "auckland elodie"}) {
    EXPECT_THAT(Texts(kTemplates, {.search = search}), ElementsAre("Élodie Māhuta (P1)")) << search;
  }
  EXPECT_THAT(Texts(kTemplates, {.search = "elodie p3"}), ElementsAre());
  EXPECT_THAT(Texts(kOwnerTemplates, {.by_property = true, .search = "12 puriri"}),
              ElementsAre("Zoe (P1)"));
}

}  // namespace
}  // namespace tenora
