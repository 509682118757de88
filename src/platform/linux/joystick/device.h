#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/device.h"
#include "platform/linux/joystick/joystick.h"

namespace quillorbit::linux_adapter {

/// The device behind the joystick's path and interface class: the user-space driver or, where that
/// cannot be opened, uinput. When neither can be opened, the first function that finds this out
/// explains it on the standard error, once. No exceptions leave these functions.
class LinuxDevice final : public platform::DeviceFunctions {
 public:
  explicit LinuxDevice(std::filesystem::path uinputNode = "/dev/uinput");

  platform::DeviceHandle SetupDiGetClassDevsA(const platform::Guid* pClassGuid,
                                              const char* sEnumerator, std::uint32_t hWndParent,
                                              std::uint32_t lFlags) override;
  bool SetupDiDestroyDeviceInfoList(platform::DeviceHandle hDevInfo) override;
  /// Every device is opened exclusively, whatever lShareMode says.
  platform::DeviceHandle CreateFileA(const char* sFileName, std::uint32_t lDesiredAccess,
                                     std::uint32_t lShareMode, void* pSecurityAttributes,
                                     std::uint32_t lCreationDisposition, std::uint32_t lFlags,
                                     platform::DeviceHandle hTemplateFile) override;
  /// There is never any output.
  bool DeviceIoControl(platform::DeviceHandle hDevice, std::uint32_t lControlCode,
                       const void* pInBuffer, std::uint32_t lInBufferSize, void* pOutBuffer,
                       std::uint32_t lOutBufferSize, std::uint32_t* pBytesReturned,
                       void* pOverlapped) override;
  bool CloseHandle(platform::DeviceHandle hObject) override;

  /// For an end of the process that leaves no time for more.
  void CloseAll() { m_devices.clear(); }

 private:
  void Explain(const std::string& sUserDriver, const std::string& sUinput);

  std::filesystem::path m_uinputNode;
  std::map<platform::DeviceHandle, std::unique_ptr<Joystick>> m_devices;
  std::set<platform::DeviceHandle> m_sets;
  platform::DeviceHandle m_hNext = 1;  ///< counts up: a closed handle never means another device
  bool m_bExplained = false;
};

}  // namespace quillorbit::linux_adapter
