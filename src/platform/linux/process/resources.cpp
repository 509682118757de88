#include "platform/linux/process/resources.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <QByteArray>
#include <QDataStream>
#include <QFile>

namespace quillorbit::linux_adapter {
namespace {

constexpr int nMostIconPixels = 256;

/// Whether the name has no separators, which could lead out of the icons' folder.
bool IsResourceName(std::string_view sName) {
  constexpr std::string_view sAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  return !sName.empty() && sName.find_first_not_of(sAllowed) == std::string_view::npos;
}

/// The image that begins there in an icon file: 24-bit colour and a 1-bit mask, from the bottom up
/// in lines of whole 32-bit words. Null when the file ends before it.
QImage ReadImage(QFile& file, qint64 nOffset, int cx, int cy) {
  constexpr qint64 nHeaderBytes = 40;
  const int nLine = (24 * cx + 31) / 32 * 4;
  const int nMaskLine = (cx + 31) / 32 * 4;
  file.seek(nOffset + nHeaderBytes);
  const QByteArray colours = file.read(nLine * cy);
  const QByteArray mask = file.read(nMaskLine * cy);
  if (mask.size() != nMaskLine * cy) return {};

  const auto byte = [](const QByteArray& bytes, int i) { return static_cast<uchar>(bytes[i]); };
  QImage image(cx, cy, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < cy; ++y) {
    const int nFromBottom = cy - 1 - y;
    for (int x = 0; x < cx; ++x) {
      const bool bClear = (byte(mask, nFromBottom * nMaskLine + x / 8) & (0x80 >> x % 8)) != 0;
      const int i = nFromBottom * nLine + 3 * x;
      image.setPixel(
          x, y, bClear ? 0 : qRgb(byte(colours, i + 2), byte(colours, i + 1), byte(colours, i)));
    }
  }
  return image;
}

/// An icon's images; none when there is no such icon. Qt's own reader for such files ignores the
/// mask of 24-bit images.
std::vector<QImage> ReadIcon(const std::string& sName) {
  QFile file(QString::fromStdString(":/ICON/" + sName + ".ico"));
  if (!file.open(QIODevice::ReadOnly)) return {};
  QDataStream stream(&file);
  stream.setByteOrder(QDataStream::LittleEndian);

  std::uint16_t lReserved = 0, lType = 0, nImages = 0;
  stream >> lReserved >> lType >> nImages;
  std::vector<QImage> images;
  for (int i = 0; i < nImages; ++i) {
    constexpr qint64 nDirectory = 6, nEntryBytes = 16;
    file.seek(nDirectory + i * nEntryBytes);
    std::uint8_t cx = 0, cy = 0, nColours = 0, lUnused = 0;
    std::uint16_t nPlanes = 0, nBits = 0;
    std::uint32_t nBytes = 0, nOffset = 0;
    stream >> cx >> cy >> nColours >> lUnused >> nPlanes >> nBits >> nBytes >> nOffset;
    QImage image = nBits == 24 ? ReadImage(file, nOffset, cx, cy) : QImage();
    if (!image.isNull()) images.push_back(std::move(image));
  }
  return images;
}

/// The icon at that size, made from the image that is nearest to it; null when there is no icon.
QImage IconOfSize(const std::string& sName, const QSize& size) {
  const std::vector<QImage> images = ReadIcon(sName);
  if (images.empty()) return {};
  // Of two that are equally near, the larger one has more detail.
  const auto distance = [&size](const QImage& image) {
    return std::pair(
        std::abs(image.width() - size.width()) + std::abs(image.height() - size.height()),
        -image.width());
  };
  const QImage& nearest = *std::ranges::min_element(images, {}, distance);
  if (nearest.size() == size) return nearest;
  return nearest.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace

std::string LinuxResources::LoadResData(std::uint16_t lId, std::string_view sType) const {
  const std::string sName = ":/" + std::string(sType) + "/" + std::to_string(lId);
  QFile resource(QString::fromStdString(sName));
  if (!resource.open(QIODevice::ReadOnly)) throw std::runtime_error("no resource " + sName);
  return resource.readAll().toStdString();
}

int LinuxResources::GetSystemMetrics(int nIndex) const {
  switch (nIndex) {
    case platform::SM_CXICON:
    case platform::SM_CYICON:
      return 32;
    case platform::SM_CXSMICON:
    case platform::SM_CYSMICON:
      return 16;
    default:
      return 0;
  }
}

platform::IconHandle LinuxResources::LoadImageA(platform::ModuleHandle /*hInst*/, const char* sName,
                                                std::uint32_t lType, int cx, int cy,
                                                std::uint32_t /*lFlags*/) {
  const auto isSize = [](int n) { return n > 0 && n <= nMostIconPixels; };
  if (lType != platform::IMAGE_ICON || sName == nullptr || !IsResourceName(sName) || !isSize(cx) ||
      !isSize(cy))
    return 0;

  const IconKey key{sName, cx, cy};
  if (const auto known = m_handles.find(key); known != m_handles.end()) return known->second;
  QImage image = IconOfSize(sName, {cx, cy});
  if (image.isNull()) return 0;
  m_images.push_back(std::move(image));
  const auto hIcon = static_cast<platform::IconHandle>(m_images.size());
  m_handles.emplace(key, hIcon);
  return hIcon;
}

QImage LinuxResources::Image(platform::IconHandle hIcon) const {
  return hIcon == 0 || hIcon > m_images.size() ? QImage() : m_images[hIcon - 1];
}

}  // namespace quillorbit::linux_adapter
