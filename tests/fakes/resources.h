#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "fakes/call_log.h"
#include "platform/resources.h"

namespace quillorbit::fakes {

class FakeResources : public platform::Resources {
 public:
  explicit FakeResources(CallLog& log) : m_log(log) {}

  std::string LoadResData(std::uint16_t lId, std::string_view sType) const override {
    if (lId != 11 || sType != "SETUP_XSL" || bMissing) throw std::runtime_error("no resource");
    return "the stylesheet";
  }
  std::string FileDescription() const override { return sFileDescription; }
  int GetSystemMetrics(int nIndex) const override { return metrics.at(nIndex); }
  platform::IconHandle LoadImageA(platform::ModuleHandle hInst, const char* sName,
                                  std::uint32_t lType, int cx, int cy,
                                  std::uint32_t lFlags) override {
    m_log.Call("LoadImageA ", hInst, ", ", sName, ", ", lType, ", ", cx, ", ", cy, ", ", lFlags);
    return Icon(sName, cx);
  }

  /// The handle of an icon at a size.
  platform::IconHandle Icon(const std::string& sName, int cx) const {
    const auto it = icons.find(sName);
    return it == icons.end() ? 0 : it->second + static_cast<platform::IconHandle>(cx);
  }

  bool bMissing = false;
  std::string sFileDescription;
  std::map<int, int> metrics = {{11, 32}, {12, 33}, {49, 16}, {50, 17}};
  std::map<std::string, platform::IconHandle> icons = {{"AAA", 100}, {"OK", 200}, {"ERROR", 300}};

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
