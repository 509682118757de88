#pragma once

#include <functional>

#include <QImage>
#include <QWidget>

#include "platform/controls.h"

namespace quillorbit::linux_adapter {

/// The widget of a picture box. It can show frames: it keeps the last one, paints it whenever it is
/// exposed, and stretches it to its size. It can have the focus until controls are put on it.
class DrawingSurface final : public QWidget {
 public:
  explicit DrawingSurface(QWidget* pParent);
  ~DrawingSurface() override;

  /// A handle of this program's own, not the window system's: the widget has no window there.
  [[nodiscard]] platform::WindowHandle Handle() const { return m_hWnd; }
  /// The surface with a handle; null when there is none.
  [[nodiscard]] static DrawingSurface* Find(platform::WindowHandle hWnd);

  /// Whether a frame would be visible.
  [[nodiscard]] bool IsSeen() const;
  /// Puts a frame on the screen before it returns, and swaps in an earlier one to be reused.
  void ShowFrame(QImage& frame);

  std::function<void()> resized;
  std::function<void()> shown;  ///< called when it may have become visible

 private:
  void childEvent(QChildEvent* pEvent) override;
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void showEvent(QShowEvent*) override;

  const platform::WindowHandle m_hWnd;
  QImage m_frame;
};

}  // namespace quillorbit::linux_adapter
