#include "platform/d3dx8/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

namespace quillorbit::d3dx8 {
namespace {

using platform::D3DError;
using platform::IDirect3DDevice8;
using platform::IDirect3DTexture8;

constexpr std::int64_t nMostSide = 4096;
constexpr std::size_t nCachedLines = 16;

constexpr std::uint32_t lVertexFormat =
    platform::D3DFVF_XYZRHW | platform::D3DFVF_DIFFUSE | platform::D3DFVF_TEX1;
struct Vertex {
  float x, y, z, rhw;
  platform::D3DCOLOR colour;
  float u, v;
};
static_assert(sizeof(Vertex) == 28);

/// What a text is drawn from: it depends on nothing else.
struct LineKey {
  std::string_view sText;
  std::uint32_t nWidth, nHeight, lFormat;
  bool operator==(const LineKey&) const = default;
};

/// A text in the texture's top left corner, without the empty columns to its right; without a
/// texture there is none.
struct Line {
  [[nodiscard]] LineKey Key() const { return {sText, nWidth, nHeight, lFormat}; }

  std::string sText;
  std::uint32_t nWidth = 0, nHeight = 0, lFormat = 0;
  std::shared_ptr<IDirect3DTexture8> texture;
  std::uint32_t nTextureWidth = 0, nTextureHeight = 0;
  float fRight = 0, fBottom = 0;  ///< where it ends, in texture coordinates
  float fCovered = 0;             ///< the part of the rectangle's width that the columns take
  std::uint64_t nLastUse = 0;
};

class LineFont final : public platform::ID3DXFont {
 public:
  LineFont(platform::Fonts& fonts, std::shared_ptr<IDirect3DDevice8> device,
           platform::FontHandle hFont)
      : m_fonts(fonts), m_device(std::move(device)), m_hFont(hFont) {}

  [[nodiscard]] IDirect3DDevice8& Device() const { return *m_device; }

  /// The text, rasterised now or earlier; valid until the next call.
  const Line& Find(const LineKey& key) {
    const auto isKnown = [&](const Line& line) { return line.texture && line.Key() == key; };
    auto line = std::ranges::find_if(m_lines, isKnown);
    if (line == m_lines.end()) {
      line = std::ranges::min_element(m_lines, {}, &Line::nLastUse);
      Rasterise(key, *line);
    }
    line->nLastUse = ++m_nUses;
    return *line;
  }

 private:
  void Rasterise(const LineKey& key, Line& line);

