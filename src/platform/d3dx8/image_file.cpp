#include "platform/d3dx8/image_file.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#define STBI_NO_STDIO
#include <stb_image.h>

#include "platform/d3dx8/whole_file.h"
#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DError;

constexpr std::uintmax_t nMostFileBytes = std::uintmax_t{64} << 20U;
/// Goes through a JPEG file marker by marker, in step with the decoder. Behind the end are zeros.
class JpegMarkers {
 public:
  explicit JpegMarkers(std::string_view bytes) : m_bytes(bytes) {}

  /// Goes behind the next marker; 0 when there is none.
  std::uint8_t Next() {
    while ((m_i = m_bytes.find('\xFF', m_i)) < m_bytes.size()) {
      m_i = std::min(m_bytes.find_first_not_of('\xFF', m_i), m_bytes.size());
      const std::uint8_t marker = Byte(m_i++);
      const bool bInsideScan = marker == 0 || (marker >= 0xD0 && marker <= 0xD7);
      if (!bInsideScan) return marker;
    }
    return 0;
  }

  /// Whether no table of the Huffman tables that begin here has more symbols than a byte can name.
  [[nodiscard]] bool HasSoundTables() const {
    int nLeft = Length() - 2;
    for (std::size_t i = m_i + 2; nLeft > 0;) {
      int nSymbols = 0;
      for (std::size_t iBits = 1; iBits <= 16; ++iBits) nSymbols += Byte(i + iBits);
      if (nSymbols > 256) return false;
      i += 17 + static_cast<std::size_t>(nSymbols);
      nLeft -= 17 + nSymbols;
    }
    return true;
  }

  void SkipSegment() { m_i += static_cast<std::size_t>(Length()); }

 private:
  [[nodiscard]] std::uint8_t Byte(std::size_t i) const {
    return i < m_bytes.size() ? static_cast<std::uint8_t>(m_bytes[i]) : std::uint8_t{0};
  }
  [[nodiscard]] int Length() const { return Byte(m_i) << 8 | Byte(m_i + 1); }

  std::string_view m_bytes;
  std::size_t m_i = 0;
};

/// Whether a file, if it is a JPEG file, is one that the decoder can be given: it writes longer
/// Huffman tables past their end, and each scan takes it through all the pixels.
bool IsSafe(std::string_view bytes) {
  constexpr int nMostTables = 1000;
  constexpr std::uint8_t SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DHT = 0xC4, SOF2 = 0xC2;
  if (!bytes.starts_with("\xFF\xD8") && !bytes.starts_with("\xFF\xFF")) return true;
  JpegMarkers markers(bytes);
  int nMostScans = 4;  // one for each channel; a progressive file has some for each
  int nScans = 0, nTables = 0;
  while (const std::uint8_t marker = markers.Next()) {
    if (marker == EOI) break;
    if (marker == SOI) continue;
    if (marker == SOF2) nMostScans = 50;
    if (marker == SOS && ++nScans > nMostScans) return false;
    if (marker == DHT && (++nTables > nMostTables || !markers.HasSoundTables())) return false;
    markers.SkipSegment();
  }
  return true;
}

}  // namespace

Image ReadImage(const std::string& sFile) {
  const auto refuse = [&](const char* sWhy) {
    throw D3DError(platform::D3DXERR_INVALIDDATA, (sFile + ": " + sWhy).c_str());
  };
  const std::string bytes = ReadWholeFile(sFile, nMostFileBytes);
  const auto* pBytes = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int nFileBytes = static_cast<int>(bytes.size());
  if (!IsSafe(bytes)) refuse("Corrupt JPEG (tables or scans)");
  // The decoder reads past the end of these.
  if (bytes.starts_with('P') && stbi_is_16_bit_from_memory(pBytes, nFileBytes) != 0)
    refuse("PNM not supported: 16 bits");
  int nWidth = 0, nHeight = 0, nChannels = 0;
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> rgba(
      stbi_load_from_memory(pBytes, nFileBytes, &nWidth, &nHeight, &nChannels, STBI_rgb_alpha),
      stbi_image_free);
  if (!rgba) refuse(stbi_failure_reason());
  if (nWidth < 1 || nHeight < 1) refuse("the image is empty");

  Image image{static_cast<std::uint32_t>(nWidth), static_cast<std::uint32_t>(nHeight), {}};
  const std::size_t nBytes = std::size_t{4} * image.nWidth * image.nHeight;
  image.pixels.assign(rgba.get(), rgba.get() + nBytes);
  for (std::size_t i = 0; i < nBytes; i += 4) std::swap(image.pixels[i], image.pixels[i + 2]);
  return image;
}

}  // namespace quillorbit::d3dx8
