#include "platform/d3dx8/texture.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#define STBI_NO_STDIO
#include <stb_image.h>

#include "platform/d3dx8/whole_file.h"

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DError;

constexpr std::uintmax_t nMostFileBytes = std::uintmax_t{64} << 20U;
constexpr std::uint32_t nMostSide = 4096;

/// Pixels as textures in A8R8G8B8 store them: blue, green, red, alpha.
struct Image {
  std::uint32_t nWidth, nHeight;
  std::vector<std::uint8_t> pixels;
};

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
  constexpr int nMostScans = 100, nMostTables = 1000;
  constexpr std::uint8_t SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DHT = 0xC4;
  if (!bytes.starts_with("\xFF\xD8") && !bytes.starts_with("\xFF\xFF")) return true;
  JpegMarkers markers(bytes);
  int nScans = 0, nTables = 0;
  while (const std::uint8_t marker = markers.Next()) {
    if (marker == EOI) break;
    if (marker == SOI) continue;
    if (marker == SOS && ++nScans > nMostScans) return false;
    if (marker == DHT && (++nTables > nMostTables || !markers.HasSoundTables())) return false;
    markers.SkipSegment();
  }
  return true;
}

Image Decode(const std::string& sFile) {
  const auto refuse = [&](const char* sWhy) {
    throw D3DError(platform::D3DXERR_INVALIDDATA, (sFile + ": " + sWhy).c_str());
  };
  const std::string bytes = ReadWholeFile(sFile, nMostFileBytes);
  const auto* pBytes = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int nFileBytes = static_cast<int>(bytes.size());
  if (!IsSafe(bytes)) refuse("Corrupt JPEG");
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

void MakeTransparent(Image& image, platform::D3DCOLOR colour) {
  if (colour == 0) return;
  const auto byte = [&](unsigned nShift) { return static_cast<std::uint8_t>(colour >> nShift); };
  const std::uint8_t key[] = {byte(0), byte(8), byte(16), byte(24)};
  for (auto p = image.pixels.begin(); p != image.pixels.end(); p += 4)
    if (std::equal(std::begin(key), std::end(key), p)) std::fill_n(p, 4, std::uint8_t{0});
}

/// The two pixels of a row or column between whose centres a point lies, and how much of each it
/// takes.
struct Tap {
  std::uint32_t iFirst, iSecond;
  std::uint64_t nFirst, nSecond;
};

/// The taps for each destination pixel. The two shares of each add up to twice `nDestination`.
std::vector<Tap> Taps(std::uint32_t nSource, std::uint32_t nDestination) {
  // The centre x + 1/2 falls on (x + 1/2) s/d - 1/2 = ((2x + 1) s - d) / 2d, counted from the first
  // source pixel's centre. In front of that one, and behind the last, they are all the same.
  const std::int64_t s = nSource, d = nDestination;
  std::vector<Tap> taps(nDestination);
  for (std::int64_t x = 0; x < d; ++x) {
    const std::int64_t nPlace = std::max<std::int64_t>((2 * x + 1) * s - d, 0);
    const auto iFirst = static_cast<std::uint32_t>(nPlace / (2 * d));
    const auto nSecond = static_cast<std::uint64_t>(nPlace % (2 * d));
    taps[static_cast<std::size_t>(x)] = {iFirst, std::min(iFirst + 1, nSource - 1),
                                         2 * std::uint64_t{nDestination} - nSecond, nSecond};
  }
  return taps;
}

/// The image in another size by linear filtering, in whole numbers and rounded once.
Image Resampled(const Image& source, std::uint32_t nWidth, std::uint32_t nHeight) {
  const std::vector<Tap> columns = Taps(source.nWidth, nWidth);
  const std::vector<Tap> rows = Taps(source.nHeight, nHeight);
  const std::uint64_t nWhole = std::uint64_t{4} * nWidth * nHeight;
  Image result{nWidth, nHeight, {}};
  result.pixels.resize(std::size_t{4} * nWidth * nHeight);
  auto* pOut = result.pixels.data();
  for (const Tap& row : rows) {
    const auto* pUpper = source.pixels.data() + std::size_t{4} * source.nWidth * row.iFirst;
    const auto* pLower = source.pixels.data() + std::size_t{4} * source.nWidth * row.iSecond;
    for (const Tap& column : columns) {
      for (std::size_t iChannel = 0; iChannel < 4; ++iChannel) {
        const std::size_t iLeft = std::size_t{4} * column.iFirst + iChannel;
        const std::size_t iRight = std::size_t{4} * column.iSecond + iChannel;
        const auto mix = [&](const std::uint8_t* pRow) {
          return column.nFirst * pRow[iLeft] + column.nSecond * pRow[iRight];
        };
        const std::uint64_t nSum = row.nFirst * mix(pUpper) + row.nSecond * mix(pLower);
        *pOut++ = static_cast<std::uint8_t>((nSum + nWhole / 2) / nWhole);
      }
    }
  }
  return result;
}

void Fill(platform::IDirect3DTexture8& texture, std::uint32_t iLevel, const Image& image) {
  const std::size_t nRow = std::size_t{4} * image.nWidth;
  const platform::D3DLOCKED_RECT locked = texture.LockRect(iLevel);
  for (std::uint32_t y = 0; y < image.nHeight; ++y)
    std::memcpy(locked.pBits + std::ptrdiff_t{locked.Pitch} * y, image.pixels.data() + nRow * y,
                nRow);
  texture.UnlockRect(iLevel);
}

void CheckArguments(std::uint32_t Width, std::uint32_t Height, platform::D3DFORMAT Format,
                    std::uint32_t Filter, std::uint32_t MipFilter) {
  const auto isSide = [](std::uint32_t n) { return n <= nMostSide || n == platform::D3DX_DEFAULT; };
  const char* sWhat = nullptr;
  if (Filter != platform::D3DX_FILTER_LINEAR || MipFilter != platform::D3DX_FILTER_LINEAR)
    sWhat = "a texture's filter is not supported";
  else if (Format != platform::D3DFMT_UNKNOWN && Format != platform::D3DFMT_A8R8G8B8)
    sWhat = "a texture's format is not supported";
  else if (!isSide(Width) || !isSide(Height))
    sWhat = "a texture is too large";
  if (sWhat != nullptr) throw D3DError(platform::D3DERR_INVALIDCALL, sWhat);
}

}  // namespace

