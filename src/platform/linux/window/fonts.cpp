#include "platform/linux/window/fonts.h"

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

#include <QImage>
#include <QPainter>

#include "platform/linux/window/units.h"

namespace quillorbit::linux_adapter {
namespace {

constexpr int nMostPixels = 16384;

// The platform's formatting flags.
constexpr std::uint32_t DT_CENTER = 0x001;
constexpr std::uint32_t DT_RIGHT = 0x002;
constexpr std::uint32_t DT_VCENTER = 0x004;  ///< this and the next one go with DT_SINGLELINE
constexpr std::uint32_t DT_BOTTOM = 0x008;
constexpr std::uint32_t DT_WORDBREAK = 0x010;
constexpr std::uint32_t DT_SINGLELINE = 0x020;
constexpr std::uint32_t DT_NOPREFIX = 0x800;

/// The formatting flags as the toolkit's.
int ToQtFlags(std::uint32_t lFormat) {
  const auto has = [&](std::uint32_t lFlag) { return (lFormat & lFlag) != 0; };
  int lFlags = Qt::TextDontClip;  // the image's edge clips
  lFlags |= has(DT_CENTER) ? Qt::AlignHCenter : has(DT_RIGHT) ? Qt::AlignRight : Qt::AlignLeft;
  if (has(DT_SINGLELINE)) {
    lFlags |= Qt::TextSingleLine;
    lFlags |= has(DT_VCENTER) ? Qt::AlignVCenter : has(DT_BOTTOM) ? Qt::AlignBottom : Qt::AlignTop;
  } else {
    lFlags |= Qt::AlignTop;
    if (has(DT_WORDBREAK)) lFlags |= Qt::TextWordWrap;
  }
  if (!has(DT_NOPREFIX)) lFlags |= Qt::TextShowMnemonic;
  return lFlags;
}

/// A length in the display's pixels, rounded up.
int ToDevicePixels(std::uint32_t nPixels, double dRatio) {
  constexpr double dNoise = 1e-6;  // 100 * 1.1 is a little more than 110
  const double dPixels = std::ceil(nPixels * dRatio - dNoise);
  if (!(dPixels <= nMostPixels)) throw std::invalid_argument("the space for a text is too large");
  return static_cast<int>(dPixels);
}

}  // namespace

class LinuxFonts::Object final : public platform::StdFont {
 public:
  explicit Object(std::shared_ptr<Table> table) : m_table(std::move(table)) { Describe(); }
  ~Object() override {
    const std::lock_guard lock(m_table->mutex);
    m_table->fonts.erase(m_hFont);
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  void Name(std::string_view sName) override {
    if (sName == m_sName) return;
    m_sName = sName;
    Describe();
  }
  void Size(float fPoints) override {
    if (!(fPoints >= 1 && fPoints <= 2048)) throw std::invalid_argument("no size of a font");
    if (fPoints == m_fPoints) return;
    m_fPoints = fPoints;
    Describe();
  }
  [[nodiscard]] platform::FontHandle hFont() const override { return m_hFont; }

 private:
  /// Registers the font as it is described now under a new handle.
  void Describe() {
    const double dPixelRatio = m_table->pixelRatio();
    const std::lock_guard lock(m_table->mutex);
    m_table->fonts.emplace(++m_table->hLast, Description{m_sName, m_fPoints, dPixelRatio});
    m_table->fonts.erase(std::exchange(m_hFont, m_table->hLast));
  }

  std::shared_ptr<Table> m_table;
  std::string m_sName = "MS Sans Serif";
  float m_fPoints = 8.25F;
  platform::FontHandle m_hFont = 0;
};

LinuxFonts::LinuxFonts(std::function<double()> pixelRatio) {
  m_table->pixelRatio = std::move(pixelRatio);
}

std::unique_ptr<platform::StdFont> LinuxFonts::NewStdFont() {
  return std::make_unique<Object>(m_table);
}

void LinuxFonts::DrawText(platform::FontHandle hFont, std::string_view sText, std::uint32_t nWidth,
                          std::uint32_t nHeight, std::uint32_t lFormat,
                          platform::TextCoverage& coverage) {
  Description description;
  {
    const std::lock_guard lock(m_table->mutex);
    const auto found = m_table->fonts.find(hFont);
    if (found == m_table->fonts.end()) throw std::invalid_argument("no such font handle");
    description = found->second;
  }
  const double dRatio = description.dPixelRatio;
  const int nColumns = ToDevicePixels(nWidth, dRatio), nRows = ToDevicePixels(nHeight, dRatio);
  coverage.nWidth = static_cast<std::uint32_t>(nColumns);
  coverage.nHeight = static_cast<std::uint32_t>(nRows);
  coverage.pixels.assign(std::size_t{coverage.nWidth} * coverage.nHeight, 0);
  if (coverage.pixels.empty()) return;

  // Not kept: the toolkit's fonts are for one thread.
  QFont font = ToQFont({description.sName, description.fPoints});
  font.setStyleStrategy(
      static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
  QImage image(coverage.pixels.data(), nColumns, nRows, nColumns, QImage::Format_Alpha8);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.scale(dRatio, dRatio);
  painter.setFont(font);
  painter.drawText(QRectF(0, 0, nWidth, nHeight), ToQtFlags(lFormat), ToQString(sText));
}

}  // namespace quillorbit::linux_adapter
