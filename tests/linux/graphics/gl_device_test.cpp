// The device alone, on the real OpenGL.

#include "platform/linux/graphics/gl_device.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <QApplication>
#include <QMatrix4x4>
#include <QScreen>
#include <QVector3D>
#include <QWidget>

#include "linux/graphics/graphics.h"
#include "linux/support.h"
#include "platform/linux/graphics/direct3d8.h"

namespace quillorbit::view_tests {
namespace {

using namespace platform;
using linux_adapter::DrawingSurface;
using linux_tests::Settle;
using linux_tests::WaitUntil;

struct ScreenVertex {
  float x, y, z, rhw;
  D3DCOLOR colour;
  float u, v;
};
constexpr std::uint32_t screenFormat = D3DFVF_XYZRHW | D3DFVF_DIFFUSE | D3DFVF_TEX1;

struct ModelVertex {
  D3DVECTOR position, normal;
  float u, v;
};
constexpr std::uint32_t modelFormat = D3DFVF_XYZ | D3DFVF_NORMAL | D3DFVF_TEX1;

constexpr QSize size = {40, 30};
constexpr D3DCOLOR background = 0x00204060, white = 0xFFFFFFFF;

/// The number of the refusal; D3D_OK when there is none.
template <class Call>
std::int32_t Refusal(Call call) {
  try {
    call();
  } catch (const D3DError& refusal) {
    EXPECT_STRNE(refusal.what(), "");
    return refusal.lNumber;
  }
  return D3D_OK;
}

D3DMATRIX ToMatrix(const QMatrix4x4& m) {
  D3DMATRIX matrix{};  // columns there are rows here: points stand on the other side
  std::memcpy(matrix.m.data(), m.constData(), sizeof matrix.m);
  return matrix;
}

D3DVECTOR ToVector(const QVector3D& v) { return {v.x(), v.y(), v.z()}; }

class GlDevice : public testing::Test {
 protected:
  GlDevice() {
    surface->setGeometry({{0, 0}, size});
    window.resize(100, 100);
    window.show();
    Settle();
  }

  std::shared_ptr<IDirect3DDevice8> NewDevice() {
    return std::make_shared<linux_adapter::GlDevice>(graphics.contexts->New(), graphics.contexts,
                                                     *surface);
  }
  std::shared_ptr<IDirect3DDevice8> CreateDevice() {
    D3DPRESENT_PARAMETERS parameters{};
    parameters.Windowed = 1;
    return Direct3D().CreateDevice(D3DADAPTER_DEFAULT, D3DDEVTYPE_HAL, surface->Handle(),
                                   D3DCREATE_SOFTWARE_VERTEXPROCESSING, parameters);
  }
  linux_adapter::LinuxDirect3D8 Direct3D() {
    return {graphics.contexts, [this](const char* sWhy) { reports.push_back(sWhy); }};
  }

  static void Clear(IDirect3DDevice8& device, D3DCOLOR colour = background) {
    device.Clear(0, nullptr, D3DCLEAR_TARGET, colour, 1, 0);
    device.BeginScene();
  }
  /// A rectangle, clockwise on the screen.
  static void Quad(IDirect3DDevice8& device, float fLeft, float fTop, float fRight, float fBottom,
                   D3DCOLOR colour = white, float fRepeats = 1) {
    const std::array<ScreenVertex, 4> vertices = {
        {{fLeft, fTop, 0, 1, colour, 0, 0},
         {fRight, fTop, 0, 1, colour, fRepeats, 0},
         {fLeft, fBottom, 0, 1, colour, 0, fRepeats},
         {fRight, fBottom, 0, 1, colour, fRepeats, fRepeats}}};
    device.SetVertexShader(screenFormat);
    device.DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, vertices.data(), sizeof vertices[0]);
  }
  QImage Shown() const { return surface->grab().toImage(); }
  QImage Present(IDirect3DDevice8& device) const {
    device.EndScene();
    device.Present(nullptr, nullptr, 0, nullptr);
    return Shown();
  }

