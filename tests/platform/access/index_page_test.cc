// Parsing and composing index pages, and scanning an index.
#include "platform/access/format/index_page.h"

#include <gtest/gtest.h>

#include "platform/access/read/index_tree.h"
#include "platform/access/storage/page_file.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

bool Same(const IndexPage& left, const IndexPage& right) {
  return left.leaf == right.leaf && left.owner == right.owner && left.previous == right.previous &&
         left.next == right.next && left.tail == right.tail &&
         std::equal(left.entries.begin(), left.entries.end(), right.entries.begin(),
                    right.entries.end(), [](const IndexEntry& a, const IndexEntry& b) {
                      return a.key == b.key && a.row == b.row && a.child == b.child;
                    });
}

TEST(AnIndexPage, IsTheSameWhenParsedAndComposedAgain) {
  const auto file = PageFile::Open(test::SampleDatabase());
  std::size_t pages = 0, shortened = 0;
  for (std::uint32_t number = 0; number < file->page_count(); ++number) {
    PageBuffer buffer, again;
    file->Read(number, buffer);
    if (buffer.type() != PageType::kIndexLeaf && buffer.type() != PageType::kIndexNode) continue;
    IndexPage page, copy;
    ReadIndexPage(file->layout(), buffer, page);
    EXPECT_EQ(page.free_bytes, page.unused_bytes);
    again.number = number;
    again.size = buffer.size;
    ASSERT_TRUE(ComposeIndexPage(file->layout(), page, std::span(again.bytes).first(again.size)));
    ReadIndexPage(file->layout(), again, copy);
    EXPECT_TRUE(Same(page, copy)) << "page " << number;
    EXPECT_EQ(copy.free_bytes, copy.unused_bytes);
    ++pages;
    shortened += Load16(&again.bytes[file->layout().index_page_prefix]) > 0;
  }
  EXPECT_EQ(pages, 45U);
  EXPECT_GT(shortened, 0U);
}

TEST(AnIndexPage, RefusesMoreThanFitsAndLeavesThePageAsItWas) {
  IndexPage page;
  for (char c = 'a'; c < 'm'; ++c) page.entries.push_back({std::string(300, c), {1, 2}});
  std::array<std::byte, kLargestPage> bytes;
  bytes.fill(std::byte{7});
  EXPECT_TRUE(ComposeIndexPage(kJet4Layout, {.entries = {page.entries[0]}}, bytes));
  const auto before = bytes;
  EXPECT_FALSE(ComposeIndexPage(kJet4Layout, page, bytes));
  EXPECT_EQ(bytes, before);
  for (IndexEntry& entry : page.entries) entry.key.replace(0, 290, 290, 'x');
  EXPECT_TRUE(ComposeIndexPage(kJet4Layout, page, bytes));
}

TEST(AnIndexPage, ThatIsInvalidIsRefused) {
  PageBuffer buffer;
  buffer.number = 9;
  buffer.size = kLargestPage;
  buffer.bytes.fill(std::byte{0});
  IndexPage page;
  EXPECT_THROW(ReadIndexPage(kJet4Layout, buffer, page), Corruption);  // not an index page
  buffer.bytes[0] = std::byte{4};
  ReadIndexPage(kJet4Layout, buffer, page);
  EXPECT_TRUE(page.entries.empty());
  buffer.bytes[kJet4Layout.index_page_ends] = std::byte{4};  // an entry of two bytes
  EXPECT_THROW(ReadIndexPage(kJet4Layout, buffer, page), Corruption);
  buffer.bytes[kJet4Layout.index_page_ends] = std::byte{16};  // one of four bytes: only a pointer
  ReadIndexPage(kJet4Layout, buffer, page);
  EXPECT_EQ(page.entries.size(), 1U);
  buffer.bytes[kJet4Layout.index_page_prefix] = std::byte{5};
  EXPECT_THROW(ReadIndexPage(kJet4Layout, buffer, page), Corruption);
  // Crafted to fill memory: entries of one byte each that share a prefix of nearly a page.
  Store16(&buffer.bytes[kJet4Layout.index_page_prefix], 2000);
  std::fill(&buffer.bytes[kJet4Layout.index_page_ends],
            &buffer.bytes[kJet4Layout.index_page_ends + 250], std::byte{0});
  std::fill(&buffer.bytes[kJet4Layout.index_page_ends + 250],
            &buffer.bytes[kJet4Layout.index_page_entries], std::byte{0xFF});
  EXPECT_THROW(ReadIndexPage(kJet4Layout, buffer, page), Corruption);
}

TEST(AScanOfAnIndex, VisitsEveryEntryInOrderFromAnyStart) {
  const auto file = PageFile::Open(test::SampleDatabase());
  constexpr std::uint32_t kRoot = 41;  // of the AutoNumber index of revenues
  std::vector<IndexEntry> entries;
  IndexWalk walk(*file, kRoot);
  while (const IndexEntry* const entry = walk.Next()) {
    EXPECT_TRUE(entries.empty() || entries.back() < *entry);
    entries.push_back(*entry);
  }
  ASSERT_EQ(entries.size(), 1646U);
  for (std::size_t i = 0; i < entries.size(); i += 97) {
    IndexWalk from(*file, kRoot, entries[i].key, entries[i].row);
    const IndexEntry* const found = from.Next();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->row, entries[i].row);
    EXPECT_EQ(PathToLeaf(*file, kRoot, entries[i].key, entries[i].row).back(), from.leaf());
  }
  EXPECT_EQ(IndexWalk(*file, kRoot, std::string("\xFF"), {}).Next(), nullptr);
}

}  // namespace
}  // namespace tenora::access
