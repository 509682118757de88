#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include <zlib.h>

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

// Image files made by another library or by hand.

namespace quillorbit::d3dx8_tests {

/// An image of these pixels, A8R8G8B8.
inline QImage ToImage(int nWidth, const std::vector<std::uint32_t>& pixels) {
  QImage image(nWidth, static_cast<int>(pixels.size()) / nWidth, QImage::Format_ARGB32);
  for (int i = 0; i < static_cast<int>(pixels.size()); ++i)
    image.setPixel(i % nWidth, i / nWidth, pixels[static_cast<std::size_t>(i)]);
  return image;
}

inline std::vector<std::uint32_t> ToPixels(const QImage& image) {
  std::vector<std::uint32_t> pixels;
  for (int i = 0; i < image.width() * image.height(); ++i)
    pixels.push_back(image.pixel(i % image.width(), i / image.width()));
  return pixels;
}

/// Smooth, and different in every direction and channel.
inline QImage Gradient(int nWidth, int nHeight) {
  QImage image(nWidth, nHeight, QImage::Format_RGB32);
  for (int y = 0; y < nHeight; ++y)
    for (int x = 0; x < nWidth; ++x)
      image.setPixel(x, y, qRgb(x * 255 / nWidth, y * 255 / nHeight, 200 - (x + 2 * y) * 2));
  return image;
}

inline std::string Encode(const QImage& image, const char* sFormat) {
  QBuffer buffer;
  QImageWriter(&buffer, sFormat).write(image);
  return buffer.data().toStdString();
}

inline std::string Jpeg(const QImage& image, bool bProgressive) {
  QBuffer buffer;
  QImageWriter writer(&buffer, "JPEG");
  writer.setProgressiveScanWrite(bProgressive);
  writer.setQuality(95);
  writer.write(image);
  return buffer.data().toStdString();
}

/// Uncompressed, 32 bits, from the top down.
inline std::string Tga(int nWidth, const std::vector<std::uint32_t>& pixels) {
  std::string bytes(18, '\0');
  bytes[2] = 2;
  bytes[12] = static_cast<char>(nWidth);
  bytes[14] = static_cast<char>(static_cast<int>(pixels.size()) / nWidth);
  bytes[16] = 32;
  bytes[17] = 0x28;
  for (const std::uint32_t pixel : pixels)
    for (const unsigned nShift : {0U, 8U, 16U, 24U})
      bytes += static_cast<char>(pixel >> nShift & 0xFF);
  return bytes;
}

/// The bytes with others in their place from there.
inline std::string Patched(std::string bytes, std::size_t i, std::initializer_list<int> others) {
  for (const int n : others) bytes.at(i++) = static_cast<char>(n);
  return bytes;
}

inline std::string BigEndian(std::size_t n) {
  std::string bytes;
  for (const unsigned nShift : {24U, 16U, 8U, 0U}) bytes += static_cast<char>(n >> nShift & 0xFF);
  return bytes;
}

/// A grey PNG whose data goes on for so many zeros.
inline std::string PngOfZeros(std::size_t nSide, std::size_t nZeros) {
  const auto chunk = [](const std::string& sTypeAndData) {
    const auto* p = reinterpret_cast<const Bytef*>(sTypeAndData.data());
    return BigEndian(sTypeAndData.size() - 4) + sTypeAndData +
           BigEndian(crc32(0, p, static_cast<uInt>(sTypeAndData.size())));
  };
  const std::string zeros(nZeros, '\0');
  std::string data(compressBound(nZeros), '\0');
  uLongf nBytes = data.size();
  if (compress2(reinterpret_cast<Bytef*>(data.data()), &nBytes,
                reinterpret_cast<const Bytef*>(zeros.data()), nZeros, 1) != Z_OK)
    std::abort();
  data.resize(nBytes);
  return "\x89PNG\r\n\x1A\n" +
         chunk("IHDR" + BigEndian(nSide) + BigEndian(nSide) + std::string("\x08\0\0\0\0", 5)) +
         chunk("IDAT" + data) + chunk("IEND");
}

}  // namespace quillorbit::d3dx8_tests