  platform::Fonts& m_fonts;
  std::shared_ptr<IDirect3DDevice8> m_device;
  platform::FontHandle m_hFont;
  platform::TextCoverage m_coverage;
  std::array<Line, nCachedLines> m_lines;
  std::uint64_t m_nUses = 0;
};

/// How many columns hold all of the text: 1 at least, if there are any.
std::uint32_t Columns(const platform::TextCoverage& coverage) {
  std::uint32_t nColumns = std::min(1U, coverage.nWidth);
  const std::uint8_t* pRow = coverage.pixels.data();
  for (std::uint32_t y = 0; y < coverage.nHeight; ++y, pRow += coverage.nWidth) {
    std::uint32_t nRow = coverage.nWidth;
    while (nRow > nColumns && pRow[nRow - 1] == 0) --nRow;
    nColumns = nRow;
  }
  return nColumns;
}

/// Writes columns of the coverage as the alpha of white. The rest is white too, so that a filter
/// that takes some of it in does not darken the text's edge.
void Fill(IDirect3DTexture8& texture, std::uint32_t nWidth, std::uint32_t nHeight,
          const platform::TextCoverage& coverage, std::uint32_t nColumns) {
  const platform::D3DLOCKED_RECT locked = texture.LockRect(0);
  std::byte* pRow = locked.pBits;
  for (std::uint32_t y = 0; y < nHeight; ++y, pRow += locked.Pitch) {
    std::memset(pRow, 0xFF, std::size_t{4} * nWidth);
    const std::size_t nFirst = std::size_t{y} * coverage.nWidth;
    const std::uint32_t nCovered = y < coverage.nHeight ? nColumns : 0;
    for (std::uint32_t x = 0; x < nWidth; ++x)
      pRow[4 * x + 3] = x < nCovered ? std::byte{coverage.pixels[nFirst + x]} : std::byte{0};
  }
  texture.UnlockRect(0);
}

void LineFont::Rasterise(const LineKey& key, Line& line) {
  m_fonts.DrawText(m_hFont, key.sText, key.nWidth, key.nHeight, key.lFormat, m_coverage);
  const std::uint32_t nColumns = Columns(m_coverage);
  const std::uint32_t nWidth = std::bit_ceil(nColumns);
  const std::uint32_t nHeight = std::bit_ceil(m_coverage.nHeight);

  // Until it is filled, the line has none. A texture that someone still wants to draw stays as it
  // is.
  auto texture = std::exchange(line.texture, nullptr);
  const bool bFits = line.nTextureWidth == nWidth && line.nTextureHeight == nHeight;
  if (!bFits || texture.use_count() != 1)
    texture = m_device->CreateTexture(nWidth, nHeight, 1, 0, platform::D3DFMT_A8R8G8B8,
                                      platform::D3DPOOL_MANAGED);
  Fill(*texture, nWidth, nHeight, m_coverage, nColumns);

  line.sText = key.sText;
  line.nWidth = key.nWidth;
  line.nHeight = key.nHeight;
  line.lFormat = key.lFormat;
  line.nTextureWidth = nWidth;
  line.nTextureHeight = nHeight;
  line.fRight = static_cast<float>(nColumns) / static_cast<float>(nWidth);
  line.fBottom = static_cast<float>(m_coverage.nHeight) / static_cast<float>(nHeight);
  line.fCovered = static_cast<float>(nColumns) / static_cast<float>(m_coverage.nWidth);
  line.texture = std::move(texture);
}

/// Keeps the first of several failures.
class FirstFailure {
 public:
  template <class Step>
  void Try(Step step) {
    try {
      step();
    } catch (...) {
      if (!m_failure) m_failure = std::current_exception();
    }
  }
  void Rethrow() const {
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  std::exception_ptr m_failure;
};

struct RenderState {
  platform::D3DRENDERSTATETYPE eState;
  std::uint32_t lValue;
};
struct StageState {
  platform::D3DTEXTURESTAGESTATETYPE eType;
  std::uint32_t lValue;
};

/// Runs a step with these states, and restores the previous ones whatever happens.
template <class Step>
void WithTextStates(IDirect3DDevice8& device, Step step) {
  constexpr std::array renderStates = {
      RenderState{platform::D3DRS_ALPHABLENDENABLE, 1},
      RenderState{platform::D3DRS_SRCBLEND, platform::D3DBLEND_SRCALPHA},
      RenderState{platform::D3DRS_DESTBLEND, platform::D3DBLEND_INVSRCALPHA}};
  constexpr std::array stageStates = {
      StageState{platform::D3DTSS_COLOROP, platform::D3DTOP_MODULATE},
      StageState{platform::D3DTSS_ALPHAOP, platform::D3DTOP_MODULATE}};
  auto oldRenderStates = renderStates;
  auto oldStageStates = stageStates;
  for (auto& [eState, lValue] : oldRenderStates) lValue = device.GetRenderState(eState);
  for (auto& [eType, lValue] : oldStageStates) lValue = device.GetTextureStageState(0, eType);

  FirstFailure failure;
  failure.Try([&] {
    for (const auto& [eState, lValue] : renderStates) device.SetRenderState(eState, lValue);
    for (const auto& [eType, lValue] : stageStates) device.SetTextureStageState(0, eType, lValue);
    step();
  });
  for (const RenderState& s : oldRenderStates)
    failure.Try([&] { device.SetRenderState(s.eState, s.lValue); });
  for (const StageState& s : oldStageStates)
    failure.Try([&] { device.SetTextureStageState(0, s.eType, s.lValue); });
  failure.Try([&] { device.SetTexture(0, nullptr); });
  failure.Rethrow();
}

/// The line's texture over its part of the rectangle: clockwise on the screen, as front faces are.
std::array<Vertex, 4> Quad(const Line& line, const platform::RECT& rect, platform::D3DCOLOR color) {
  // A whole coordinate is the centre of a pixel, but the edge of a texel: half a pixel to the top
  // left, each texel is exactly on a pixel.
  const auto edge = [](std::int32_t n) { return static_cast<float>(n) - 0.5F; };
  const float fLeft = edge(rect.left), fTop = edge(rect.top);
  const float fWidth = static_cast<float>(rect.right - rect.left) * line.fCovered;
  const float fRight = fLeft + fWidth, fBottom = edge(rect.bottom);
  return {{{fLeft, fTop, 0, 1, color, 0, 0},
           {fRight, fTop, 0, 1, color, line.fRight, 0},
           {fLeft, fBottom, 0, 1, color, 0, line.fBottom},
           {fRight, fBottom, 0, 1, color, line.fRight, line.fBottom}}};
}

}  // namespace

std::shared_ptr<platform::ID3DXFont> CreateFont(
    platform::Fonts& fonts, const std::shared_ptr<platform::IDirect3DDevice8>& Device,
    platform::FontHandle hFont) {
  return std::make_shared<LineFont>(fonts, Device, hFont);
}

void DrawText(const std::shared_ptr<platform::ID3DXFont>& Font, platform::D3DCOLOR Color,
              std::string_view sText, const platform::RECT& Rect, std::uint32_t Format) {
  auto* pFont = dynamic_cast<LineFont*>(Font.get());
  if (pFont == nullptr) throw D3DError(platform::D3DERR_INVALIDCALL, "no font to draw a text with");
  const std::int64_t nWidth = std::int64_t{Rect.right} - Rect.left;
  const std::int64_t nHeight = std::int64_t{Rect.bottom} - Rect.top;
  if (sText.empty() || nWidth <= 0 || nHeight <= 0) return;
  if (nWidth > nMostSide || nHeight > nMostSide)
    throw D3DError(platform::D3DERR_INVALIDCALL, "the rectangle for a text is too large");

  const Line& line = pFont->Find(
      {sText, static_cast<std::uint32_t>(nWidth), static_cast<std::uint32_t>(nHeight), Format});
  const std::array<Vertex, 4> vertices = Quad(line, Rect, Color);
  IDirect3DDevice8& device = pFont->Device();
  WithTextStates(device, [&] {
    device.SetTexture(0, line.texture);
    device.SetVertexShader(lVertexFormat);
    device.DrawPrimitiveUP(platform::D3DPT_TRIANGLESTRIP, 2, vertices.data(), sizeof(Vertex));
  });
}

}  // namespace quillorbit::d3dx8