  /// A texture of these levels, each of one row or of one colour.
  static std::shared_ptr<IDirect3DTexture8> Texture(
      IDirect3DDevice8& device, std::uint32_t nWidth, std::uint32_t nHeight,
      const std::vector<std::vector<D3DCOLOR>>& levels) {
    auto texture = device.CreateTexture(nWidth, nHeight, static_cast<std::uint32_t>(levels.size()),
                                        0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED);
    EXPECT_EQ(texture->GetLevelCount(), levels.size());
    for (std::uint32_t i = 0; i < levels.size(); ++i) {
      const D3DLOCKED_RECT locked = texture->LockRect(i);
      for (std::uint32_t y = 0; y < std::max(1U, nHeight >> i); ++y)
        for (std::uint32_t x = 0; x < std::max(1U, nWidth >> i); ++x)
          std::memcpy(locked.pBits + locked.Pitch * std::ptrdiff_t{y} + 4 * std::ptrdiff_t{x},
                      &levels[i][x % levels[i].size()], 4);
      texture->UnlockRect(i);
    }
    return texture;
  }

  Graphics graphics;
  std::vector<std::string> reports;  ///< why there is no OpenGL
  int nArguments = 1;
  char sProgram[10] = "view_test";
  char* arguments[2] = {sProgram, nullptr};
  QApplication application{nArguments, arguments};
  QWidget window;
  DrawingSurface* surface = new DrawingSurface(&window);
};

void ExpectNear(QRgb colour, std::array<int, 3> expected, const char* sWhat = "") {
  EXPECT_NEAR(qRed(colour), expected[0], 1) << sWhat;
  EXPECT_NEAR(qGreen(colour), expected[1], 1) << sWhat;
  EXPECT_NEAR(qBlue(colour), expected[2], 1) << sWhat;
}

TEST_F(GlDevice, LightsVerticesByTheFormula) {
  const auto device = NewDevice();
  device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
  device->SetTransform(D3DTS_PROJECTION, ToMatrix({}));
  std::mt19937 random(3);
  const auto number = [&](float fFrom, float fTo) {
    return std::uniform_real_distribution<float>(fFrom, fTo)(random);
  };
  const auto colour = [&](float fTo) {
    return D3DCOLORVALUE{number(0, fTo), number(0, fTo), number(0, fTo), number(0, 1)};
  };
  const auto vector = [&] { return QVector3D(number(-1, 1), number(-1, 1), number(-1, 1)); };

  int nBetween = 0;  // neither black nor saturated
  constexpr int nRounds = 400;
  for (int iRound = 0; iRound < nRounds; ++iRound) {
    QMatrix4x4 world, view;
    world.rotate(number(0, 360), vector());
    world.scale(number(0.5, 4), number(0.5, 4), number(-4, -0.5));
    world.rotate(number(0, 360), vector());
    view.rotate(number(0, 360), vector());
    device->SetTransform(D3DTS_WORLD, ToMatrix(world));
    device->SetTransform(D3DTS_VIEW, ToMatrix(view));

    const D3DMATERIAL8 material = {colour(1), colour(1), colour(1), colour(0.3F), 0};
    const D3DCOLOR ambient = random() & 0x7F7F7F;
    device->SetMaterial(material);
    device->SetRenderState(D3DRS_AMBIENT, ambient);

    const QVector3D normal = 2 * vector();
    const QMatrix3x3 normalMatrix = world.normalMatrix();
    std::array<float, 3> n{};  // in world space: a camera that only turns changes no angles
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) n[static_cast<std::size_t>(i)] += normalMatrix(i, j) * normal[j];

    std::array<double, 3> diffuseSum{}, ambientSum{};
    for (std::size_t i = 0; i < 3; ++i) ambientSum[i] = (ambient >> (16 - 8 * i) & 0xFF) / 255.0;
    const unsigned nLights = 1 + random() % 4;
    for (std::uint32_t i = 0; i < 4; ++i) {
      D3DLIGHT8 light{};
      light.Type = D3DLIGHT_DIRECTIONAL;
      light.Diffuse = colour(2);
      light.Ambient = colour(0.2F);
      light.Specular = colour(1);  // there are no highlights
      const QVector3D direction = vector() * number(0.1F, 10);
      light.Direction = ToVector(direction);
      device->SetLight(3 * i, light);
      device->LightEnable(3 * i, i < nLights);
      if (i >= nLights) continue;
      const QVector3D d = direction.normalized();
      const double dCosine = std::max(0.0F, -(n[0] * d.x() + n[1] * d.y() + n[2] * d.z()));
      const auto add = [&](std::array<double, 3>& sum, const D3DCOLORVALUE& c, double dTimes) {
        sum = {sum[0] + c.r * dTimes, sum[1] + c.g * dTimes, sum[2] + c.b * dTimes};
      };
      add(diffuseSum, light.Diffuse, dCosine);
      add(ambientSum, light.Ambient, 1);
    }

    // One triangle over all of the surface, wherever the matrices put it.
    const QMatrix4x4 back = (view * world).inverted();
    std::array<ModelVertex, 3> vertices{};
    const std::array<QVector3D, 3> corners = {{{-1, -1, 0.5F}, {-1, 3, 0.5F}, {3, -1, 0.5F}}};
    for (std::size_t i = 0; i < 3; ++i)
      vertices[i] = {ToVector(back.map(corners[i])), ToVector(normal), 0, 0};
    const auto vertexBuffer =
        device->CreateVertexBuffer(sizeof vertices, 0, modelFormat, D3DPOOL_MANAGED);
    std::memcpy(vertexBuffer->Lock(), vertices.data(), sizeof vertices);
    vertexBuffer->Unlock();
    const auto fill = [](IDirect3DIndexBuffer8& buffer, const auto& indexes) {
      std::memcpy(buffer.Lock(), indexes.data(), sizeof indexes);
      buffer.Unlock();
    };
    const bool bWide = iRound % 2 == 0;
    const auto indexBuffer = device->CreateIndexBuffer(
        bWide ? 16 : 8, 0, bWide ? D3DFMT_INDEX32 : D3DFMT_INDEX16, D3DPOOL_MANAGED);
    if (bWide)
      fill(*indexBuffer, std::array<std::uint32_t, 4>{7, 2, 0, 1});
    else
      fill(*indexBuffer, std::array<std::uint16_t, 4>{7, 2, 0, 1});

    Clear(*device);
    device->SetVertexShader(modelFormat);
    device->SetStreamSource(0, vertexBuffer, sizeof(ModelVertex));
    device->SetIndices(indexBuffer, 0);
    device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 3, 1, 1);
    const QRgb pixel = Present(*device).pixel(11, 17);

