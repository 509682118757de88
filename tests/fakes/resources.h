#pragma once

#include <stdexcept>

#include "platform/resources.h"

namespace quillorbit::fakes {

class FakeResources : public platform::Resources {
 public:
  std::string LoadResData(std::uint16_t lId, std::string_view sType) const override {
    if (lId != 11 || sType != "SETUP_XSL" || bMissing) throw std::runtime_error("no resource");
    return "the stylesheet";
  }

  bool bMissing = false;
};

}  // namespace quillorbit::fakes
