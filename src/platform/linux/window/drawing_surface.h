#pragma once

#include <functional>
#include <memory>

#include <QImage>
#include <QWidget>

#include "platform/controls.h"
#include "platform/linux/window/pictures.h"

namespace quillorbit::linux_adapter {

/// The widget of a picture box. It can show pictures, stretched to its size; the last one stays. It
/// can have the focus until controls are put on it.
class DrawingSurface final : public QWidget {
 public:
  explicit DrawingSurface(QWidget* pParent);
  ~DrawingSurface() override;

  /// A handle of this program's own, not the window system's: the widget has no window there.
  [[nodiscard]] platform::WindowHandle Handle() const { return m_hWnd; }
  /// The surface with a handle; null when there is none.
  [[nodiscard]] static DrawingSurface* Find(platform::WindowHandle hWnd);

  /// Whether a picture would be visible.
  [[nodiscard]] bool IsSeen() const;
  /// Its size in the display's pixels, at least 1 x 1.
  [[nodiscard]] QSize PixelSize() const;
  /// For a new device. An earlier one's pictures are not shown any more once it has shown its
  /// first.
  [[nodiscard]] std::unique_ptr<Pictures> NewPictures();

  std::function<void()> resized;
  /// Called when the picture has to be shown again: there is another size, or it may be in sight.
  std::function<void()> exposed;

 private:
  class Frame;
  void FollowGeometry();
  void FollowVisibility();
  void TakePicture();

  void childEvent(QChildEvent* pEvent) override;
  bool event(QEvent* pEvent) override;
  void hideEvent(QHideEvent*) override;
  void moveEvent(QMoveEvent*) override;
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void showEvent(QShowEvent*) override;

  const platform::WindowHandle m_hWnd;
  std::shared_ptr<PictureExchange> m_exchange = std::make_shared<PictureExchange>();
  std::unique_ptr<Frame> m_frame;  ///< null until there is a device, or where pictures need none
  bool m_bInFrame = false;         ///< there is a picture
  QImage m_picture;                ///< what is painted; null while the frame is over it
};

}  // namespace quillorbit::linux_adapter
