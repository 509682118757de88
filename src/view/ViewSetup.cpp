// The 3D view's setup: everything that a frame needs before it can be drawn.

#include <exception>
#include <string>

#include "base/Existing.h"
#include "base/Trace.h"
#include "view/AttitudeView.h"
#include "view/Camera.h"

namespace quillorbit {
namespace {

using namespace platform;

constexpr std::uint32_t adapter = D3DADAPTER_DEFAULT;

constexpr D3DCOLOR ambientLight = 0x00202020;
constexpr float fFieldOfView = 3.1415927F / 4;  // radians, vertical
constexpr float fAspect = 1;  // for every surface: its shape stretches the picture
constexpr float fNearPlane = 0.1F, fFarPlane = 500;

constexpr std::uint32_t nTextureSize = 128;  // pixels, each way

/// The failure's number, where it has one.
std::int32_t ErrorNumber(const std::exception& failure) {
  const auto* pRefusal = dynamic_cast<const D3DError*>(&failure);
  return pRefusal == nullptr ? 0 : pRefusal->lNumber;
}

D3DLIGHT8 DirectionalLight(float r, float g, float b, const D3DVECTOR& direction) {
  D3DLIGHT8 light{};
  light.Type = D3DLIGHT_DIRECTIONAL;
  light.Diffuse = {r, g, b, 0};
  light.Direction = direction;
  return light;
}

}  // namespace

bool AttitudeView::InitD3D() {
  std::int32_t lErrorNumber = 0;
  try {
    CreateDevice();
    SetRenderStates();
    SetCamera();
    CreateOverlayFont();
    if (InitGeometry() && SetupLights()) return true;
  } catch (const std::exception& failure) {
    lErrorNumber = ErrorNumber(failure);
  }
  Trace("Error Number Returned: " + std::to_string(lErrorNumber));
  // Half a setup is of no use and would keep the graphics driver loaded. The next request, if there
  // is one, starts from the beginning.
  m_textures.clear();
  m_materials.clear();
  m_mesh.reset();
  m_font.reset();
  ReleaseD3D();
  return false;
}

void AttitudeView::CreateDevice() {
  m_dx = m_platform.dx8vb.NewDirectX8();
  m_d3d = Existing(m_dx).Direct3DCreate();
  m_d3dx = m_platform.dx8vb.NewD3DX8();

  D3DDISPLAYMODE mode{};
  Existing(m_d3d).GetAdapterDisplayMode(adapter, mode);

  D3DPRESENT_PARAMETERS parameters{};
  parameters.BackBufferFormat = mode.Format;
  parameters.SwapEffect = D3DSWAPEFFECT_COPY_VSYNC;
  parameters.Windowed = 1;
  parameters.AutoDepthStencilFormat = D3DFMT_D16;  // although there is no depth buffer

  const bool bHardware =
      m_d3d->CheckDeviceFormat(adapter, D3DDEVTYPE_HAL, mode.Format, D3DUSAGE_DEPTHSTENCIL,
                               D3DRTYPE_SURFACE, D3DFMT_D16) == D3D_OK;
  m_device = m_d3d->CreateDevice(adapter, bHardware ? D3DDEVTYPE_HAL : D3DDEVTYPE_SW,
                                 m_controls.picSurface->hWnd(), D3DCREATE_SOFTWARE_VERTEXPROCESSING,
                                 parameters);
}

void AttitudeView::SetRenderStates() {
  IDirect3DDevice8& device = Existing(m_device);
  device.SetRenderState(D3DRS_LIGHTING, 1);
  device.SetRenderState(D3DRS_ZENABLE, 1);
  device.SetRenderState(D3DRS_AMBIENT, ambientLight);
  device.SetTextureStageState(0, D3DTSS_MAGFILTER, D3DTEXF_LINEAR);
  device.SetTextureStageState(0, D3DTSS_MINFILTER, D3DTEXF_LINEAR);
}

void AttitudeView::SetCamera() {
  IDirect3DDevice8& device = Existing(m_device);
  m_platform.dx8vb.D3DXMatrixIdentity(m_matWorld);
  device.SetTransform(D3DTS_WORLD, m_matWorld);
  LookAtModel(m_platform.dx8vb, m_matView, 0, 0);
  device.SetTransform(D3DTS_VIEW, m_matView);
  m_platform.dx8vb.D3DXMatrixPerspectiveFovLH(m_matProj, fFieldOfView, fAspect, fNearPlane,
                                              fFarPlane);
  device.SetTransform(D3DTS_PROJECTION, m_matProj);
}

void AttitudeView::CreateOverlayFont() {
  if (!m_fontDesc) m_fontDesc = m_platform.fonts.NewStdFont();
  Existing(m_fontDesc).Name("Verdana");
  m_fontDesc->Size(12);
  m_font = Existing(m_d3dx).CreateFont(m_device, m_fontDesc->hFont());
}

bool AttitudeView::InitGeometry() {
  try {
    LoadModel();
    Trace("Number of Faces in mesh: " + std::to_string(m_mesh->GetNumFaces()));
    Trace("Number of Vertices in mesh: " + std::to_string(m_mesh->GetNumVertices()));
    return true;
  } catch (const std::exception& failure) {
    Trace(std::string("Error occured in InitGeometry() Code:") + failure.what());
    return false;
  }
}

/// The model with its materials and textures. A texture that is named and missing is a failure.
void AttitudeView::LoadModel() {
  const std::string sFolder = m_platform.process.Path() + m_platform.process.PathSeparator();
  D3DX8& d3dx = Existing(m_d3dx);
  std::shared_ptr<D3DXBuffer> materials;
  m_mesh = d3dx.LoadMeshFromX(sFolder + "testPlane.x", D3DXMESH_MANAGED, m_device, materials,
                              m_numMaterials);
  if (!m_mesh) throw D3DError(D3DERR_NOTAVAILABLE, "the file has no mesh");

  m_materials.assign(static_cast<std::size_t>(m_numMaterials), D3DMATERIAL8{});
  m_textures.assign(m_materials.size(), nullptr);
  for (std::int32_t i = 0; i < m_numMaterials; ++i) {
    D3DMATERIAL8& material = m_materials[static_cast<std::size_t>(i)];
    material = d3dx.BufferGetMaterial(Existing(materials), i);
    material.Ambient = material.Diffuse;  // a model's own ambient colour is never used
    const std::string sName = d3dx.BufferGetTextureName(*materials, i);
    if (sName.empty()) continue;
    m_textures[static_cast<std::size_t>(i)] = d3dx.CreateTextureFromFileEx(
        m_device, sFolder + sName, nTextureSize, nTextureSize, D3DX_DEFAULT, 0, D3DFMT_UNKNOWN,
        D3DPOOL_MANAGED, D3DX_FILTER_LINEAR, D3DX_FILTER_LINEAR, 0);
  }
}

bool AttitudeView::SetupLights() {
  try {
    IDirect3DDevice8& device = Existing(m_device);
    D3DMATERIAL8 white{};
    white.Diffuse = white.Ambient = {1, 1, 1, 1};
    device.SetMaterial(white);

    // Two pairs, each from in front above and from behind below. They are brighter than white: the
    // model's scaling shortens its normals to a quarter.
    const D3DVECTOR fromAbove = MakeVector(0, -1, -1), fromBelow = MakeVector(0, 1, 1);
    m_lights = {DirectionalLight(3, 3, 3, fromAbove), DirectionalLight(3, 3, 3, fromBelow),
                DirectionalLight(5, 0, 0, fromAbove), DirectionalLight(5, 0, 0, fromBelow)};
    for (std::uint32_t i = 0; i < m_lights.size(); ++i) device.SetLight(i, m_lights[i]);
    return true;
  } catch (const std::exception&) {
    Trace("Error occured in the SetupLights() code");
    return false;
  }
}

}  // namespace quillorbit
