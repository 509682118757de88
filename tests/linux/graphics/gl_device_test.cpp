// The device alone, on the real OpenGL: what the pictures of the model do not show.

#include "platform/linux/graphics/gl_device.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QWidget>

#include "linux/graphics/graphics.h"
#include "linux/support.h"
#include "platform/d3dx8/matrix.h"
#include "platform/linux/graphics/direct3d8.h"

namespace quillorbit::view_tests {
namespace {

using namespace platform;
using linux_tests::Settle;

struct ScreenVertex {
  float x, y, z = 0, rhw = 1;
  D3DCOLOR colour = 0xFFFFFFFF;
  float u = 0, v = 0;
};
constexpr std::uint32_t screenFormat = D3DFVF_XYZRHW | D3DFVF_DIFFUSE | D3DFVF_TEX1;
constexpr std::uint32_t modelFormat = D3DFVF_XYZ | D3DFVF_NORMAL;

/// The number of the refusal; D3D_OK when there is none.
template <class Call>
std::int32_t Refusal(Call call) {
  try {
    call();
  } catch (const D3DError& refusal) {
    return refusal.lNumber;
  }
  return D3D_OK;
}

struct GlDevice : testing::Test {
  GlDevice() {
    surface->setGeometry(0, 0, 40, 30);
    window.resize(100, 100);
    window.show();
    Settle();
  }
  std::shared_ptr<IDirect3DDevice8> NewDevice() {
    return std::make_shared<linux_adapter::GlDevice>(graphics.contexts->New(), graphics.contexts,
                                                     *surface);
  }
  std::shared_ptr<IDirect3DDevice8> CreateDevice(D3DDEVTYPE eType = D3DDEVTYPE_HAL) {
    D3DPRESENT_PARAMETERS parameters{};
    parameters.Windowed = 1;
    return direct3d.CreateDevice(0, eType, surface->Handle(), 0, parameters);
  }
  static void Clear(IDirect3DDevice8& device, D3DCOLOR colour = 0x00204060) {
    device.Clear(0, nullptr, D3DCLEAR_TARGET, colour, 1, 0);
    device.BeginScene();
  }
  /// A rectangle, clockwise on the screen.
  static void Quad(IDirect3DDevice8& device, float fLeft, float fTop, float fRight, float fBottom,
                   D3DCOLOR colour, float fRepeats = 1) {
    const ScreenVertex vertices[] = {{fLeft, fTop, 0, 1, colour, 0, 0},
                                     {fRight, fTop, 0, 1, colour, fRepeats, 0},
                                     {fLeft, fBottom, 0, 1, colour, 0, fRepeats},
                                     {fRight, fBottom, 0, 1, colour, fRepeats, fRepeats}};
    device.SetVertexShader(screenFormat);
    device.DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, vertices, sizeof vertices[0]);
  }
  QImage Present(IDirect3DDevice8& device) const {
    device.EndScene();
    device.Present(nullptr, nullptr, 0, nullptr);
    return surface->grab().toImage();
  }
  /// A texture whose levels have one colour each, or stripes of two.
  static std::shared_ptr<IDirect3DTexture8> Texture(IDirect3DDevice8& device, std::uint32_t nSide,
                                                    std::vector<std::array<D3DCOLOR, 2>> levels) {
    auto texture = device.CreateTexture(nSide, nSide, static_cast<std::uint32_t>(levels.size()), 0,
                                        D3DFMT_A8R8G8B8, D3DPOOL_MANAGED);
    for (std::uint32_t i = 0; i < texture->GetLevelCount(); ++i) {
      for (std::uint32_t n = 0; n < (nSide >> i) * (nSide >> i); ++n)
        std::memcpy(texture->LockRect(i).pBits + std::size_t{4} * n, &levels.at(i)[n % 2], 4);
      texture->UnlockRect(i);
    }
    return texture;
  }

