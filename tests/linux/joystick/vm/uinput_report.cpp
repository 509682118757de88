// Opens the joystick as the program does and sends what standard input tells, a line each:
//   X Y Z ZR BUTTONS     one report (numbers as in C)
//   control CODE SIZE    SIZE zero bytes with another control code
// Each line is answered by "sent" or "lost". The device is closed at the end of the input.

#include <array>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/joystick/device.h"

namespace {

using quillorbit::linux_adapter::LinuxDevice;
using namespace quillorbit::platform;

constexpr Guid joystickClass = {
    0x781EF630, 0x72B2, 0x11D2, {0xB8, 0x52, 0x00, 0xC0, 0x4F, 0xAD, 0x51, 0x01}};

DeviceHandle Open(LinuxDevice& device) {
  const DeviceHandle hSet = device.SetupDiGetClassDevsA(&joystickClass, nullptr, 0,
                                                        DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (hSet == INVALID_HANDLE_VALUE) return hSet;
  device.SetupDiDestroyDeviceInfoList(hSet);
  return device.CreateFileA(R"(\\.\vJoyQuillorbit)", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
}

std::vector<std::uint8_t> ReportBytes(std::istream& line) {
  std::vector<std::uint8_t> bytes;
  std::string sNumber;
  for (const unsigned nSize : {2u, 2u, 2u, 2u, 4u}) {
    line >> sNumber;
    const long long value = std::stoll(sNumber, nullptr, 0);
    for (unsigned i = 0; i < nSize; ++i)
      bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i) & 0xFF));
  }
  return bytes;
}

bool Send(LinuxDevice& device, DeviceHandle hDevice, const std::string& sLine) {
  std::istringstream line(sLine);
  std::uint32_t lCode = 100;
  std::vector<std::uint8_t> bytes;
  if (sLine.starts_with("control")) {
    std::string sControl;
    std::size_t nSize = 0;
    line >> sControl >> lCode >> nSize;
    bytes.resize(nSize);
  } else {
    bytes = ReportBytes(line);
  }
  return device.DeviceIoControl(hDevice, lCode, bytes.data(),
                                static_cast<std::uint32_t>(bytes.size()), nullptr, 0, nullptr,
                                nullptr);
}

}  // namespace

int main() {
  LinuxDevice device;
  const DeviceHandle hDevice = Open(device);
  if (hDevice == INVALID_HANDLE_VALUE) {
    std::cout << "not open" << std::endl;
    return 1;
  }
  std::cout << "open" << std::endl;
  for (std::string sLine; std::getline(std::cin, sLine);)
    std::cout << (Send(device, hDevice, sLine) ? "sent" : "lost") << std::endl;
  device.CloseHandle(hDevice);
}
