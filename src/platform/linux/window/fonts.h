#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/fonts.h"

namespace quillorbit::linux_adapter {

/// Font objects over the toolkit's fonts. They need a QGuiApplication.
class LinuxFonts final : public platform::Fonts {
 public:
  /// `pixelRatio` returns how many of the display's pixels make one of the program's, at least 1.
  /// It is called for each font that is described.
  explicit LinuxFonts(std::function<double()> pixelRatio);

  [[nodiscard]] std::unique_ptr<platform::StdFont> NewStdFont() override;
  /// On any thread. Also throws std::invalid_argument where a side would have more than 16384
  /// pixels.
  void DrawText(platform::FontHandle hFont, std::string_view sText, std::uint32_t nWidth,
                std::uint32_t nHeight, std::uint32_t lFormat,
                platform::TextCoverage& coverage) override;

 private:
  class Object;
  /// What a handle stands for.
  struct Description {
    std::string sName;
    float fPoints = 0;
    double dPixelRatio = 1;
  };
  /// The fonts by their valid handles. Font objects may outlive the service.
  struct Table {
    std::function<double()> pixelRatio;
    std::mutex mutex;  // for what follows
    std::map<platform::FontHandle, Description> fonts;
    platform::FontHandle hLast = 0;
  };

  std::shared_ptr<Table> m_table = std::make_shared<Table>();
};

}  // namespace quillorbit::linux_adapter