std::shared_ptr<platform::IDirect3DTexture8> CreateTextureFromFileEx(
    const std::shared_ptr<platform::IDirect3DDevice8>& Device, const std::string& sFile,
    std::uint32_t Width, std::uint32_t Height, std::uint32_t MipLevels, std::uint32_t Usage,
    platform::D3DFORMAT Format, platform::D3DPOOL Pool, std::uint32_t Filter,
    std::uint32_t MipFilter, platform::D3DCOLOR ColorKey) {
  CheckArguments(Width, Height, Format, Filter, MipFilter);
  const auto orElse = [](std::uint32_t n, std::uint32_t nDefault) {
    return n == 0 || n == platform::D3DX_DEFAULT ? nDefault : n;
  };
  Image image = Decode(sFile);
  MakeTransparent(image, ColorKey);
  const std::uint32_t nWidth = orElse(Width, image.nWidth);
  const std::uint32_t nHeight = orElse(Height, image.nHeight);
  if (nWidth != image.nWidth || nHeight != image.nHeight) image = Resampled(image, nWidth, nHeight);

  auto texture = Device->CreateTexture(nWidth, nHeight, orElse(MipLevels, 0), Usage,
                                       platform::D3DFMT_A8R8G8B8, Pool);
  Fill(*texture, 0, image);
  for (std::uint32_t i = 1; i < texture->GetLevelCount(); ++i) {
    image = Resampled(image, std::max(1U, image.nWidth / 2), std::max(1U, image.nHeight / 2));
    Fill(*texture, i, image);
  }
  return texture;
}

}  // namespace quillorbit::d3dx8
