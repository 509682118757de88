#include "platform/d3dx8/text.h"

#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "fakes/direct3d8.h"
#include "fakes/fonts.h"

namespace quillorbit::d3dx8_tests {
namespace {

using platform::D3DError;
using platform::RECT;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr platform::D3DCOLOR color = 0x80112233;

/// Also knows what was drawn.
class Device : public fakes::FakeDirect3DDevice {
 public:
  using FakeDirect3DDevice::FakeDirect3DDevice;
  void DrawPrimitiveUP(platform::D3DPRIMITIVETYPE PrimitiveType, std::uint32_t PrimitiveCount,
                       const void* pVertices, std::uint32_t Stride) override {
    FakeDirect3DDevice::DrawPrimitiveUP(PrimitiveType, PrimitiveCount, pVertices, Stride);
    drawn = std::dynamic_pointer_cast<fakes::FakeTexture>(texture);
    drawnStates = {renderStates, stageStates};
  }

  std::shared_ptr<fakes::FakeTexture> drawn;
  std::pair<decltype(renderStates), decltype(stageStates)> drawnStates;
};

class Text : public testing::Test {
 protected:
  void Draw(std::string_view sText, const RECT& rect, std::uint32_t lFormat = 0) {
    d3dx8::DrawText(m_font, color, sText, rect, lFormat);
  }
  /// Draws it, and gives the calls of rasterising it.
  std::vector<std::string> Rasterising(std::string_view sText, const RECT& rect = {0, 0, 5, 2},
                                       std::uint32_t lFormat = 0) {
    Draw(sText, rect, lFormat);
    std::vector<std::string> calls;
    for (const std::string& sCall : m_log.Take())
      if (sCall.starts_with("Fonts.") || sCall.starts_with("CreateTexture")) calls.push_back(sCall);
    return calls;
  }
  static std::string Rasterised(const std::string& sText) {
    return "Fonts.DrawText 77, " + sText + ", 5, 2, 0";
  }

