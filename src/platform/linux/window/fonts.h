#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include <QFont>

#include "platform/fonts.h"

namespace quillorbit::linux_adapter {

/// Font objects over the toolkit's fonts. They need a QGuiApplication.
class LinuxFonts final : public platform::Fonts {
 public:
  /// `pixelRatio` returns how many of the display's pixels make one of the program's, at least 1.
  /// It is called for each text.
  explicit LinuxFonts(std::function<double()> pixelRatio);

  [[nodiscard]] std::unique_ptr<platform::StdFont> NewStdFont() override;
  /// Also throws std::invalid_argument where a side would have more than 16384 pixels.
  void DrawText(platform::FontHandle hFont, std::string_view sText, std::uint32_t nWidth,
                std::uint32_t nHeight, std::uint32_t lFormat,
                platform::TextCoverage& coverage) override;

 private:
  class Object;
  /// The fonts by their valid handles. Font objects may outlive the service.
  struct Table {
    std::map<platform::FontHandle, QFont> fonts;
    platform::FontHandle hLast = 0;
  };

  std::function<double()> m_pixelRatio;
  std::shared_ptr<Table> m_table = std::make_shared<Table>();
};

}  // namespace quillorbit::linux_adapter
