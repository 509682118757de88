#include "platform/d3dx8/image_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <utility>

#define STBI_NO_STDIO
#include <stb_image.h>

#include "platform/d3dx8/image_decoder.h"
#include "platform/d3dx8/whole_file.h"
#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DError;

constexpr std::uint64_t nMostSide = 4096;  // pixels
constexpr std::uint64_t nLeastPixels = std::uint64_t{128} * 128;
constexpr std::size_t nDecoderBytes = 64 << 10;  // above what the decoder needs for itself

[[noreturn]] void Refuse(const std::string& sWhy) {
  throw D3DError(platform::D3DXERR_INVALIDDATA, sWhy.c_str());
}

std::string FailureReason() {
  const std::string sReason = stbi_failure_reason();
  return sReason == "Out of memory" ? "it unpacks to more than its pixels need" : sReason;
}

/// Takes an image from the budget by its header, and gives the decoder the memory that it needs.
void Admit(std::string_view bytes, ImageBudget& budget) {
  const auto* pBytes = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int nFileBytes = static_cast<int>(bytes.size());
  LimitDecoder(nDecoderBytes);
  int nHeaderWidth = 0, nHeaderHeight = 0, nChannels = 0;
  if (stbi_info_from_memory(pBytes, nFileBytes, &nHeaderWidth, &nHeaderHeight, &nChannels) == 0)
    Refuse(FailureReason());
  // A BMP file whose rows run from the top has a negative height.
  const auto nWidth = static_cast<std::uint64_t>(std::abs(std::int64_t{nHeaderWidth}));
  const auto nHeight = static_cast<std::uint64_t>(std::abs(std::int64_t{nHeaderHeight}));
  if (nWidth < 1 || nHeight < 1) Refuse("the image is empty");
  if (nWidth > nMostSide || nHeight > nMostSide)
    Refuse("the image has more than 4096 pixels on a side");

  const bool bTwice =
      IsProgressiveJpeg(bytes) || stbi_is_16_bit_from_memory(pBytes, nFileBytes) != 0;
  const std::uint64_t nTimes = bTwice ? 2 : 1;
  const std::uint64_t nPixels = std::max(nWidth * nHeight * nTimes, nLeastPixels);
  if (nPixels > budget.nPixels) Refuse("the model's images have more than 16777216 pixels in all");
  budget.nPixels -= nPixels;
  // It allocates whole blocks of pixels, of up to 32 x 32 in a JPEG file, and may double a buffer.
  const std::uint64_t nPixelBytes = 4 * nTimes * (nWidth + 32) * (nHeight + 32);
  LimitDecoder(nDecoderBytes + 2 * static_cast<std::size_t>(nPixelBytes) +
               2 * static_cast<std::size_t>(nFileBytes));
}

}  // namespace

Image DecodeImage(std::string_view bytes, ImageBudget& budget) {
  if (bytes.size() > budget.nFileBytes) Refuse("the model's images are more than 64 MiB in all");
  budget.nFileBytes -= bytes.size();
  if (const char* const sWhy = WhyUnsafe(bytes)) Refuse(sWhy);
  Admit(bytes, budget);

  int nWidth = 0, nHeight = 0, nChannels = 0;
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> rgba(
      stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()),
                            static_cast<int>(bytes.size()), &nWidth, &nHeight, &nChannels,
                            STBI_rgb_alpha),
      stbi_image_free);
  if (!rgba) Refuse(FailureReason());
  Image image{static_cast<std::uint32_t>(nWidth), static_cast<std::uint32_t>(nHeight), {}};
  const std::size_t nBytes = std::size_t{4} * image.nWidth * image.nHeight;
  image.pixels.assign(rgba.get(), rgba.get() + nBytes);
  for (std::size_t i = 0; i < nBytes; i += 4) std::swap(image.pixels[i], image.pixels[i + 2]);
  return image;
}

Image ReadImage(const std::string& sFile, ImageBudget& budget) {
  const std::string bytes = ReadWholeFile(sFile, ImageBudget().nFileBytes);
  try {
    return DecodeImage(bytes, budget);
  } catch (const D3DError& e) {
    Refuse(sFile + ": " + e.what());
  }
}

}  // namespace quillorbit::d3dx8
