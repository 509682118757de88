#include "platform/d3dx8/text.h"

#include <gtest/gtest.h>

#include "fakes/direct3d8.h"
#include "fakes/fonts.h"

namespace quillorbit::test {
namespace {

using Lines = std::vector<std::string>;

struct Text : testing::Test {
  Lines Draw(const std::string& sText, const platform::RECT& rect) {
    d3dx8::DrawText(font, 0x80112233, sText, rect, 9);
    return log.Take();
  }
  fakes::CallLog log;
  fakes::FakeFonts fonts{log};
  std::shared_ptr<fakes::FakeDirect3DDevice> device =
      std::make_shared<fakes::FakeDirect3DDevice>(log);
  std::shared_ptr<platform::ID3DXFont> font = d3dx8::CreateFont(fonts, device, fonts.hFont);
};

TEST_F(Text, IsOneBlendedQuadThatLeavesTheStatesAsTheyWere) {
  fonts.nRatio = 2;  // a scaled display
  EXPECT_EQ(Draw("abc", {10, 20, 15, 23}),
            (Lines{"Fonts.DrawText 77, abc, 5, 3, 9", "CreateTexture 4, 8, 1, 0, 21, 1",
                   "SetRenderState 27, 1", "SetRenderState 19, 5", "SetRenderState 20, 6",
                   "SetTextureStageState 0, 1, 4", "SetTextureStageState 0, 4, 4",
                   "SetTexture 0, texture", "SetVertexShader 324", "DrawPrimitiveUP 5, 2, 28",
                   "SetRenderState 27, 0", "SetRenderState 19, 2", "SetRenderState 20, 1",
                   "SetTextureStageState 0, 1, 4", "SetTextureStageState 0, 4, 2",
                   "SetTexture 0, none"}));
  log.FailAt(8);
  EXPECT_THROW(Draw("abc", {10, 20, 15, 23}), std::system_error);
  EXPECT_EQ(log.Take().size(), 14U);  // restoring all the same
  for (const platform::RECT& rect : {platform::RECT{5, 5, 5, 9}, {INT32_MAX, 0, INT32_MIN, 5}})
    EXPECT_EQ(Draw("abc", rect), Lines());
  EXPECT_THROW(Draw("abc", {0, INT32_MIN, 5, INT32_MAX}), platform::D3DError);
}

}  // namespace
}  // namespace quillorbit::test
