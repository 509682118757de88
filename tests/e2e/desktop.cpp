#include "e2e/desktop.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <stdexcept>

#include <netinet/in.h>
#include <sys/socket.h>

#include "e2e/screen.h"

namespace quillorbit::test {
namespace {

namespace fs = std::filesystem;

/// The identifier of the lowest visible window whose title matches; empty when there is none.
std::string FirstWindow(const std::string& sTitle) {
  const std::regex title(sTitle);
  for (const ScreenWindow& window : WindowsOnScreen())
    if (std::regex_search(window.sTitle, title)) return std::to_string(window.nId);
  return {};
}

/// The socket address of a port on every address of a family; its length is that of sockaddr_in6.
sockaddr_in6 AnyAddress(int nFamily, int nPort) {
  sockaddr_in6 address{};
  if (nFamily == AF_INET6) {
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(static_cast<std::uint16_t>(nPort));
  } else {
    sockaddr_in address4{};
    address4.sin_family = AF_INET;
    address4.sin_port = htons(static_cast<std::uint16_t>(nPort));
    std::memcpy(&address, &address4, sizeof address4);
  }
  return address;
}

int FreePort() { return PortHolder(AF_INET6, 0).Port(); }

}  // namespace

PortHolder::PortHolder(int nFamily, int nPort) : m_fd(socket(nFamily, SOCK_DGRAM, 0)) {
  if (nFamily == AF_INET6) {
    const int on = 1;
    setsockopt(m_fd.Get(), IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
  }
  sockaddr_in6 address = AnyAddress(nFamily, nPort);
  socklen_t length = nFamily == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  auto* pAddress = reinterpret_cast<sockaddr*>(&address);
  if (bind(m_fd.Get(), pAddress, length) != 0 || getsockname(m_fd.Get(), pAddress, &length) != 0)
    throw std::runtime_error("the port cannot be held");
  m_nPort = ntohs(address.sin6_port);  // the port stands at the same place in both families
}

Desktop::Desktop() : m_nPort(FreePort()) {
  setenv("DBUS_SESSION_BUS_ADDRESS", m_sBusAddress.c_str(), 1);
  fs::copy_file(QUILLORBIT, m_program);
  WriteProfile("<quillorbit_profile><port>" + std::to_string(m_nPort) +
               "</port></quillorbit_profile>");
}

Desktop::~Desktop() = default;

void Desktop::StartDriver() {
  m_driver = std::make_unique<ChildProcess>(
      m_folder, QUILLORBIT_DRIVER,
      std::vector<std::string>{"--record", (m_folder / "reports").string()});
  ASSERT_TRUE(Eventually([&] { return fs::exists(m_folder / "vJoyQuillorbit"); }));
}

void Desktop::WriteTo(const fs::path& path, std::string_view sContent) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "wb"), &fclose);
  if (!file || fwrite(sContent.data(), 1, sContent.size(), file.get()) != sContent.size())
    throw std::runtime_error("a file cannot be written");
}

std::string Desktop::ProfileElement(const std::string& sName) const {
  std::string sText = Command("xmllint --xpath 'string(/quillorbit_profile/" + sName + ")' " +
                              m_profile.string() + " 2>/dev/null");
  if (sText.ends_with('\n')) sText.pop_back();  // xmllint's own
  return sText;
}

void Desktop::StartProgram(const std::vector<std::string>& through) {
  std::vector<std::string> words = through;
  words.push_back(m_program);
  m_process = std::make_unique<ChildProcess>(
      m_folder, words.front(), std::vector<std::string>(words.begin() + 1, words.end()));
}

void Desktop::StartAll() {
  StartDriver();
  StartProgram();
  ASSERT_TRUE(WindowAppears(sMainWindow)) << m_process->Errors();
}

void Desktop::EndProgram() {
  m_process->Signal(SIGTERM);
  EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
}

std::string Desktop::Command(const std::string& sCommand) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(sCommand.c_str(), "r"), &pclose);
  std::string sOutput;
  char buffer[256];
  while (pipe && fgets(buffer, sizeof buffer, pipe.get()) != nullptr) sOutput += buffer;
  return sOutput;
}

bool Desktop::WindowAppears(const std::string& sTitle) {
  return Eventually([&] { return HasWindow(sTitle); });
}

bool Desktop::HasWindow(const std::string& sTitle) { return !FirstWindow(sTitle).empty(); }

void Desktop::Press(const std::string& sWindow, const std::string& sKeys) {
  ASSERT_TRUE(WindowAppears(sWindow));
  ASSERT_TRUE(Eventually([&] {
    const std::string sFound = FirstWindow(sWindow);
    Command("xdotool windowactivate " + sFound + " 2>/dev/null");
    return Command("xdotool getactivewindow 2>/dev/null") == sFound + "\n";
  }));
  Command("xdotool key --delay 20 " + sKeys);
}

void Desktop::Answer(const std::string& sBox, const std::string& sKeys) {
  ASSERT_TRUE(WindowAppears(sBox));
  const std::string sWindow = FirstWindow(sBox);
  Press(sBox, sKeys);
  EXPECT_TRUE(Eventually([&] { return FirstWindow(sBox) != sWindow; })) << sBox;
}

void Desktop::Minimise() {
  ASSERT_TRUE(WindowAppears(sMainWindow));
  Command("xdotool windowminimize " + FirstWindow(sMainWindow));
}

void Desktop::AskToClose() {
  // The window manager takes its keys anew when the first artificial one changes the keyboard, and
  // misses what comes in between.
  bool bAsked = false;
  for (int i = 0; i < 3 && !bAsked; ++i) {
    Press("^Quillorbit - No signal$", "alt+F4");
    bAsked = Eventually([] { return HasWindow("^Quillorbit$"); }, std::chrono::seconds(5));
  }
  ASSERT_TRUE(bAsked);
}

void Desktop::EnterPort(const std::string& sPort, const std::string& sKey) {
  Press(sMainWindow, "ctrl+a Delete");
  Command("xdotool type --delay 20 -- '" + sPort + "'");
  Command("xdotool key --delay 20 " + sKey);
}

void Desktop::ClickFromBelow(int x, int y) {
  const std::string sWindow = FirstWindow(sMainWindow);
  const std::string sHeight = Command("xdotool getwindowgeometry --shell " + sWindow);
  const std::size_t nHeight = sHeight.find("HEIGHT=");
  ASSERT_NE(nHeight, std::string::npos);
  const int nFromTop = std::stoi(sHeight.substr(nHeight + 7)) - y;
  Command("xdotool mousemove --window " + sWindow + " " + std::to_string(x) + " " +
          std::to_string(nFromTop) + " click 1");
}

void Desktop::Send(int nPort, std::span<const std::byte> datagram) {
  const linux_adapter::FileDescriptor fd(socket(AF_INET, SOCK_DGRAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(nPort));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(sendto(fd.Get(), datagram.data(), datagram.size(), 0,
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

}  // namespace quillorbit::test
