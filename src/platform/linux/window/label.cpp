#include "platform/linux/window/label.h"

#include <cstdlib>

#include <QFontMetrics>
#include <QPainter>

namespace quillorbit::linux_adapter {
namespace {

/// The window's text colour, unless it could not be read on that background.
QColor ReadableOn(const QColor& background, const QColor& windowText) {
  constexpr int nReadable = 60;  // of 255: black on red is 87
  const int nGray = qGray(background.rgb());
  if (std::abs(qGray(windowText.rgb()) - nGray) >= nReadable) return windowText;
  return nGray > 127 ? Qt::black : Qt::white;
}

}  // namespace

/// The widget paints what was last presented.
class LinuxLabel::Face final : public QWidget {
 public:
  Face(QWidget* pParent, platform::LabelKind eKind) : QWidget(pParent), m_eKind(eKind) {}

  void SetCaption(const QString& sCaption) {
    m_sCaption = sCaption;
    setAccessibleName(sCaption);
    if (m_eKind == platform::LabelKind::Text) {
      const QFontMetrics metrics(font());
      resize(metrics.horizontalAdvance(sCaption), metrics.height());
    }
    update();
  }
  void SetBackColor(const QColor& colour) {
    m_backColor = colour;
    update();
  }

 private:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    if (m_eKind == platform::LabelKind::Text) {
      painter.setPen(palette().color(QPalette::WindowText));
      painter.drawText(rect(), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, m_sCaption);
      return;
    }
    painter.fillRect(rect(), m_backColor);
    painter.setPen(Qt::darkGray);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.setPen(ReadableOn(m_backColor, palette().color(QPalette::WindowText)));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, m_sCaption);
  }

  const platform::LabelKind m_eKind;
  QString m_sCaption;
  QColor m_backColor;
};

LinuxLabel::LinuxLabel(QWidget* pParent, const platform::ControlDesign& design,
                       platform::LabelKind eKind, std::string_view sCaption)
    : WidgetControl(std::make_unique<Face>(pParent, eKind), design),
      m_eKind(eKind),
      m_sCaption(sCaption) {
  m_widget->setAttribute(Qt::WA_TransparentForMouseEvents);
  m_widget->lower();  // labels are drawn on their container, below everything else
  RequestPresentation();
}

float LinuxLabel::Width() const {
  FitToCaption();
  return WidgetControl::Width();
}

float LinuxLabel::Height() const {
  FitToCaption();
  return WidgetControl::Height();
}

void LinuxLabel::Caption(std::string_view sCaption) {
  if (sCaption == m_sCaption) return;
  m_sCaption = sCaption;
  m_bFits = false;
  RequestPresentation();
}

void LinuxLabel::BackColor(platform::Colour colour) {
  if (colour == m_backColor) return;
  m_backColor = colour;
  RequestPresentation();
}

void LinuxLabel::Present() {
  FitToCaption();
  static_cast<Face&>(*m_widget).SetBackColor(ToQColor(m_backColor));
}

void LinuxLabel::FitToCaption() const {
  if (m_bFits) return;
  m_bFits = true;
  static_cast<Face&>(*m_widget).SetCaption(ToQString(m_sCaption));
}

}  // namespace quillorbit::linux_adapter
