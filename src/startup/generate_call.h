// What `tenora generate` is asked for on the command line.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generation_request.h"
#include "letters/recipients.h"
#include "startup/recipient_listing.h"

namespace CLI {
class App;
}

namespace tenora {

struct GenerateCall {
  std::string template_name;
  bool owners = false;
  std::string destination = "folder";
  std::vector<std::string> recipients;
  bool all = false, list = false;
  // On the command line the filter by e-mail address is always available.
  RecipientFilter filter{.exclude_no_email_available = true};
  std::string where, named_filter;    // conditions on the recipients' facts
  std::string columns, format, sort;  // of the list as a table
  bool descending = false;
  std::string subject, printer, resume, forget;
  std::vector<std::string> answers;
  std::string name_pattern, one_pdf, post_list;
  bool pdf = false, duplex = false, send_held = false, unfinished = false;
  std::vector<std::string> branches;  // names, or several with commas between
  bool all_branches = false;
  std::string no_older_than;  // "4h"
  bool queue = false;         // by the workers

  std::string_view Kind() const;
  Destination To() const;
  // Whether recipients are chosen or listed by what is known of them.
  bool ByFacts() const { return !where.empty() || !named_filter.empty(); }
  bool AsTable() const { return !columns.empty() || !format.empty(); }
  ListingFormat Format() const;
  // Whether branches on a server are named rather than taken from the settings.
  bool AcrossBranches() const { return all_branches || !branches.empty(); }
  std::vector<std::string> BranchNames() const;
  // How old a branch's data may be; none: of any age.
  std::optional<std::chrono::minutes> NoOlderThan() const;
  // What is wrong with the call; empty when nothing is.
  std::string Complaint() const;
};

// Gives the parser the command's description, its options, which are stored in `call`, and its
// footer.
void DeclareGenerate(CLI::App& app, GenerateCall& call);

}  // namespace tenora
