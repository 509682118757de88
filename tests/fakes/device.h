#pragma once

#include "fakes/call_log.h"
#include "platform/device.h"

namespace quillorbit::fakes {

/// Bytes in hexadecimal, "4B 00", made into text only where they are recorded.
struct Hex {
  const void* pBytes;
  std::size_t nSize;
  friend std::ostream& operator<<(std::ostream& out, const Hex& hex) {
    const auto* const p = static_cast<const unsigned char*>(hex.pBytes);
    for (std::size_t i = 0; i < hex.nSize; ++i)
      out << (i ? " " : "") << "0123456789ABCDEF"[p[i] >> 4] << "0123456789ABCDEF"[p[i] & 15];
    return out;
  }
};

struct FakeDevice : Fake<DeviceFunctions> {
  using Fake::Fake;
  DeviceHandle SetupDiGetClassDevsA(const Guid* p, const char* s, u32 hWnd, u32 lFlags) override {
    const DeviceHandle hSet = bPresent ? 77 : INVALID_HANDLE_VALUE;
    return Answer(hSet, __func__, Hex{p, sizeof *p}, s ? s : "none", hWnd, lFlags);
  }
  bool SetupDiDestroyDeviceInfoList(DeviceHandle h) override { return Answer(true, __func__, h); }
  DeviceHandle CreateFileA(const char* s, u32 lAccess, u32 lShare, void* pSecurity,
                           u32 lDisposition, u32 lFlags, DeviceHandle h) override {
    return Answer(42U, __func__, s, lAccess, lShare, pSecurity, lDisposition, lFlags, h);
  }
  bool DeviceIoControl(DeviceHandle h, u32 lCode, const void* pIn, u32 lIn, void* pOut, u32 lOut,
                       u32* pReturned, void* p) override {
    Call(__func__, h, lCode, Hex{pIn, lIn}, pOut, lOut, pReturned != nullptr, p);
    return false;  // nobody looks at it
  }
  bool CloseHandle(DeviceHandle h) override { return Answer(true, __func__, h); }

  bool bPresent = true;
};

}  // namespace quillorbit::fakes
