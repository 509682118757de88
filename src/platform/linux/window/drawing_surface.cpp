#include "platform/linux/window/drawing_surface.h"

#include <array>
#include <map>

#include <QChildEvent>
#include <QPainter>

#include "platform/linux/desktop/x11.h"

namespace quillorbit::linux_adapter {
namespace {

std::map<platform::WindowHandle, DrawingSurface*>& Surfaces() {
  static std::map<platform::WindowHandle, DrawingSurface*> surfaces;
  return surfaces;
}

/// Above the window system's own, whose highest three bits are 0.
platform::WindowHandle NewHandle() {
  static platform::WindowHandle hLast = 0x80000000;
  return ++hLast;
}

}  // namespace

/// A black X window over the surface, as large as it, in which the drawing threads show their
/// pictures: none of them covers more than the surface. The mouse goes through to the form.
class DrawingSurface::Frame {
 public:
  Frame(xcb_connection_t* pServer, xcb_window_t form)
      : m_pServer(pServer), m_window(xcb_generate_id(pServer)) {
    const std::uint32_t black = 0;
    // Other connections use it, so the server has to know it by then.
    x11::Succeeds(m_pServer,
                  xcb_create_window_checked(m_pServer, XCB_COPY_FROM_PARENT, m_window, form, 0, 0,
                                            1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                                            XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &black));
  }
  ~Frame() {
    xcb_destroy_window(m_pServer, m_window);
    xcb_flush(m_pServer);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  [[nodiscard]] xcb_window_t Id() const { return m_window; }

  void Cover(QPoint topLeft, QSize size) {
    const std::array<std::uint32_t, 4> geometry = {
        static_cast<std::uint32_t>(topLeft.x()), static_cast<std::uint32_t>(topLeft.y()),
        static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height())};
    xcb_configure_window(m_pServer, m_window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         geometry.data());
    xcb_flush(m_pServer);
  }
  void Show(bool bVisible) {
    if (bVisible)
      xcb_map_window(m_pServer, m_window);
    else
      xcb_unmap_window(m_pServer, m_window);
    xcb_flush(m_pServer);
  }

 private:
  xcb_connection_t* const m_pServer;
  const xcb_window_t m_window;
};

DrawingSurface::DrawingSurface(QWidget* pParent) : QWidget(pParent), m_hWnd(NewHandle()) {
  Surfaces()[m_hWnd] = this;
  m_exchange->pSurface = this;
  setAutoFillBackground(true);  // it covers what is behind it
  setFocusPolicy(Qt::StrongFocus);
}

DrawingSurface::~DrawingSurface() {
  Surfaces().erase(m_hWnd);
  m_exchange->frame = 0;
  const std::lock_guard lock(m_exchange->mutex);
  m_exchange->pSurface = nullptr;
}

DrawingSurface* DrawingSurface::Find(platform::WindowHandle hWnd) {
  const auto found = Surfaces().find(hWnd);
  return found == Surfaces().end() ? nullptr : found->second;
}

bool DrawingSurface::IsSeen() const { return isVisible() && !window()->isMinimized(); }

QSize DrawingSurface::PixelSize() const {
  return (QSizeF(size()) * devicePixelRatioF()).toSize().expandedTo({1, 1});
}

std::unique_ptr<Pictures> DrawingSurface::NewPictures() {
  xcb_connection_t* const pServer = x11::ToolkitConnection();
  if (pServer != nullptr && !m_frame) {
    m_frame = std::make_unique<Frame>(pServer, static_cast<xcb_window_t>(window()->winId()));
    m_exchange->frame = m_frame->Id();
  }
  FollowGeometry();
  return std::make_unique<Pictures>(m_exchange);
}

void DrawingSurface::FollowGeometry() {
  const QSize size = PixelSize();
  if (m_frame) {
    const QPointF topLeft = mapTo(window(), QPointF());
    m_frame->Cover((topLeft * devicePixelRatioF()).toPoint(), size);
  }
  m_exchange->size = size;
}

void DrawingSurface::childEvent(QChildEvent* pEvent) {
  if (pEvent->added()) setFocusPolicy(Qt::NoFocus);
}

/// Controls on the surface are covered only once there is a picture.
void DrawingSurface::FollowVisibility() {
  if (m_frame) m_frame->Show(m_bInFrame && !isHidden());
}

bool DrawingSurface::event(QEvent* pEvent) {
  if (pEvent->type() == PictureExchange::toPaintEvent) {
    TakePicture();
    return true;
  }
  if (pEvent->type() == PictureExchange::inFrameEvent) {
    m_bInFrame = true;
    FollowVisibility();
    return true;
  }
  return QWidget::event(pEvent);
}

/// A picture that comes this way cannot be shown in the frame.
void DrawingSurface::TakePicture() {
  {
    const std::lock_guard lock(m_exchange->mutex);
    m_exchange->bCame = false;
    m_exchange->picture.swap(m_picture);
  }
  m_exchange->frame = 0;
  m_frame.reset();
  setAttribute(Qt::WA_OpaquePaintEvent);
  update();
}

void DrawingSurface::hideEvent(QHideEvent*) { FollowVisibility(); }

void DrawingSurface::moveEvent(QMoveEvent*) { FollowGeometry(); }

void DrawingSurface::paintEvent(QPaintEvent*) {
  if (m_picture.isNull()) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, m_picture.size() != PixelSize());
  painter.drawImage(rect(), m_picture);
}

void DrawingSurface::resizeEvent(QResizeEvent*) {
  FollowGeometry();
  if (resized) resized();
  if (exposed) exposed();
}

void DrawingSurface::showEvent(QShowEvent*) {
  FollowVisibility();
  if (exposed) exposed();
}

}  // namespace quillorbit::linux_adapter