    const auto expected = [&](float D3DCOLORVALUE::*part, std::size_t i) {
      const double d = material.Emissive.*part + material.Ambient.*part * ambientSum[i] +
                       material.Diffuse.*part * diffuseSum[i];
      if (d > 0.01 && d < 0.99) ++nBetween;
      return static_cast<int>(std::lround(255 * std::clamp(d, 0.0, 1.0)));
    };
    ExpectNear(pixel, {expected(&D3DCOLORVALUE::r, 0), expected(&D3DCOLORVALUE::g, 1),
                       expected(&D3DCOLORVALUE::b, 2)});
    if (HasFailure()) FAIL() << "round " << iRound;
  }
  EXPECT_GT(nBetween, nRounds);
}

TEST_F(GlDevice, LeavesOutTheTrianglesOfOneWinding) {
  const auto device = NewDevice();
  for (const auto eTransform : {D3DTS_WORLD, D3DTS_VIEW, D3DTS_PROJECTION})
    device->SetTransform(eTransform, ToMatrix({}));
  device->SetRenderState(D3DRS_LIGHTING, 0);  // white
  // The right one is clockwise on the screen, the left one is not: as pixels, where y goes down,
  // and as places, where it goes up.
  const std::array<ScreenVertex, 6> pixels = {{{5, 5, 0, 1, white, 0, 0},
                                               {5, 25, 0, 1, white, 0, 0},
                                               {15, 15, 0, 1, white, 0, 0},
                                               {35, 5, 0, 1, white, 0, 0},
                                               {35, 25, 0, 1, white, 0, 0},
                                               {25, 15, 0, 1, white, 0, 0}}};
  std::array<ModelVertex, 6> places{};
  for (std::size_t i = 0; i < 6; ++i)
    places[i].position = {pixels[i].x / 20 - 1, 1 - pixels[i].y / 15, 0.5F};

  const auto expect = [&](D3DCULL eCull, bool bLeft, bool bRight) {
    for (const bool bPixels : {true, false}) {
      device->SetRenderState(D3DRS_CULLMODE, eCull);
      Clear(*device, 0);
      device->SetVertexShader(bPixels ? screenFormat : modelFormat);
      if (bPixels)
        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 2, pixels.data(), sizeof pixels[0]);
      else
        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 2, places.data(), sizeof places[0]);
      const QImage picture = Present(*device);
      EXPECT_EQ(picture.pixel(8, 15) == white, bLeft) << eCull << bPixels;
      EXPECT_EQ(picture.pixel(32, 15) == white, bRight) << eCull << bPixels;
      EXPECT_NE(picture.pixel(20, 15), white);
    }
  };
  expect(D3DCULL_CCW, false, true);
  expect(D3DCULL_CW, true, false);
  expect(D3DCULL_NONE, true, true);
}

