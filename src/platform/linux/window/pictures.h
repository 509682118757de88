#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include <QEvent>
#include <QImage>
#include <QSize>
#include <xcb/xcb.h>

#include "platform/linux/window/picture_window.h"

namespace quillorbit::linux_adapter {

/// What a surface shares with the threads that make its pictures.
struct PictureExchange {
  // Sent to the surface: there is a picture for it to paint, or one in its frame.
  static constexpr auto toPaintEvent = QEvent::User;
  static constexpr auto inFrameEvent = static_cast<QEvent::Type>(QEvent::User + 1);

  std::atomic<QSize> size = {};         ///< of the surface, in the display's pixels
  std::atomic<xcb_window_t> frame = 0;  ///< an X window over the surface; 0 without an X server

  std::mutex mutex;              ///< for what follows
  QObject* pSurface = nullptr;   ///< null after its end
  const void* pMaker = nullptr;  ///< whose pictures the surface paints: the newest device's
  QImage picture;                ///< the newest for it to paint, or one that it has painted
  bool bCame = false;            ///< the newest, and the surface knows
};

/// The pictures of one device on their way to a surface, each instead of the one before. Made on
/// the user-interface thread, and then used on the thread that draws. With an X server they go
/// there without the toolkit; else the toolkit's event loop is handed the newest.
class Pictures {
 public:
  explicit Pictures(std::shared_ptr<PictureExchange> exchange);

  /// A picture to be filled: Format_RGB32, all of it opaque. Valid until Show.
  [[nodiscard]] QImage& Next(QSize size);
  /// Shows it, stretched to the surface's size.
  void Show();

 private:
  [[nodiscard]] bool HasWindow();
  void ShowInWindow();
  void HandOver();

  std::shared_ptr<PictureExchange> m_exchange;
  std::optional<PictureWindow> m_window;
  bool m_bWindowTried = false;
  bool m_bInFrame = false;  ///< the surface knows
  bool m_bDirect = false;   ///< what is being filled is the window's own picture
  QImage m_picture;
};

}  // namespace quillorbit::linux_adapter
