#include "platform/d3dx8/texture.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <vector>

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DError;

constexpr std::uint32_t nMostSide = 4096;

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
  std::byte* pRow = locked.pBits;
  for (std::uint32_t y = 0; y < image.nHeight; ++y, pRow += locked.Pitch)
    std::memcpy(pRow, image.pixels.data() + nRow * y, nRow);
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
    std::uint32_t MipFilter, platform::D3DCOLOR ColorKey, ImageBudget& budget) {
  CheckArguments(Width, Height, Format, Filter, MipFilter);
  const auto orElse = [](std::uint32_t n, std::uint32_t nDefault) {
    return n == 0 || n == platform::D3DX_DEFAULT ? nDefault : n;
  };
  Image image = ReadImage(sFile, budget);
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
