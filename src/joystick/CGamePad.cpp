#include "joystick/CGamePad.h"

#include "base/Numbers.h"
#include "joystick/JoystickReport.h"

namespace quillorbit {
namespace {

constexpr platform::Guid driverInterfaceClass = {
    0x781EF630, 0x72B2, 0x11D2, {0xB8, 0x52, 0x00, 0xC0, 0x4F, 0xAD, 0x51, 0x01}};
constexpr const char* sDevicePath = R"(\\.\vJoyQuillorbit)";

}  // namespace

CGamePad::CGamePad(platform::DeviceFunctions& device) : m_device(device), m_hDevice(OpenDevice()) {}

CGamePad::~CGamePad() {
  if (m_hDevice != 0) m_device.CloseHandle(m_hDevice);
}

platform::DeviceHandle CGamePad::OpenDevice() {
  using namespace platform;
  const DeviceHandle hDevices = m_device.SetupDiGetClassDevsA(
      &driverInterfaceClass, nullptr, 0, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (hDevices == INVALID_HANDLE_VALUE) return 0;
  m_device.SetupDiDestroyDeviceInfoList(hDevices);  // it was wanted as a test of presence only

  const DeviceHandle hDevice =
      m_device.CreateFileA(sDevicePath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
  return hDevice == INVALID_HANDLE_VALUE ? 0 : hDevice;
}

void CGamePad::SendData(std::int32_t x, std::int32_t y, std::int32_t z, std::int32_t zr,
                        std::int32_t b) {
  if (m_hDevice == 0) return;
  const auto bytes =
      JoystickReport{
          .x = ToInt16(x),
          .y = ToInt16(y),
          .z = ToInt16(z),
          .zr = ToInt16(zr),
          .b = b,
      }
          .ToBytes();
  std::uint32_t lBytesReturned = 0;
  m_device.DeviceIoControl(m_hDevice, lReportControlCode, bytes.data(), bytes.size(), nullptr, 0,
                           &lBytesReturned, nullptr);
}

}  // namespace quillorbit
