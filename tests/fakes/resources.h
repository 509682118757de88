#pragma once

#include "fakes/call_log.h"
#include "platform/resources.h"

namespace quillorbit::fakes {

struct FakeResources : Fake<Resources> {
  using Fake::Fake;
  std::string LoadResData(std::uint16_t lId, View sType) const override {
    if (lId != 11 || sType != "SETUP_XSL") throw std::runtime_error("no resource");
    return "the stylesheet";
  }
  std::string FileDescription() const override { return sFileDescription; }
  int GetSystemMetrics(int nIndex) const override {
    return std::map<int, int>{{11, 32}, {12, 33}, {49, 16}, {50, 17}}.at(nIndex);
  }
  IconHandle LoadImageA(ModuleHandle h, const char* s, u32 lType, int cx, int cy, u32 l) override {
    return Answer(Icon(s, cx), __func__, h, s, lType, cx, cy, l);
  }

  /// The handle of an icon at a size; 0 when there is no such icon.
  static IconHandle Icon(const std::string& sIcon, int cx) {
    static const std::map<std::string, int> icons{{"AAA", 100}, {"OK", 200}, {"ERROR", 300}};
    return icons.contains(sIcon) ? static_cast<IconHandle>(icons.at(sIcon) + cx) : 0;
  }

  std::string sFileDescription;
};

}  // namespace quillorbit::fakes
