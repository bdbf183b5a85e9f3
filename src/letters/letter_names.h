// Names of generated letters' files by a pattern: "{Tenant Name} - {Template} - {Print Date}".
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "data/settings.h"
#include "merge/fact.h"
#include "merge/merge_target.h"

namespace tenora {

// The settings of the section "Mail" that hold the patterns.
inline constexpr const char* kTenantFileNames = "TenantFileNames";
inline constexpr const char* kOwnerFileNames = "OwnerFileNames";

// The pattern of the settings for a kind of template; empty where none is set.
std::string StoredNamePattern(Settings& settings, std::string_view template_kind);

class LetterNames {
 public:
  // In braces stands a fact's name (merge/recipient_facts.h, letter case aside), "Template", or
  // "Number", the letter's in its run; an empty pattern is "{Template}". Raises ConditionError for
  // anything else, with the names that there are.
  LetterNames(std::string_view pattern, std::string_view template_kind);

  // What the present letter is called, without an ending, for SafeFileName to make a file's name
  // of. Numbers have as many digits as `count` has; a fact without a value is empty, and dates are
  // as 2026-11-21. Only the facts in the pattern are looked up, in the database, which this opens;
  // raises what the look-ups raise. Never blank: without anything else it is the template's name.
  std::string NameOf(const MergeTarget& letter, std::size_t number, std::size_t count) const;
  // What a file would be called, with made-up facts: "Jane Smith - Rent review.rtf".
  std::string Example(Date today) const;

 private:
  struct Piece {
    std::string text;  // as it stands, or the name of a fact
    bool fact = false;
  };

  bool NeedsFacts() const;
  std::string NameWith(const std::function<Fact(const std::string& name)>& fact_of,
                       const std::string& template_name, const std::string& number) const;

  bool tenants_;
  std::vector<Piece> pieces_;
};

// Raises 5 (Invalid procedure call) for a pattern that LetterNames refuses, with the names that
// there are.
void RequireSoundPattern(const std::string& pattern, const std::string& template_kind);

}  // namespace tenora