  Graphics graphics;
  std::vector<std::string> reports;  ///< why there is no OpenGL
  linux_adapter::LinuxDirect3D8 direct3d{graphics.contexts,
                                         [this](const char* sWhy) { reports.emplace_back(sWhy); }};
  int nArguments = 1;
  char sProgram[10] = "view_test";
  char* arguments[2] = {sProgram, nullptr};
  QApplication application{nArguments, arguments};
  QWidget window;
  linux_adapter::DrawingSurface* surface = new linux_adapter::DrawingSurface(&window);
};

TEST_F(GlDevice, CoversAndBlendsExactlyThePixels) {
  const auto device = NewDevice();
  const auto texture = Texture(*device, 2, {{0x80FFFFFF, 0xFF8040C0}});
  device->SetTexture(0, texture);
  Clear(*device);
  Quad(*device, 2.5F, 4.5F, 6.5F, 8.5F, 0x80FF8040);  // half a pixel off, as texts are drawn
  device->SetRenderState(D3DRS_ALPHABLENDENABLE, 1);
  device->SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA);
  device->SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA);
  device->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE);
  Quad(*device, 11.5F, 4.5F, 13.5F, 6.5F, 0x80FF8040);
  device->SetTexture(0, nullptr);
  Quad(*device, 20, 4, 22, 6, 0x800000FF);  // a left or top edge on the centre takes the pixel
  for (const auto eCull : {D3DCULL_CW, D3DCULL_NONE}) {
    device->SetRenderState(D3DRS_CULLMODE, eCull);
    Quad(*device, eCull == D3DCULL_CW ? 24 : 26, 4, 28, 6, 0xFFFFFFFF);
  }
  const QImage picture = Present(*device);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) {
      QRgb expected = 0xFF204060;
      if (x >= 3 && x < 7 && y >= 5 && y < 9) expected = x < 5 ? 0xFFFF8040 : 0xFF802030;
      if (x == 12 && y >= 5 && y < 7) expected = 0xFF585058;  // a quarter
      if (x == 13 && y >= 5 && y < 7) expected = 0xFF503048;  // half
      if (x >= 20 && x < 22 && y >= 4 && y < 6) expected = 0xFF1020B0;
      if (x >= 26 && x < 28 && y >= 4 && y < 6) expected = 0xFFFFFFFF;  // not culled
      const QRgb pixel = picture.pixel(x, y);
      ASSERT_TRUE(std::abs(qRed(pixel) - qRed(expected)) <= 1 &&
                  std::abs(qGreen(pixel) - qGreen(expected)) <= 1 &&
                  std::abs(qBlue(pixel) - qBlue(expected)) <= 1 && qAlpha(pixel) == 255)
          << x << ", " << y << std::hex << ' ' << pixel;
    }
  }
}

TEST_F(GlDevice, LightsByTheFormulaWhateverTheScale) {
  const auto device = NewDevice();
  device->SetTransform(D3DTS_PROJECTION, d3dx8::MatrixIdentity());
  device->SetTransform(D3DTS_VIEW, d3dx8::MatrixRotationZ(1));
  device->SetTransform(D3DTS_WORLD, d3dx8::MatrixScaling(2, 4, 1));
  device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
  device->SetRenderState(D3DRS_AMBIENT, 0x00FF0080);
  device->SetMaterial({{0.5F, 1, 1, 1}, {0.2F, 1, 0.2F, 0}, {1, 1, 1, 0}, {0, 0.1F, 0, 0}, 9});
  D3DLIGHT8 light{};
  light.Type = D3DLIGHT_DIRECTIONAL;
  light.Diffuse = {1, 1, 0, 0};
  light.Ambient = {0, 0.1F, 1, 0};
  light.Direction = {-3, 0, 0};
  device->SetLight(5, light);
  device->LightEnable(5, true);
  // The normal (1, 0.8, 0) becomes (1/2, 0.2, 0), not of length 1: half of the light
  const float vertices[] = {-9, -9,   0.5F, 1, 0.8F, 0,    9, -9,   0.5F,
                            1,  0.8F, 0,    0, 9,    0.5F, 1, 0.8F, 0};
  Clear(*device);
  device->SetVertexShader(modelFormat);
  device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, vertices, 24);
  const QRgb pixel = Present(*device).pixel(20, 15);
  EXPECT_NEAR(qRed(pixel), 255 * (0.2 + 0.5 * 0.5), 1);
  EXPECT_NEAR(qGreen(pixel), 255 * (0.1 + 0.1 + 0.5), 1);
  EXPECT_NEAR(qBlue(pixel), 255 * 0.2 * (1 + 128 / 255.0), 1);
}

