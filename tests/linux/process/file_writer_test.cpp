#include "platform/linux/process/file_writer.h"

#include <gtest/gtest.h>
#include <latch>

#include "linux/support.h"

namespace quillorbit::linux_tests {
namespace {

using linux_adapter::FileWriter;
using linux_adapter::OldFile;

constexpr std::chrono::minutes soon(1);

TEST(FileWriter, WritesTheNewestOfWhatCameWhileTheDiskStoodStill) {
  const TemporaryFolder folder;
  const std::string sPath = folder / "a", sOther = folder / "b";
  WriteFile(sPath, "old");
  std::latch disk(1);
  std::string sReplaced;
  {
    FileWriter writer(
        [&](const std::string& s) {
          sReplaced += s == sOther ? "-" : ReadFile(s) + ' ';
          disk.wait();
          return OldFile::replaced;
        },
        soon);
    EXPECT_EQ(writer.Unwritten(sPath), std::nullopt);
    for (const char* sContent : {"1", "2", "3"}) {
      writer.Write(sPath, sContent);
      EXPECT_EQ(writer.Unwritten(sPath), sContent);
    }
    writer.Write(sOther, "other");
    writer.Write(folder / "missing/c", "");  // found out later
    EXPECT_EQ(ReadFile(sPath), "old");
    testing::internal::CaptureStderr();
    disk.count_down();
  }
  EXPECT_EQ(sReplaced + ReadFile(sPath) + ReadFile(sOther), "old 1 -3other");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 2);
  const std::string sC = folder / "missing/c";
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("quillorbit: " + sC + " cannot be written"),
            0U);
}

TEST(FileWriter, TellsOfAFailureAtOnceAndOfALaterOneOnTheStandardError) {
  const TemporaryFolder folder;
  const std::string sPath = folder / "file";
  testing::internal::CaptureStderr();
  {
    FileWriter writer(
        [&](const std::string& s) {
          std::filesystem::remove(s);
          std::filesystem::create_directory(s);  // no file can take its place
          return OldFile::replaced;
        },
        soon);
    EXPECT_THROW(writer.Write(folder / "missing/file", ""), std::system_error);
    EXPECT_THROW(writer.Write(folder.Path(), ""), std::system_error);
    WriteFile(sPath, "old");
    writer.Write(sPath, "new");
  }
  std::string sErrors = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::ranges::count(sErrors, '\n'), 3) << sErrors;
  EXPECT_NE(sErrors.find("quillorbit: " + sPath + " cannot be written ("), std::string::npos);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

}  // namespace
}  // namespace quillorbit::linux_tests
