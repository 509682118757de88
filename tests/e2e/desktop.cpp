#include "e2e/desktop.h"

#include <csignal>
#include <regex>

#include <netinet/in.h>
#include <sys/socket.h>

#include "e2e/screen.h"

namespace quillorbit::test {
namespace {

/// The identifier of the lowest visible window whose title matches; empty when there is none.
std::string FirstWindow(const std::string& sTitle) {
  for (const ScreenWindow& window : WindowsOnScreen())
    if (std::regex_search(window.sTitle, std::regex(sTitle))) return std::to_string(window.nId);
  return {};
}

/// A port of this machine.
sockaddr_in Address(int nPort) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(nPort));
  return address;
}

}  // namespace

PortHolder::PortHolder(int nWanted) : fd(socket(AF_INET, SOCK_DGRAM, 0)) {
  sockaddr_in address = Address(nWanted);
  socklen_t length = sizeof address;
  bind(fd.Get(), reinterpret_cast<sockaddr*>(&address), length);
  getsockname(fd.Get(), reinterpret_cast<sockaddr*>(&address), &length);
  nPort = ntohs(address.sin_port);
}

Desktop::Desktop() {
  setenv("DBUS_SESSION_BUS_ADDRESS", m_sBusAddress.c_str(), 1);
  std::filesystem::copy_file(QUILLORBIT, m_program);
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) +
               "</port></quillorbit_profile>");
}

void Desktop::TearDown() {
  if (m_process && m_process->IsRunning()) EndProgram();
}

void Desktop::StartDriver() {
  m_driver.reset(
      new ChildProcess(m_folder, QUILLORBIT_DRIVER, {"--record", (m_folder / "reports").string()}));
  ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(m_folder / "vJoyQuillorbit"); }));
}

bool Desktop::ProfileContains(const std::string& sText) const {
  return Eventually([&] { return ReadFile(m_profile).find(sText) != std::string::npos; });
}

void Desktop::StartProgram(const std::vector<std::string>& through) {
  std::vector<std::string> words = through;
  words.push_back(m_program);
  m_process.reset(new ChildProcess(m_folder, words.front(), {words.begin() + 1, words.end()}));
}

void Desktop::StartAll() {
  StartDriver();
  StartProgram();
  ASSERT_TRUE(WindowAppears(sMainWindow)) << m_process->Errors();
}

void Desktop::StartSecondCopy() const {
  ChildProcess second(m_folder, m_program, {});
  EXPECT_EQ(second.Wait(), 0);
  EXPECT_EQ(second.Output() + second.Errors(), "");
  EXPECT_TRUE(Eventually([] { return IsActive(sMainWindow); }));
}

void Desktop::EndProgram() {
  m_process->Signal(SIGTERM);
  EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
}

std::string Desktop::Command(const std::string& sCommand) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(sCommand.c_str(), "r"), &pclose);
  std::string sOutput;
  for (int c = 0; pipe && (c = fgetc(pipe.get())) != EOF;) sOutput += static_cast<char>(c);
  return sOutput;
}

bool Desktop::WindowAppears(const std::string& sTitle) {
  return Eventually([&] { return HasWindow(sTitle); });
}

bool Desktop::HasWindow(const std::string& sTitle) { return !FirstWindow(sTitle).empty(); }

bool Desktop::IsActive(const std::string& sTitle) {
  return Command("xdotool getactivewindow 2>/dev/null") == FirstWindow(sTitle) + "\n";
}

void Desktop::Press(const std::string& sWindow, const std::string& sKeys) {
  ASSERT_TRUE(WindowAppears(sWindow));
  ASSERT_TRUE(Eventually([&] {
    Command("xdotool windowactivate " + FirstWindow(sWindow) + " 2>/dev/null");
    return IsActive(sWindow);
  }));
  Command("xdotool key --delay 20 " + sKeys);
}

void Desktop::Answer(const std::string& sBox, const std::string& sKeys) {
  Press(sBox, sKeys);
  EXPECT_TRUE(Eventually([&] { return !HasWindow(sBox); })) << sBox;
}

void Desktop::Minimise() {
  Command("xdotool windowminimize " + FirstWindow(sMainWindow));
  ASSERT_TRUE(Eventually([] { return !HasWindow(sMainWindow); }));
}

void Desktop::AskToClose() {
  // The window manager misses keys while it takes in that the first artificial one has changed the
  // keyboard.
  for (int i = 0; i < 3; ++i) {
    Press("^Quillorbit - No signal$", "alt+F4");
    if (Eventually([] { return HasWindow("^Quillorbit$"); }, std::chrono::seconds(5))) return;
  }
  FAIL() << "no question";
}

void Desktop::Send(std::span<const std::byte> datagram) const {
  const sockaddr_in address = Address(m_nPort);
  ASSERT_EQ(sendto(PortHolder().fd.Get(), datagram.data(), datagram.size(), 0,
                   reinterpret_cast<const sockaddr*>(&address), sizeof address),
            static_cast<ssize_t>(datagram.size()));
}

std::vector<JoystickReport> Desktop::Reports() const {
  const std::string sBytes = ReadFile(m_folder / "reports");
  std::vector<JoystickReport> reports;
  std::span<const std::byte> rest = std::as_bytes(std::span(sBytes));
  for (; rest.size() >= JoystickReport::nBytes; rest = rest.subspan(JoystickReport::nBytes))
    reports.push_back(JoystickReport::FromBytes(rest.first<JoystickReport::nBytes>()));
  return reports;
}

bool Desktop::Listens() const {
  const std::size_t nBefore = Reports().size();
  return Eventually(
      [&] {
        Send({.z = 42});
        const auto reports = Reports();
        return reports.size() > nBefore && reports.back().z == 42;
      },
      std::chrono::seconds(5));
}

}  // namespace quillorbit::test
