#include "rental/code_groups.h"

namespace tenora {

void CodeGroups::Add(const std::string& code) {
  const auto [found, added] = numbers_.emplace(code, codes_.size());
  if (added) {
    codes_.push_back(code);
    members_.emplace_back();
  }
  members_[found->second].push_back(of_.size());
  of_.push_back(found->second);
}

}  // namespace tenora
