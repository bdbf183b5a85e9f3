// A letter, its editor and a session on a machine of its own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "merge/merge_target.h"
#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora::test {

class MergeTest : public testing::Test {
 protected:
  // Puts text into the letter as the source of one paragraph.
  void Letter(std::string_view source) {
    editor_.SetTextRTF(
        std::string(R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fnil Arial;}}\pard )")
            .append(source)
            .append(R"(\par})"));
  }
  // What the letter shows, without the paragraph's end.
  std::string Shown() const {
    std::string text = editor_.Text();
    while (text.ends_with("\r\n")) text.resize(text.size() - 2);
    return text;
  }
  std::vector<std::string> Boxes() const { return machine_.dialogs.Texts(); }
  void SetNow(int year, int month, int day, int hour = 9, int minute = 30) {
    machine_.clock = Clock(Date::FromCalendar(year, month, day, hour, minute));
  }

  FakePlatform machine_;
  Session session_{machine_.Parts()};
  LetterMembers letter_;
  RichTextBox editor_;
  MergeTarget target_{session_, letter_, editor_};
};

}  // namespace tenora::test
