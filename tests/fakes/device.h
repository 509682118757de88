#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "fakes/call_log.h"
#include "platform/device.h"

namespace quillorbit::fakes {

class FakeDevice : public platform::DeviceFunctions {
 public:
  explicit FakeDevice(CallLog& log) : m_log(log) {}

  platform::DeviceHandle SetupDiGetClassDevsA(const platform::Guid* pGuid, const char* sEnumerator,
                                              std::uint32_t hParent,
                                              std::uint32_t lFlags) override {
    m_log.Call("SetupDiGetClassDevsA ", Text(*pGuid), ", ", sEnumerator ? sEnumerator : "none",
               ", ", hParent, ", ", lFlags);
    return bPresent ? 77 : platform::INVALID_HANDLE_VALUE;
  }
  bool SetupDiDestroyDeviceInfoList(platform::DeviceHandle h) override {
    m_log.Call("SetupDiDestroyDeviceInfoList ", h);
    return true;
  }
  platform::DeviceHandle CreateFileA(const char* sFileName, std::uint32_t lAccess,
                                     std::uint32_t lShare, void* pSecurity,
                                     std::uint32_t lDisposition, std::uint32_t lFlags,
                                     platform::DeviceHandle hTemplate) override {
    m_log.Call("CreateFileA ", sFileName, ", ", lAccess, ", ", lShare, ", ", pSecurity, ", ",
               lDisposition, ", ", lFlags, ", ", hTemplate);
    return bInUse ? platform::INVALID_HANDLE_VALUE : 42;
  }
  bool DeviceIoControl(platform::DeviceHandle h, std::uint32_t lCode, const void* pIn,
                       std::uint32_t lInSize, void* pOut, std::uint32_t lOutSize,
                       std::uint32_t* pReturned, void* pOverlapped) override {
    ++nReports;
    m_log.Call("DeviceIoControl ", h, ", ", lCode, ", ", Lazy{pIn, lInSize}, ", ", pOut, ", ",
               lOutSize, ", ", pReturned != nullptr, ", ", pOverlapped);
    return bAccepts;
  }
  bool CloseHandle(platform::DeviceHandle h) override {
    m_log.Call("CloseHandle ", h);
    return true;
  }

  bool bPresent = true;
  bool bInUse = false;
  bool bAccepts = true;
  int nReports = 0;

 private:
  /// Bytes that are written out in hexadecimal, if they are written out at all.
  struct Lazy {
    const void* pBytes;
    std::uint32_t lSize;
    friend std::ostream& operator<<(std::ostream& out, const Lazy& lazy) {
      const auto* bytes = static_cast<const unsigned char*>(lazy.pBytes);
      for (std::uint32_t i = 0; i < lazy.lSize; ++i) {
        char sHex[4];
        std::snprintf(sHex, sizeof sHex, "%s%02X", i == 0 ? "" : " ", bytes[i]);
        out << sHex;
      }
      return out;
    }
  };
  static std::string Text(const platform::Guid& g) {
    char s[40];
    std::snprintf(s, sizeof s, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1,
                  g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4],
                  g.Data4[5], g.Data4[6], g.Data4[7]);
    return s;
  }

  CallLog& m_log;
};

}  // namespace quillorbit::fakes