  fakes::CallLog m_log;
  fakes::FakeFonts m_fonts{m_log};
  std::shared_ptr<Device> m_device = std::make_shared<Device>(m_log);
  std::shared_ptr<platform::ID3DXFont> m_font = d3dx8::CreateFont(m_fonts, m_device, m_fonts.hFont);
};

const std::vector<std::string> drawing = {
    "SetRenderState 27, 1",         "SetRenderState 19, 5",
    "SetRenderState 20, 6",         "SetTextureStageState 0, 1, 4",
    "SetTextureStageState 0, 4, 4", "SetTexture 0, texture",
    "SetVertexShader 324",          "DrawPrimitiveUP 5, 2, 28",
    "SetRenderState 27, 0",         "SetRenderState 19, 2",
    "SetRenderState 20, 1",         "SetTextureStageState 0, 1, 4",
    "SetTextureStageState 0, 4, 2", "SetTexture 0, none"};

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(Text, IsOneBlendedQuad) {
  Draw("abc", {10, 20, 15, 22}, 5);
  const std::vector<std::string> rasterising = {"Fonts.DrawText 77, abc, 5, 2, 5",
                                                "CreateTexture 8, 2, 1, 0, 21, 1"};
  EXPECT_THAT(m_log.Take(), ElementsAreArray(rasterising + drawing));

  struct {
    float x, y, z, rhw;
    std::uint32_t color;
    float u, v;
  } vertices[4];
  ASSERT_EQ(m_device->userVertices.size(), sizeof vertices);
  std::memcpy(vertices, m_device->userVertices.data(), sizeof vertices);
  // Half a pixel to the top left; 5 of the 8 columns
  const float expected[][4] = {{9.5F, 19.5F, 0, 0},
                               {14.5F, 19.5F, 0.625F, 0},
                               {9.5F, 21.5F, 0, 1},
                               {14.5F, 21.5F, 0.625F, 1}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_THAT((std::array{vertices[i].x, vertices[i].y, vertices[i].u, vertices[i].v}),
                ElementsAreArray(expected[i]));
    EXPECT_EQ(vertices[i].z, 0.0F);
    EXPECT_EQ(vertices[i].rhw, 1.0F);
    EXPECT_EQ(vertices[i].color, color);
  }
}

TEST_F(Text, IsWhiteWithItsCoverageAsAlpha) {
  m_fonts.nRatio = 2;  // a scaled display
  Draw("abc", {0, 0, 5, 3});
  ASSERT_EQ(m_device->drawn->nWidth, 16U);
  ASSERT_EQ(m_device->drawn->nHeight, 8U);
  ASSERT_EQ(m_device->drawn->levels.size(), 1U);
  for (std::uint32_t y = 0; y < 8; ++y)
    for (std::uint32_t x = 0; x < 16; ++x)
      EXPECT_EQ(m_device->drawn->Pixel(0, x, y), 0xFFFFFF | (x < 3 && y < 6 ? 100 + y : 0) << 24U)
          << x << ", " << y;
  float fRight = 0, fBottom = 0;
  std::memcpy(&fRight, m_device->userVertices.data() + 3 * 28 + 20, 4);
  std::memcpy(&fBottom, m_device->userVertices.data() + 3 * 28 + 24, 4);
  EXPECT_EQ(fRight, 10.0F / 16);
  EXPECT_EQ(fBottom, 6.0F / 8);
}

TEST_F(Text, ThatRepeatsIsDrawnFromItsTexture) {
  const RECT rect = {0, 0, 5, 2};
  EXPECT_THAT(Rasterising("abc"),
              ElementsAre(Rasterised("abc"), "CreateTexture 8, 2, 1, 0, 21, 1"));
  const auto first = m_device->drawn;
  Draw("abc", {3, 4, 8, 6});  // elsewhere
  EXPECT_THAT(m_log.Take(), ElementsAreArray(drawing));
  EXPECT_EQ(m_device->drawn, first);
  // Another text, size or format is another line.
  EXPECT_EQ(Rasterising("abd").size(), 2U);
  EXPECT_EQ(Rasterising("abc", {0, 0, 6, 2}).size(), 2U);
  EXPECT_EQ(Rasterising("abc", {0, 0, 5, 3}).size(), 2U);
  EXPECT_EQ(Rasterising("abc", rect, 1).size(), 2U);
  EXPECT_THAT(Rasterising("abc"), IsEmpty());
  EXPECT_EQ(m_device->drawn, first);
}

TEST_F(Text, KeepsTheLinesUsedLast) {
  const auto number = [](int i) { return std::to_string(i); };
  for (int i = 0; i < 16; ++i) EXPECT_EQ(Rasterising(number(i)).size(), 2U);
  EXPECT_THAT(Rasterising("0"), IsEmpty());
  m_device->drawn.reset();
  // The 17th takes the place and the texture of "1".
  EXPECT_THAT(Rasterising("longer"), ElementsAre(Rasterised("longer")));
  for (const std::uint32_t x : {0U, 4U, 5U})
    EXPECT_EQ(m_device->drawn->Pixel(0, x, 1), x < 5 ? 0x65FFFFFF : 0x00FFFFFF);
  EXPECT_THAT(Rasterising("0"), IsEmpty());
  for (int i = 3; i < 16; ++i) EXPECT_THAT(Rasterising(number(i)), IsEmpty()) << i;
  // So does "1", of "2", with another size; then "3" is held by a frame that is kept.
  EXPECT_EQ(Rasterising("1", {0, 0, 9, 2}).size(), 2U);
  EXPECT_EQ(Rasterising("longer").size() + Rasterising("0").size(), 0U);
  Draw("3", {0, 0, 5, 2});
  const auto kept = m_device->drawn;
  for (int i = 4; i < 16; ++i) Draw(number(i), {0, 0, 5, 2});
  Rasterising("1", {0, 0, 9, 2});
  Rasterising("longer");
  Rasterising("0");
  EXPECT_THAT(Rasterising("new"),
              ElementsAre(Rasterised("new"), "CreateTexture 8, 2, 1, 0, 21, 1"));
  EXPECT_NE(m_device->drawn, kept);
  EXPECT_EQ(kept->Pixel(0, 1, 0), 0x00FFFFFFU);  // "3" has one byte
}

TEST_F(Text, IsMadeAnewWhenItsPlaceWasTakenInVain) {
  for (int i = 0; i < 16; ++i) Draw(std::to_string(i), {0, 0, 5, 2});
  m_log.Take();
  m_log.FailAt(2);
  EXPECT_THROW(Draw("larger", {0, 0, 9, 2}), std::system_error);
  m_log.Take();
  EXPECT_THAT(Rasterising("0"), ElementsAre(Rasterised("0"), "CreateTexture 8, 2, 1, 0, 21, 1"));
  EXPECT_THAT(Rasterising("1"), IsEmpty());
}

TEST_F(Text, IsNotDrawnWhereThereIsNone) {
  for (const RECT& rect : {RECT{5, 5, 5, 9}, {5, 5, 9, 5}, {9, 5, 5, 9}, {5, 9, 9, 5}})
    Draw("abc", rect);
  Draw("abc", {INT32_MAX, 0, INT32_MIN, 5});
  Draw("", {0, 0, 5, 5});
  EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(Text, IsRefusedWithoutAFontOrInTooLargeARectangle) {
  struct OtherFont : platform::ID3DXFont {};
  const auto number = [](const std::function<void()>& call) {
    try {
      call();
    } catch (const D3DError& e) {
      return e.lNumber;
    }
    return 0;
  };
  EXPECT_EQ(number([&] { Draw("abc", {0, 0, 4097, 5}); }), platform::D3DERR_INVALIDCALL);
  EXPECT_EQ(number([&] {
              Draw("abc", {INT32_MIN, 0, INT32_MAX, 5});
            }),
            platform::D3DERR_INVALIDCALL);
  EXPECT_EQ(number([&] { Draw("abc", {0, -1, 5, 4096}); }), platform::D3DERR_INVALIDCALL);
  EXPECT_THAT(m_log.Take(), IsEmpty());
  Draw("abc", {0, 0, 4096, 1});
  m_log.Take();
  for (const auto& font : {std::shared_ptr<platform::ID3DXFont>(),
                           std::shared_ptr<platform::ID3DXFont>(std::make_shared<OtherFont>())})
    EXPECT_EQ(number([&] {
                d3dx8::DrawText(font, color, "abc", {0, 0, 5, 5}, 0);
              }),
              platform::D3DERR_INVALIDCALL);
  EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(Text, LeavesTheStatesAsTheyWereWhereverItFails) {
  const auto renderStates = m_device->renderStates;
  const auto stageStates = m_device->stageStates;
  constexpr std::size_t nCalls = 16;
  for (std::size_t i = 1; i <= nCalls; ++i) {
    const std::string sText = "text " + std::to_string(i);
    m_log.Take();
    m_log.FailAt(i);
    EXPECT_THROW(Draw(sText, {0, 0, 5, 2}), std::system_error) << i;
    // Putting one back may fail; the others are put back all the same.
    int nWrong = 0;
    for (const auto& [eState, lValue] : renderStates)
      nWrong += m_device->renderStates.at(eState) != lValue;
    for (const auto& [state, lValue] : stageStates)
      nWrong += m_device->stageStates.at(state) != lValue;
    EXPECT_EQ(nWrong, i == 11 || i == 12 || i == 13 || i == 15 ? 1 : 0) << i;
    EXPECT_EQ(m_device->texture == nullptr, i != 16) << i;
    m_device->renderStates = renderStates;
    m_device->stageStates = stageStates;
    m_device->texture.reset();
    m_log.Take();

    // The next time it is there, made anew where it was not finished.
    EXPECT_EQ(Rasterising(sText).size(), i <= 2 ? 2U : 0U) << i;
    EXPECT_EQ(m_device->drawn->Pixel(0, 4, 0), 0x64FFFFFFU);
  }
}

}  // namespace
}  // namespace quillorbit::d3dx8_tests
