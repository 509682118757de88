#include <csignal>
#include <gmock/gmock.h>

#include "e2e/desktop.h"

namespace quillorbit::test {
namespace {

struct RobustnessTest : Desktop {};

TEST_F(RobustnessTest, DriverThatHangsOrDiesCostsItsReportsOnly) {
  StartAll();
  Send({.z = 1});
  ASSERT_TRUE(Eventually([&] { return !Reports().empty(); }));
  const auto sendMany = [&] {
    for (int i = 0; i < 5000; ++i) Send({.z = 2});
  };
  m_driver->Signal(SIGSTOP);
  sendMany();
  EXPECT_TRUE(WindowAppears("^Quillorbit - No signal$"));  // it does not wait for the driver
  m_driver->Signal(SIGCONT);
  ASSERT_TRUE(Eventually([&] {
    Send({.z = 3});
    return Reports().back().z == 3;
  }));
  m_driver->Signal(SIGKILL);
  EXPECT_EQ(m_driver->Wait(), 128 + SIGKILL);
  sendMany();
  EXPECT_TRUE(WindowAppears("^Quillorbit - No signal$"));
  EndProgram();
}

TEST_F(RobustnessTest, ProfilesThatPeopleMayHave) {
  struct Case {
    const char* sWhat;
    std::string sContent;
    const char* sBox;  ///< title of the message boxes that it brings, if any
    int nBoxes;
  };
  const std::string sPort = "<port>" + std::to_string(m_nPort) + "</port>";
  const auto profile = [&](const std::string& sRest) {
    return "<quillorbit_profile>" + sPort + sRest + "</quillorbit_profile>";
  };
  const char* sBox = "^Server bind problem$";
  const std::vector<Case> cases = {
      {"cut in half", profile("").substr(0, 40), nullptr, 0},
      {"empty", "", nullptr, 0},
      {"other root", "<other><port>1</port></other>", nullptr, 0},
      {"entities", "<!DOCTYPE q [<!ENTITY a \"5\">]>" + profile("<msg7>&a;</msg7>"), nullptr, 0},
      {"UTF-16", std::string("\xFF\xFE<\0a\0/\0>\0", 10), nullptr, 0},
      {"latin", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + profile("<msg6>\xE4</msg6>"),
       nullptr, 0},
      {"number out of range", profile("<samples>2147483648</samples>"), sBox, 1},
      {"samples 0", profile("<samples>0</samples>"), sBox, 2},
      {"samples -30", profile("<samples>-30</samples>"), sBox, 2},
      {"samples 31", profile("<samples>31</samples>"), nullptr, 0},
      {"samples most", profile("<samples>2147483647</samples>"), nullptr, 0},
      {"100 MB of text", profile("<msg7>" + std::string(100'000'000, 'x') + "</msg7>"), nullptr, 0},
  };
  StartDriver();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sWhat);
    WriteProfile(c.sContent);
    StartProgram();
    for (int i = 0; i < c.nBoxes; ++i) Answer(c.sBox, "Return");
    // Where the profile does not count, the default port does, and another program may hold it.
    if (!Eventually([&] {
          if (c.nBoxes == 0 && HasWindow(sBox)) Answer(sBox, "Return");
          return HasWindow(sMainWindow) || HasWindow("^Quillorbit - ");
        }))
      ADD_FAILURE() << "no window";
    EXPECT_FALSE(HasWindow(sBox));
    EXPECT_EQ(Profile(), c.sContent);
    EndProgram();
  }
}

TEST_F(RobustnessTest, WithoutADisplayItSaysSo) {
  StartProgram({"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"});
  EXPECT_EQ(m_process->Wait(), 1);
  EXPECT_THAT(m_process->Errors(), testing::HasSubstr("no display"));
}

}  // namespace
}  // namespace quillorbit::test
