#pragma once

#include <cstdint>
#include <memory>

#include <xcb/xcb.h>

namespace quillorbit::bench {

/// Counts the pictures of the 3D view as the X server gets them. Needs its DAMAGE extension.
class FrameCounter {
 public:
  /// A main window; its first picture counts.
  void Watch(std::uint32_t nWindow);
  void Restart() { m_nFrames = 0; }
  void Count();  ///< those that have come
  [[nodiscard]] int Frames() const { return m_nFrames; }

 private:
  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection{nullptr,
                                                                            &xcb_disconnect};
  std::uint8_t m_nFirstEvent = 0;
  int m_nFrames = 0;
};

}  // namespace quillorbit::bench
