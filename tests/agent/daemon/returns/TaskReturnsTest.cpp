#include "agent/daemon/returns/TaskReturns.h"

#include "agent/daemon/control/RequestError.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace NoxAgent {
namespace {

class TaskReturnsTest : public testing::Test {
 protected:
  std::string Path() const { return (m_Dir / "returns").string(); }
  // As the next agent reads the file.
  ReturnsFile::Moments Reread() const { return ReturnsFile(Path()).Read(); }

  TestSupport::TempDir m_Dir;
};

TEST_F(TaskReturnsTest, OutliveTheAgent) {
  {
    TaskReturns returns;
    returns.Open(Path());
    returns.Put({"a", "b"}, 2000);
    returns.Put({"b"}, 3000);
    returns.Put({"c"}, 2147483647);
    returns.Cancel({"c", "none"});
  }
  TaskReturns returns;
  returns.Open(Path());
  EXPECT_EQ(returns.Find("a"), 2000);
  EXPECT_EQ(returns.Find("b"), 3000);
  EXPECT_EQ(returns.Find("c"), std::nullopt);
  EXPECT_EQ(returns.Next(), 2000);
  EXPECT_EQ(returns.Due(1999), TaskReturns::Ids());
  EXPECT_EQ(returns.Due(2000), TaskReturns::Ids({"a"}));
  EXPECT_EQ(returns.Due(3000), TaskReturns::Ids({"a", "b"}));
}

TEST_F(TaskReturnsTest, TellEachPut) {
  int puts = 0;
  TaskReturns returns([&] { ++puts; });
  returns.Put({"a"}, 2000);
  returns.Put({}, 2000);
  returns.Cancel({"a"});
  EXPECT_EQ(puts, 1);
}

TEST_F(TaskReturnsTest, AreNoMoreThanTheFileHolds) {
  TaskReturns returns;
  TaskReturns::Ids ids;
  for (std::size_t number = 0; number < ReturnsFile::MaxEntries; ++number) {
    ids.push_back("task" + std::to_string(number));
  }
  returns.Put(ids, 2000);
  returns.Put({"task0"}, 3000);
  EXPECT_THROW(returns.Put({"one-more", "task1"}, 4000), RequestError);
  EXPECT_EQ(returns.Find("one-more"), std::nullopt);
  EXPECT_EQ(returns.Find("task1"), 2000);
}

TEST_F(TaskReturnsTest, ADamagedFileIsPutAsideAndWhatIsWholeCounts) {
  const struct {
    std::string m_Text;
    ReturnsFile::Moments m_Moments;
  } rows[] = {{"2000 a\nx\n3000 b\n", {{"a", 2000}, {"b", 3000}}},
              {"2000 a\n3000 b", {{"a", 2000}}},
              {"2000 a\n3000 a\n", {{"a", 2000}}},
              {"2000 ../a\n", {}},
              {"2000  a\n", {}},
              {"2000\n", {}},
              {"-2000 a\n", {}},
              {"99999999999 a\n", {}},
              {std::string("2000 a\0\n", 8), {}},
              {"\n", {}}};
  for (const auto& [text, moments] : rows) {
    m_Dir.Write("returns", text);
    EXPECT_EQ(Reread(), moments) << text;
    EXPECT_EQ(m_Dir.Read("returns.damaged"), text);
    EXPECT_EQ(Reread(), moments) << "also after the next start: " << text;
  }
}

TEST_F(TaskReturnsTest, WhatIsNoFileIsPutAside) {
  std::filesystem::create_directory(Path());
  EXPECT_EQ(Reread(), ReturnsFile::Moments());
  EXPECT_FALSE(m_Dir.Has("returns"));
  EXPECT_TRUE(m_Dir.Has("returns.damaged"));
}

TEST_F(TaskReturnsTest, WhatACrashHasLeftIsRemoved) {
  m_Dir.Write(".returns.Xy12Zw", "2000 a\n");
  EXPECT_EQ(Reread(), ReturnsFile::Moments());
  EXPECT_FALSE(m_Dir.Has(".returns.Xy12Zw"));
}

TEST_F(TaskReturnsTest, NoFileIsNoDamage) {
  EXPECT_EQ(Reread(), ReturnsFile::Moments());
  EXPECT_FALSE(m_Dir.Has("returns.damaged"));
}

}  // namespace
}  // namespace NoxAgent
