#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "intake/ReceiverState.h"
#include "platform/platform.h"
#include "ui/Controls.h"

namespace quillorbit {

/// The view of the mobile device's attitude, drawn on request: a lit 3D model in `picSurface`, or,
/// where there is no 3D, the current values as text behind the hidden surface.
///
/// The model turns to the angles that come with a request; the camera looks at it from 90 units in
/// front. White light means that there is a signal, red that there is none.
class AttitudeView {
 public:
  AttitudeView(platform::Platform& platform, ReceiverState& state, Controls& controls)
      : m_platform(platform), m_state(state), m_controls(controls) {}

  /// Creates the whole 3D view, again if it exists (ViewSetup.cpp); false when that is not
  /// possible.
  [[nodiscard]] bool InitD3D();
  /// Draws one frame, or refreshes the text display. `ax` and `ay` turn the model, in degrees; `az`
  /// and `azr` are the camera's place beside and above it, in scene units. The text display shows
  /// the values themselves.
  void UpdateDisplay(float ax, float ay, float az, float azr);
  /// Releases the device and the objects that it came from.
  void ReleaseD3D();

  /// The window has to be painted. Draws only without a signal; with one, the next datagram does.
  void Form_Paint();

 private:
  void ShowReadouts();

  // The setup
  void CreateDevice();
  void SetRenderStates();
  void SetCamera();
  void CreateOverlayFont();
  [[nodiscard]] bool InitGeometry();
  void LoadModel();
  [[nodiscard]] bool SetupLights();

  // A frame
  void Render(float ax, float ay, float az, float azr);
  [[nodiscard]] bool HasDevice();
  void TurnModel(float ax, float ay);
  void PlaceCamera(float az, float azr);
  void SwitchLights();
  void DrawScene();
  void DrawOverlay();
  void DrawOverlayLine(std::string_view sText);

  platform::Platform& m_platform;
  ReceiverState& m_state;
  Controls& m_controls;

  std::shared_ptr<platform::DirectX8> m_dx;
  std::shared_ptr<platform::IDirect3D8> m_d3d;
  std::shared_ptr<platform::IDirect3DDevice8> m_device;  ///< absent: the next frame creates it
  std::shared_ptr<platform::D3DX8> m_d3dx;

  std::unique_ptr<platform::StdFont> m_fontDesc;  ///< made once
  std::shared_ptr<platform::ID3DXFont> m_font;
  platform::RECT m_textRect{};  ///< where the overlay's next line goes, in the back buffer's pixels
  std::string m_overlayLine;    ///< its text; a member so that its memory is reused

  std::shared_ptr<platform::ID3DXMesh> m_mesh;
  std::int32_t m_numMaterials = 0;
  std::vector<platform::D3DMATERIAL8> m_materials;                       ///< of each subset
  std::vector<std::shared_ptr<platform::IDirect3DTexture8>> m_textures;  ///< likewise, may be empty

  std::array<platform::D3DLIGHT8, 4> m_lights{};
  platform::D3DMATRIX m_matWorld{}, m_matView{}, m_matProj{};
};

}  // namespace quillorbit
