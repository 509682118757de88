#pragma once

#include <cstdint>
#include <memory>

#include <xcb/xcb.h>

namespace quillorbit::bench {

/// Counts the pictures of the 3D view as the X server gets them, whether they are drawn into the
/// main window or one inside it. Needs the server's DAMAGE extension.
class FrameCounter {
 public:
  FrameCounter();
  /// A main window.
  void Watch(std::uint32_t nWindow);
  void Restart();  ///< counts from now on
  void Count();    ///< those that have come
  [[nodiscard]] int Frames() const { return m_nFrames; }
  /// The X server, which has to be on this machine.
  [[nodiscard]] int ServerProcess() const;

 private:
  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
  std::uint8_t m_nFirstEvent = 0;
  int m_nFrames = 0;
  bool m_bTall = false;  ///< one of the rectangles of the drawing that is being reported
};

}  // namespace quillorbit::bench
