#pragma once

#include <cstdint>

namespace quillorbit::platform {

/// A device class identifier, laid out as the platform's GUID record.
struct Guid {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];

  bool operator==(const Guid&) const = default;
};

/// A device's or a device set's handle.
using DeviceHandle = std::uint32_t;
inline constexpr DeviceHandle INVALID_HANDLE_VALUE = 0xFFFFFFFF;

inline constexpr std::uint32_t DIGCF_PRESENT = 0x02;
inline constexpr std::uint32_t DIGCF_DEVICEINTERFACE = 0x10;
inline constexpr std::uint32_t GENERIC_READ = 0x80000000;
inline constexpr std::uint32_t OPEN_EXISTING = 3;

/// The platform's device functions, with its own parameters and results: they report failure by
/// what they return and do not throw. An adapter must not let a device that does not answer block
/// the user-interface thread; where the platform offers nothing else, DeviceIoControl waits for the
/// driver to take the request.
class DeviceFunctions {
 public:
  virtual ~DeviceFunctions() = default;

  /// The set of devices of a class that `lFlags` selects; INVALID_HANDLE_VALUE when there is none.
  virtual DeviceHandle SetupDiGetClassDevsA(const Guid* pClassGuid, const char* sEnumerator,
                                            std::uint32_t hWndParent, std::uint32_t lFlags) = 0;
  virtual bool SetupDiDestroyDeviceInfoList(DeviceHandle hDevInfo) = 0;
  /// Opens a device; INVALID_HANDLE_VALUE when it is missing or, with lShareMode 0, in use.
  virtual DeviceHandle CreateFileA(const char* sFileName, std::uint32_t lDesiredAccess,
                                   std::uint32_t lShareMode, void* pSecurityAttributes,
                                   std::uint32_t lCreationDisposition, std::uint32_t lFlags,
                                   DeviceHandle hTemplateFile) = 0;
  /// Sends one control code with its input buffer (sizes in bytes); false when the driver rejects
  /// it.
  virtual bool DeviceIoControl(DeviceHandle hDevice, std::uint32_t lControlCode,
                               const void* pInBuffer, std::uint32_t lInBufferSize, void* pOutBuffer,
                               std::uint32_t lOutBufferSize, std::uint32_t* pBytesReturned,
                               void* pOverlapped) = 0;
  virtual bool CloseHandle(DeviceHandle hObject) = 0;
};

}  // namespace quillorbit::platform
