#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include <QImage>
#include <QSize>
#include <xcb/xcb.h>

namespace quillorbit::linux_adapter {

/// An X window that shows a picture, on a connection of its own: it needs neither the toolkit nor
/// its thread. The picture is the window's background, so that the server repaints it whenever it
/// is exposed. Clicks go through to the window behind. Where the server can, it reads the pictures
/// from memory that both share.
class PictureWindow {
 public:
  /// In the top left corner of a window that another connection has made. It is in front of those
  /// that were there before, from its first picture on. Throws std::runtime_error when there is no
  /// connection or the window's pixels are not Format_RGB32.
  explicit PictureWindow(xcb_window_t frame);
  ~PictureWindow();
  PictureWindow(const PictureWindow&) = delete;
  PictureWindow& operator=(const PictureWindow&) = delete;

  /// False once the connection is broken.
  [[nodiscard]] bool IsOpen() const;
  /// A picture to be filled, not the one on the screen. Waits until the server is done with it.
  [[nodiscard]] QImage& Next(QSize size);
  /// Shows it; the window takes its size.
  void Show();

 private:
  class Buffer;
  void FindDepth();
  void FindSharedMemory();

  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
  const xcb_window_t m_frame;
  xcb_window_t m_window = 0;
  std::uint8_t m_nDepth = 0;
  bool m_bSharedMemory = false, m_bSharedPixmaps = false;
  std::array<std::unique_ptr<Buffer>, 2> m_buffers;  ///< on the screen and next, in turn
  std::size_t m_iNext = 0;
  xcb_get_input_focus_cookie_t m_shown{};  ///< answered when the last picture is on the screen
  bool m_bWaiting = false;                 ///< for that answer
};

}  // namespace quillorbit::linux_adapter
