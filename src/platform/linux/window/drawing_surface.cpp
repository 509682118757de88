#include "platform/linux/window/drawing_surface.h"

#include <map>

#include <QChildEvent>
#include <QPainter>

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

DrawingSurface::DrawingSurface(QWidget* pParent) : QWidget(pParent), m_hWnd(NewHandle()) {
  Surfaces()[m_hWnd] = this;
  setAutoFillBackground(true);  // it covers what is behind it
  setFocusPolicy(Qt::StrongFocus);
}

DrawingSurface::~DrawingSurface() { Surfaces().erase(m_hWnd); }

DrawingSurface* DrawingSurface::Find(platform::WindowHandle hWnd) {
  const auto found = Surfaces().find(hWnd);
  return found == Surfaces().end() ? nullptr : found->second;
}

bool DrawingSurface::IsSeen() const { return isVisible() && !window()->isMinimized(); }

void DrawingSurface::ShowFrame(QImage& frame) {
  m_frame.swap(frame);
  setAttribute(Qt::WA_OpaquePaintEvent);
  repaint();
}

void DrawingSurface::childEvent(QChildEvent* pEvent) {
  if (pEvent->added()) setFocusPolicy(Qt::NoFocus);
}

void DrawingSurface::paintEvent(QPaintEvent*) {
  if (m_frame.isNull()) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform,
                        m_frame.size() != size() * devicePixelRatioF());
  painter.drawImage(rect(), m_frame);
}

void DrawingSurface::resizeEvent(QResizeEvent*) {
  if (resized) resized();
}

void DrawingSurface::showEvent(QShowEvent*) {
  if (shown) shown();
}

}  // namespace quillorbit::linux_adapter