TEST_F(GlDevice, CoversAndBlendsExactlyThePixels) {
  const auto device = NewDevice();
  const auto texture = Texture(*device, 2, 1, {{0x80FFFFFF, 0xFF8040C0}});
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
  const QImage picture = Present(*device);

  const auto blend = [](int nSource, int nTarget, double dAlpha) {
    return static_cast<int>(std::lround(nSource * dAlpha + nTarget * (1 - dAlpha)));
  };
  constexpr double dHalf = 128 / 255.0;
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) {
      std::array<int, 3> expected = {0x20, 0x40, 0x60};
      if (x >= 3 && x < 7 && y >= 5 && y < 9)
        expected = x < 5 ? std::array{255, 128, 64} : std::array{128, 32, 48};
      if (x == 12 && y >= 5 && y < 7)
        expected = {blend(255, 0x20, dHalf * dHalf), blend(128, 0x40, dHalf * dHalf),
                    blend(64, 0x60, dHalf * dHalf)};
      if (x == 13 && y >= 5 && y < 7)
        expected = {blend(128, 0x20, dHalf), blend(32, 0x40, dHalf), blend(48, 0x60, dHalf)};
      if (x >= 20 && x < 22 && y >= 4 && y < 6)
        expected = {blend(0, 0x20, dHalf), blend(0, 0x40, dHalf), blend(255, 0x60, dHalf)};
      ExpectNear(picture.pixel(x, y), expected);
      EXPECT_EQ(qAlpha(picture.pixel(x, y)), 255);
      if (HasFailure()) FAIL() << x << ", " << y;
    }
  }
}

