#include "platform/linux/controls.h"

#include <QResizeEvent>

namespace quillorbit::linux_adapter {
namespace {

constexpr const char* sDockingProperty = "docking";

}  // namespace

LinuxSlider::LinuxSlider(QWidget* pParent, const platform::ControlDesign& design)
    : WidgetControl(std::make_unique<QSlider>(Qt::Horizontal, pParent), design) {
  m_widget->setRange(0, 10);
  m_widget->setPageStep(5);
  QObject::connect(m_widget.get(), &QSlider::valueChanged, m_widget.get(), [this] {
    if (Change) Change();
  });
}

LinuxCheckBox::LinuxCheckBox(QWidget* pParent, const platform::ControlDesign& design,
                             std::string_view sCaption)
    : WidgetControl(std::make_unique<QCheckBox>(ToQString(sCaption), pParent), design) {
  QObject::connect(m_widget.get(), &QCheckBox::clicked, m_widget.get(), [this] {
    if (Click) Click();
  });
}

class LinuxPictureBox::Surface final : public QWidget {
 public:
  Surface(QWidget* pParent, LinuxPictureBox& owner) : QWidget(pParent), m_owner(owner) {}

 private:
  void resizeEvent(QResizeEvent*) override {
    if (m_owner.Resize) m_owner.Resize();
  }

  LinuxPictureBox& m_owner;
};

LinuxPictureBox::LinuxPictureBox(QWidget* pParent, const platform::ControlDesign& design,
                                 platform::Docking eDocking)
    : WidgetContainer(std::make_unique<Surface>(pParent, *this), design) {
  m_widget->setProperty(sDockingProperty, static_cast<int>(eDocking));
  m_widget->setAutoFillBackground(true);  // it covers the labels of the form
}

void DockChildren(QWidget& formWidget) {
  for (QObject* pObject : formWidget.children()) {
    const QVariant docking = pObject->property(sDockingProperty);
    if (!docking.isValid()) continue;
    auto& child = static_cast<QWidget&>(*pObject);
    const bool bTop = docking.toInt() == static_cast<int>(platform::Docking::Top);
    child.setGeometry(0, bTop ? 0 : formWidget.height() - child.height(), formWidget.width(),
                      child.height());
  }
}

}  // namespace quillorbit::linux_adapter
