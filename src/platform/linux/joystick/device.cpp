#include "platform/linux/joystick/device.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string_view>
#include <utility>

#include "platform/linux/joystick/uinput.h"
#include "platform/linux/joystick/user_driver.h"
#include "platform/linux/joystick/user_driver_socket.h"
#include "platform/linux/process/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

using platform::DeviceHandle;
using platform::INVALID_HANDLE_VALUE;

constexpr platform::Guid joystickClass = {
    0x781EF630, 0x72B2, 0x11D2, {0xB8, 0x52, 0x00, 0xC0, 0x4F, 0xAD, 0x51, 0x01}};

bool IsJoystickPath(const char* sFileName) {
  constexpr std::string_view sPrefix = R"(\\.\)";
  const std::string_view sName(sFileName == nullptr ? "" : sFileName);
  return sName.starts_with(sPrefix) && sName.substr(sPrefix.size()) == sDeviceName;
}

/// Runs the action; true when it succeeded, else with the reason why it did not.
template <class Action>
bool Try(Action action, std::string& sReason) {
  try {
    action();
    return true;
  } catch (const std::exception& error) {
    sReason = error.what();
    return false;
  }
}

}  // namespace

LinuxDevice::LinuxDevice(std::filesystem::path uinputNode) : m_uinputNode(std::move(uinputNode)) {}

DeviceHandle LinuxDevice::SetupDiGetClassDevsA(const platform::Guid* pClassGuid, const char*,
                                               std::uint32_t, std::uint32_t) {
  if (pClassGuid == nullptr || *pClassGuid != joystickClass) return INVALID_HANDLE_VALUE;
  std::string sUserDriver, sUinput;
  if (!Try([] { FindUserDriver(); }, sUserDriver) &&
      !Try([this] { FindUinput(m_uinputNode); }, sUinput)) {
    Explain(sUserDriver, sUinput);
    return INVALID_HANDLE_VALUE;
  }
  m_sets.insert(m_hNext);
  return m_hNext++;
}

bool LinuxDevice::SetupDiDestroyDeviceInfoList(DeviceHandle hDevInfo) {
  return m_sets.erase(hDevInfo) != 0;
}

DeviceHandle LinuxDevice::CreateFileA(const char* sFileName, std::uint32_t, std::uint32_t, void*,
                                      std::uint32_t, std::uint32_t, DeviceHandle) {
  if (!IsJoystickPath(sFileName)) return INVALID_HANDLE_VALUE;
  std::unique_ptr<Joystick> joystick;
  std::string sUserDriver, sUinput;
  if (!Try([&] { joystick = OpenUserDriver(); }, sUserDriver) &&
      !Try([&] { joystick = OpenUinput(m_uinputNode); }, sUinput)) {
    Explain(sUserDriver, sUinput);
    return INVALID_HANDLE_VALUE;
  }
  m_devices.emplace(m_hNext, std::move(joystick));
  return m_hNext++;
}

bool LinuxDevice::DeviceIoControl(DeviceHandle hDevice, std::uint32_t lControlCode,
                                  const void* pInBuffer, std::uint32_t lInBufferSize, void*,
                                  std::uint32_t, std::uint32_t* pBytesReturned, void*) {
  if (pBytesReturned != nullptr) *pBytesReturned = 0;
  const auto device = m_devices.find(hDevice);
  if (device == m_devices.end() || (pInBuffer == nullptr && lInBufferSize != 0)) return false;
  return device->second->Control(
      lControlCode, std::span(static_cast<const std::byte*>(pInBuffer), lInBufferSize));
}

bool LinuxDevice::CloseHandle(DeviceHandle hObject) { return m_devices.erase(hObject) != 0; }

void LinuxDevice::Explain(const std::string& sUserDriver, const std::string& sUinput) {
  if (std::exchange(m_bExplained, true)) return;
  std::fprintf(stderr,
               "quillorbit: there is no joystick device to write to. It looked in two places:\n"
               "  - %s\n"
               "  - %s\n",
               sUserDriver.c_str(), sUinput.c_str());
}

}  // namespace quillorbit::linux_adapter
