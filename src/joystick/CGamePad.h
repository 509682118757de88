#pragma once

#include <cstdint>

#include "platform/device.h"

namespace quillorbit {

/// The connection to the virtual joystick driver, through which games see the mobile device as a
/// joystick. Creating the object opens the device, for this program alone; destroying it closes it.
/// A device that could not be opened stays closed for the object's whole life.
class CGamePad {
 public:
  explicit CGamePad(platform::DeviceFunctions& device);
  ~CGamePad();
  CGamePad(const CGamePad&) = delete;
  CGamePad& operator=(const CGamePad&) = delete;

  [[nodiscard]] bool IsOpen() const { return m_hDevice != 0; }

  /// Writes one complete state: four axes and a button mask. Nothing is scaled. Throws
  /// std::overflow_error, and writes nothing, when an axis does not fit 16 bits. A write that the
  /// driver rejects is lost. Without an open device this does nothing at all.
  void SendData(std::int32_t x, std::int32_t y, std::int32_t z, std::int32_t zr, std::int32_t b);

 private:
  [[nodiscard]] platform::DeviceHandle OpenDevice();

  platform::DeviceFunctions& m_device;
  platform::DeviceHandle m_hDevice;  ///< 0: no device is open
};

}  // namespace quillorbit