TEST_F(GlDevice, FiltersTextures) {
  const auto device = NewDevice();
  const auto draw = [&](const std::shared_ptr<IDirect3DTexture8>& texture, int nPixels,
                        float fRepeats) {
    device->SetTexture(0, texture);
    Clear(*device);
    const auto fEdge = static_cast<float>(nPixels) - 0.5F;
    Quad(*device, -0.5F, -0.5F, fEdge, fEdge, white, fRepeats);
    return Present(*device);
  };
  const auto filter = [&](D3DTEXTURESTAGESTATETYPE eWhich, D3DTEXTUREFILTERTYPE eFilter) {
    device->SetTextureStageState(0, eWhich, eFilter);
  };

  // Enlarged: points at first. A texture goes on with itself beyond its edge.
  const auto blackAndWhite = Texture(*device, 2, 1, {{0xFF000000, 0xFFFFFFFF}});
  QImage picture = draw(blackAndWhite, 8, 1);
  for (int x = 0; x < 8; ++x)
    ExpectNear(picture.pixel(x, 3), x < 4 ? std::array{0, 0, 0} : std::array{255, 255, 255});
  filter(D3DTSS_MAGFILTER, D3DTEXF_LINEAR);
  picture = draw(blackAndWhite, 8, 1);
  for (int x = 0; x < 8; ++x) {
    const double dFromWhite = std::abs((x + 0.5) / 4 - 1.5);  // in texels
    const int n = static_cast<int>(std::lround(255 * std::max(1 - dFromWhite, dFromWhite - 1)));
    ExpectNear(picture.pixel(x, 3), {n, n, n});
  }

  // Made smaller to a quarter, then to a third
  const std::array<int, 3> red = {255, 0, 0}, blue = {0, 0, 255};
  const auto levels =
      Texture(*device, 8, 8, {{0xFFFF0000}, {0xFF00FF00}, {0xFF0000FF}, {0xFFFFFFFF}});
  for (const auto eMinify : {D3DTEXF_POINT, D3DTEXF_LINEAR}) {
    filter(D3DTSS_MINFILTER, eMinify);
    filter(D3DTSS_MIPFILTER, D3DTEXF_NONE);
    ExpectNear(draw(levels, 8, 4).pixel(4, 4), red, "the largest level alone");
    filter(D3DTSS_MIPFILTER, D3DTEXF_POINT);
    ExpectNear(draw(levels, 8, 4).pixel(4, 4), blue, "the level of that size");
    ExpectNear(draw(levels, 8, 3).pixel(4, 4), blue, "the nearest level");
    ExpectNear(draw(Texture(*device, 8, 8, {{0xFFFF0000}}), 8, 4).pixel(4, 4), red,
               "no smaller one");
    filter(D3DTSS_MIPFILTER, D3DTEXF_LINEAR);
    const QRgb mixed = draw(levels, 8, 3).pixel(4, 4);
    EXPECT_TRUE(qRed(mixed) == 0 && qGreen(mixed) > 50 && qBlue(mixed) > 50) << std::hex << mixed;
  }

  // New content comes into the next frame.
  const auto texture = Texture(*device, 1, 1, {{0x00123456}});
  EXPECT_EQ(draw(texture, 8, 1).pixel(4, 4), 0xFF123456);
  const D3DCOLOR other = 0x00FEDCBA;
  std::memcpy(texture->LockRect(0).pBits, &other, 4);
  texture->UnlockRect(0);
  EXPECT_EQ(draw(texture, 8, 1).pixel(4, 4), 0xFFFEDCBA);
  EXPECT_EQ(device->CreateTexture(5, 3, 0, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED)->GetLevelCount(),
            3U);
}

