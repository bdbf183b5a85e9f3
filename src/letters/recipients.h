// Who can be chosen for a template's letters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "rental/caches.h"

namespace tenora {

// One for whom a letter is made. A tenant without a code is the first in the cache of that name.
struct Recipient {
  std::string name;  // a tenant's KeyName, an owner's Name
  std::string code;  // a tenancy's code; empty for owners
  // Of the owner of this name, for the run log: a run fills it in.
  std::string owner_code = {};

  bool operator==(const Recipient&) const = default;
};

// One line of the list.
struct RecipientRow {
  std::string text;     // "(Closed) Jane Smith (P00012)"
  std::string address;  // of the property, "12 High Street, Auckland"; empty where it is not known
  std::string key;      // the code of the tenancy, the owner or, by property, the property
  Recipient recipient;
  bool closed = false;
  bool has_email = false;
  std::size_t cached = 0;  // its place in its cache: tenants, owners or, by property, properties
};

// What the dialog's check boxes and its search box say.
struct RecipientFilter {
  bool closed = false;       // chkClosed: closed ones too, below the open ones
  bool by_property = false;  // chkByProperty: owners once for each of their properties
  // ExcludeNoEmailAddress leaves those without an address out while it is available and ticked. The
  // dialog makes it available with the e-mail destination, the command line always.
  bool exclude_no_email_available = false;
  bool exclude_no_email_ticked = false;
  // txtSearch: every word of it occurs in the item's text or the property's address.
  std::string search = {};
};

// Of owners, by whose names letters are made: for the first owner of a name.
void FillOwnerCodes(Caches& caches, std::vector<Recipient>& recipients);

// Which rows a filter lists, as they are made by property or not.
class RecipientTest {
 public:
  explicit RecipientTest(const RecipientFilter& filter);
  bool operator()(const RecipientRow& row) const;

 private:
  const bool closed_, without_email_;
  const std::vector<std::string> words_;
};

// The list for a template kind, in cache order, open ones first; empty for any other kind than
// "Templates" and "Owner Templates".
std::vector<RecipientRow> ListRecipients(const Caches& caches, std::string_view template_kind,
                                         const RecipientFilter& filter);

// "12 High Street, Auckland", as it is searched for.
std::string PropertyAddressOf(const TenantRecord& tenant);

// Whether a search text leaves a row, for a list that is filtered while it is typed: letter case
// and accents do not count.
bool MatchesSearch(const RecipientRow& row, std::string_view search);

}  // namespace tenora
