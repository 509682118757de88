#include "platform/d3dx8/image_decoder.h"

#include <algorithm>
#include <cstdint>

namespace quillorbit::d3dx8 {
namespace {

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

constexpr std::uint8_t SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DHT = 0xC4, SOF2 = 0xC2;

bool IsJpeg(std::string_view bytes) {
  return bytes.starts_with("\xFF\xD8") || bytes.starts_with("\xFF\xFF");
}

/// The decoder writes longer Huffman tables past their end, and each scan takes it through all the
/// pixels.
bool IsSafeJpeg(std::string_view bytes) {
  constexpr int nMostTables = 1000;
  JpegMarkers markers(bytes);
  int nMostScans = 4;  // one for each channel; a progressive file has some for each
  int nScans = 0, nTables = 0;
  while (const std::uint8_t marker = markers.Next()) {
    if (marker == EOI) break;
    if (marker == SOI) continue;
    if (marker == SOF2) nMostScans = 24;
    if (marker == SOS && ++nScans > nMostScans) return false;
    if (marker == DHT && (++nTables > nMostTables || !markers.HasSoundTables())) return false;
    markers.SkipSegment();
  }
  return true;
}

/// The decoder takes the height's absolute value, which the lowest number does not have.
bool IsSafeBmp(std::string_view bytes) {
  using namespace std::string_view_literals;
  constexpr std::size_t nHeightAt = 22;
  return bytes.size() < nHeightAt || !bytes.substr(nHeightAt).starts_with("\0\0\0\x80"sv);
}

/// The decoder adds up the header's three numbers (width, height, largest value) without bounds,
/// and reads past the end of an image whose largest value needs 16 bits.
bool IsSafePnm(std::string_view bytes) {
  constexpr std::string_view blanks = " \t\n\v\f\r", digits = "0123456789";
  std::string_view number;
  bytes.remove_prefix(2);
  for (int i = 0; i < 3; ++i) {
    while (!bytes.empty() && (bytes[0] == '#' || blanks.find(bytes[0]) != blanks.npos))
      bytes.remove_prefix(bytes[0] == '#' ? std::min(bytes.find_first_of("\n\r"), bytes.size())
                                          : 1);
    number = bytes.substr(0, bytes.find_first_not_of(digits));
    if (number.size() > 9) return false;
    bytes.remove_prefix(number.size());
  }
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number.size() < 3 || (number.size() == 3 && number <= "255");
}

}  // namespace

bool IsProgressiveJpeg(std::string_view bytes) {
  if (!IsJpeg(bytes)) return false;
  JpegMarkers markers(bytes);
  while (const std::uint8_t marker = markers.Next()) {
    if (marker == SOF2) return true;
    if (marker == SOS || marker == EOI) break;
    if (marker != SOI) markers.SkipSegment();
  }
  return false;
}

const char* WhyUnsafe(std::string_view bytes) {
  if (IsJpeg(bytes) && !IsSafeJpeg(bytes)) return "Corrupt JPEG (tables or scans)";
  if (bytes.starts_with("BM") && !IsSafeBmp(bytes)) return "Corrupt BMP (height)";
  if ((bytes.starts_with("P5") || bytes.starts_with("P6")) && !IsSafePnm(bytes))
    return "PNM not supported: 16 bits, or numbers out of range";
  return nullptr;
}

}  // namespace quillorbit::d3dx8