TEST_F(GlDevice, FiltersAndRefreshesTextures) {
  const auto device = NewDevice();
  const auto texture = Texture(
      *device, 8, {{0xFFFF0000, 0xFFFF0000}, {0xFF00FF00, 0xFF00FF00}, {0xFF0000FF, 0xFF0000FF}});
  const auto draw = [&](D3DTEXTUREFILTERTYPE eMip) {
    device->SetTexture(0, texture);
    device->SetTextureStageState(0, D3DTSS_MIPFILTER, eMip);
    Clear(*device);
    Quad(*device, -0.5F, -0.5F, 7.5F, 7.5F, 0xFFFFFFFF, 4);
    return Present(*device).pixel(4, 4);
  };
  EXPECT_EQ(draw(D3DTEXF_NONE), 0xFFFF0000);
  EXPECT_EQ(draw(D3DTEXF_POINT), 0xFF0000FF);
  std::memset(texture->LockRect(2).pBits, 0x77, 16);
  texture->UnlockRect(2);
  EXPECT_EQ(draw(D3DTEXF_POINT), 0xFF777777);
}

TEST_F(GlDevice, ShowsAFrameAtOnceAndRefusesWhatItCannotDo) {
  const auto device = NewDevice();
  const auto buffer = device->CreateIndexBuffer(6, 0, D3DFMT_INDEX16, D3DPOOL_MANAGED);
  const auto vertices = device->CreateVertexBuffer(84, 0, screenFormat, D3DPOOL_MANAGED);
  const auto draw = [&] { device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 3, 1, 1); };
  Clear(*device);
  EXPECT_EQ(Refusal(draw), D3DERR_INVALIDCALL) << "no vertices";
  device->SetStreamSource(0, vertices, 28);
  EXPECT_EQ(Refusal(draw), D3DERR_INVALIDCALL) << "no indexes";
  device->SetIndices(buffer, 0);
  EXPECT_EQ(Refusal(draw), D3DERR_INVALIDCALL) << "too few indexes";
  EXPECT_EQ(Refusal([&] { device->SetTexture(1, nullptr); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(
      Refusal([&] { (void)device->CreateTexture(0, 4, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED); }),
      D3DERR_INVALIDCALL);
  Quad(*device, -0.5F, -0.5F, 19.5F, 29.5F, 0xFFFF0000);
  device->Present(nullptr, nullptr, 0, nullptr);
  const QPoint place = surface->mapTo(&window, QPoint(19, 29));
  EXPECT_EQ(window.screen()->grabWindow(window.winId()).toImage().pixel(place), 0xFFFF0000);
  delete surface;  // a device may be the last to go
  device->Present(nullptr, nullptr, 0, nullptr);
}

TEST_F(GlDevice, ReportsALostContextAndWhenANewOneCanBeHad) {
  const auto device = NewDevice();
  EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
  graphics.bDriver = false;
  graphics.LoseContext();
  EXPECT_EQ(Refusal([&] { Present(*device); }), D3DERR_DEVICELOST);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
  EXPECT_LE(graphics.nAsked, 3);  // not every time
  EXPECT_EQ(Refusal([&] { (void)CreateDevice(); }), D3DERR_NOTAVAILABLE);
  EXPECT_EQ(reports, std::vector<std::string>{Graphics::sNoDriver});
  graphics.bDriver = true;
  ASSERT_TRUE(linux_tests::WaitUntil(
      [&] { return device->TestCooperativeLevel() == D3DERR_DEVICENOTRESET; }));
  EXPECT_EQ(Refusal([&] { Present(*device); }), D3DERR_DEVICELOST);

  EXPECT_EQ(Refusal([&] { (void)CreateDevice(D3DDEVTYPE_SW); }), D3DERR_NOTAVAILABLE);
  EXPECT_EQ(CreateDevice()->TestCooperativeLevel(), D3D_OK);
}

}  // namespace
}  // namespace quillorbit::view_tests
