// Qt's application for a test program, for as long as its tests run; it shows nothing.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <optional>

namespace tenora::test {

class ApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { application_.emplace(count_, arguments_); }
  // Before the statics go that Qt has made meanwhile.
  void TearDown() override { application_.reset(); }

 private:
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  int count_ = 1;
  std::optional<QApplication> application_;
};

inline ::testing::Environment* const application_environment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment);

}  // namespace tenora::test
