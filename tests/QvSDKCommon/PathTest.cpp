// SPDX-License-Identifier: MIT
#include "QvSDKCommon/Path.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A fresh working directory for each test.
class PathTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "QvPathTest.XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    m_before = fs::current_path();
    m_directory = name;
    fs::current_path(m_directory);
  }
  void TearDown() override {
    fs::current_path(m_before);
    fs::remove_all(m_directory);
  }

  /// All entries below the working directory.
  std::set<std::string> Tree() const {
    std::set<std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(m_directory))
      entries.insert(fs::relative(entry.path(), m_directory).string());
    return entries;
  }

  fs::path m_directory;
  fs::path m_before;
};

TEST_F(PathTest, MakesWhatLeadsToIt) {
  const std::string top = m_directory.string();
  struct Case {
    std::string path;
    bool isFileName;
    std::set<std::string> expected;
  };
  const Case cases[]{{"a/b/c.avi", true, {"a", "a/b"}},
                     {"a/b/c", false, {"a", "a/b", "a/b/c"}},
                     {"a.bmp", true, {}},
                     {"a", false, {"a"}},
                     {"a/b/", false, {"a", "a/b"}},
                     {"a//b/c", true, {"a", "a/b"}},
                     {"./a/b", true, {"a"}},
                     {top + "/d/e/f.bmp", true, {"d", "d/e"}},
                     {"/cannot_be_cut.bmp", true, {}},
                     {"", false, {}},
                     {"", true, {}}};
  for (const auto& [path, isFileName, expected] : cases) {
    SCOPED_TRACE(path);
    MakePath(path, isFileName);
    EXPECT_EQ(Tree(), expected);
    MakePath(path, isFileName);  // What is there already does no harm.
    EXPECT_EQ(Tree(), expected);
    for (const auto& entry : fs::directory_iterator(m_directory)) fs::remove_all(entry.path());
  }
}

TEST_F(PathTest, FailureIsSilent) {
  std::ofstream("file") << "x";
  MakePath("file/a/b", false);
  MakePath(GenICam::gcstring((std::string(300, 'n') + "/a").c_str()), false);
  std::string longPath;
  for (int i = 0; i < 100000; ++i) longPath += "a/";
  MakePath(longPath.c_str(), true);
  EXPECT_EQ(Tree(), (std::set<std::string>{"file"}));
}

TEST_F(PathTest, PermissionsAreThoseOfTheUmask) {
  const mode_t before = umask(0);
  MakePath("a/b", false);
  umask(before);
  EXPECT_EQ(fs::status("a").permissions(), static_cast<fs::perms>(0775));
  EXPECT_EQ(fs::status("a/b").permissions(), static_cast<fs::perms>(0775));
}

TEST_F(PathTest, TemporaryFileHasNoName) {
  setenv("TMPDIR", m_directory.c_str(), 1);
  std::FILE* const file = openTempFile("ini");
  ASSERT_NE(file, nullptr);
  EXPECT_GT(std::fprintf(file, "x"), 0);
  EXPECT_EQ(Tree(), (std::set<std::string>{}));
  EXPECT_TRUE(fs::read_symlink("/proc/self/fd/" + std::to_string(fileno(file)))
                  .string()
                  .starts_with((m_directory / "ini.").string()));
  EXPECT_EQ(std::fclose(file), 0);
  EXPECT_EQ(openTempFile("missing/ini"), nullptr);
  EXPECT_EQ(openTempFile(std::string(250, 'n').c_str()), nullptr);
  unsetenv("TMPDIR");
}

}  // namespace