TEST_F(GlDevice, ShowsAFrameAtOnceAndKeepsIt) {
  const auto device = NewDevice();
  const auto onScreen = [&](QPoint place) {
    const QPoint global = surface->mapTo(&window, place);
    return window.screen()->grabWindow(window.winId()).toImage().pixel(global);
  };
  Clear(*device);
  Quad(*device, -0.5F, -0.5F, 19.5F, 29.5F, 0xFFFF0000);
  device->Present(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(onScreen({19, 29}), 0xFFFF0000);  // without a turn of the event loop
  EXPECT_EQ(onScreen({20, 0}), 0xFF204060);

  window.hide();
  Settle();
  window.show();
  Settle();
  EXPECT_EQ(onScreen({19, 29}), 0xFFFF0000);
  window.hide();
  Clear(*device, 0x00ABCDEF);
  Present(*device);
  window.show();
  Settle();
  EXPECT_EQ(onScreen({19, 29}), 0xFFABCDEF);

  // The back buffer keeps its size and is stretched.
  surface->resize(2 * size);
  for (const D3DCOLOR left : {0xFFFF0000, 0xFF00FF00}) {
    Clear(*device);
    Quad(*device, -0.5F, -0.5F, 19.5F, 29.5F, left);
    const QImage picture = Present(*device);
    EXPECT_EQ(picture.size(), 2 * size);
    EXPECT_EQ(picture.pixel(37, 59), left);
    EXPECT_EQ(picture.pixel(42, 0), 0xFF204060);
    EXPECT_EQ(picture.pixel(79, 59), 0xFF204060);
  }

  delete surface;  // a device may be the last to go
  Clear(*device);
  device->Present(nullptr, nullptr, 0, nullptr);
}

TEST_F(GlDevice, RefusesWhatItCannotDoAndGoesOn) {
  const auto device = NewDevice();
  const auto texture = Texture(*device, 4, 4, {{white}});
  const auto vertices = device->CreateVertexBuffer(84, 0, screenFormat, D3DPOOL_MANAGED);
  const auto indexes = device->CreateIndexBuffer(6, 0, D3DFMT_INDEX16, D3DPOOL_MANAGED);
  const auto draw = [&](std::uint32_t nStart) {
    device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 3, nStart, 1);
  };
  const auto createTexture = [&](std::uint32_t nWidth, D3DFORMAT eFormat) {
    (void)device->CreateTexture(nWidth, 4, 1, 0, eFormat, D3DPOOL_MANAGED);
  };
  D3DLIGHT8 light{};  // of no type
  EXPECT_EQ(Refusal([&] { createTexture(0, D3DFMT_A8R8G8B8); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { createTexture(4097, D3DFMT_A8R8G8B8); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { createTexture(4, D3DFMT_D16); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { texture->LockRect(1); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { device->SetTexture(1, texture); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { device->SetLight(0, light); }), D3DERR_INVALIDCALL);
  EXPECT_EQ(Refusal([&] { draw(0); }), D3DERR_INVALIDCALL) << "no vertices";
  device->SetStreamSource(0, vertices, sizeof(ScreenVertex));
  EXPECT_EQ(Refusal([&] { draw(0); }), D3DERR_INVALIDCALL) << "no indexes";
  device->SetIndices(indexes, 0);
  EXPECT_EQ(Refusal([&] { draw(1); }), D3DERR_INVALIDCALL) << "too few indexes";
  device->SetVertexShader(D3DFVF_NORMAL);
  EXPECT_EQ(Refusal([&] { draw(0); }), D3DERR_INVALIDCALL) << "no position";

  Clear(*device);
  Quad(*device, 0, 0, 40, 30, 0xFF00FF00);
  EXPECT_EQ(Refusal([&] { draw(0); }), D3DERR_INVALIDCALL) << "its own vertices unset the stream";
  EXPECT_EQ(Present(*device).pixel(20, 15), 0xFF00FF00);
}

TEST_F(GlDevice, IsLostWithItsContextAndReplacedByAnother) {
  auto device = NewDevice();
  auto texture = Texture(*device, 1, 1, {{0xFFFF0000}});
  device->SetTexture(0, texture);
  const auto drawAll = [&](IDirect3DDevice8& on) {
    Clear(on);
    Quad(on, -0.5F, -0.5F, 39.5F, 29.5F, white);
    return Present(on).pixel(20, 15);
  };
  EXPECT_EQ(drawAll(*device), 0xFFFF0000);
  EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);

  const auto present = [&] { device->Present(nullptr, nullptr, 0, nullptr); };
  graphics.bDriver = false;
  Clear(*device, 0x0000FF00);
  graphics.LoseContext();  // in the middle of a frame
  EXPECT_EQ(Refusal(present), D3DERR_DEVICELOST);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
    EXPECT_EQ(Refusal([&] { drawAll(*device); }), D3DERR_DEVICELOST);
    EXPECT_EQ(Refusal([&] { (void)CreateDevice(); }), D3DERR_NOTAVAILABLE);
  }
  EXPECT_EQ(Shown().pixel(20, 15), 0xFFFF0000);

  for (int i = 0; i < 50; ++i) EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
  EXPECT_LE(graphics.nAsked, 3);  // not every time

  graphics.bDriver = true;
  ASSERT_TRUE(WaitUntil([&] { return device->TestCooperativeLevel() == D3DERR_DEVICENOTRESET; }));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICENOTRESET);
    EXPECT_EQ(Refusal(present), D3DERR_DEVICELOST);
  }
  const auto next = CreateDevice();
  EXPECT_EQ(next->TestCooperativeLevel(), D3D_OK);
  const auto nextTexture = Texture(*next, 1, 1, {{0xFF0000FF}});
  next->SetTexture(0, nextTexture);
  EXPECT_EQ(drawAll(*next), 0xFF0000FF);
  device.reset();
  texture.reset();
  std::this_thread::sleep_for(std::chrono::milliseconds(40));  // until the display is due
  EXPECT_EQ(drawAll(*next), 0xFF0000FF);
}

TEST_F(GlDevice, HasAContextOfItsOwn) {
  const auto first = NewDevice(), second = NewDevice();
  auto texture = Texture(*first, 1, 1, {{0xFFFF0000}});
  first->SetTexture(0, texture);
  for (int i = 0; i < 2; ++i) {
    Clear(*first);
    Clear(*second);
    Quad(*first, -0.5F, -0.5F, 9.5F, 29.5F);
    Quad(*second, 9.5F, -0.5F, 19.5F, 29.5F, 0xFF00FF00);
    EXPECT_EQ(Present(*first).pixel(5, 5), 0xFFFF0000);
    EXPECT_EQ(Present(*second).pixel(5, 5), 0xFF204060);
    EXPECT_EQ(Shown().pixel(15, 5), 0xFF00FF00);
  }
}

TEST_F(GlDevice, IsNotAvailableWithoutADriverNorWithoutASurface) {
  graphics = Graphics(false);
  EXPECT_EQ(Refusal([&] { (void)CreateDevice(); }), D3DERR_NOTAVAILABLE);
  graphics.bDriver = true;
  EXPECT_NE(CreateDevice(), nullptr);  // a driver that comes later is taken

  EXPECT_EQ(reports, std::vector<std::string>{Graphics::sNoDriver});

  linux_adapter::LinuxDirect3D8 direct3d = Direct3D();
  D3DPRESENT_PARAMETERS parameters{};
  const auto create = [&](std::uint32_t nAdapter, D3DDEVTYPE eType, WindowHandle hWnd) {
    return Refusal([&] { (void)direct3d.CreateDevice(nAdapter, eType, hWnd, 0, parameters); });
  };
  EXPECT_EQ(create(0, D3DDEVTYPE_HAL, surface->Handle()), D3DERR_INVALIDCALL) << "full screen";
  parameters.Windowed = 1;
  EXPECT_EQ(create(0, D3DDEVTYPE_HAL, 0), D3DERR_INVALIDCALL);
  EXPECT_EQ(create(1, D3DDEVTYPE_HAL, surface->Handle()), D3DERR_INVALIDCALL);
  EXPECT_EQ(create(0, D3DDEVTYPE_SW, surface->Handle()), D3DERR_NOTAVAILABLE);
  EXPECT_EQ(create(0, D3DDEVTYPE_HAL, surface->Handle()), D3D_OK);
  EXPECT_EQ(reports.size(), 1U);
}

}  // namespace
}  // namespace quillorbit::view_tests
