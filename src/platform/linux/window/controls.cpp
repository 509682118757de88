#include "platform/linux/window/controls.h"

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
    // "&" would mark an access key.
    : WidgetControl(std::make_unique<QCheckBox>(ToQString(sCaption).replace('&', "&&"), pParent),
                    design) {
  QObject::connect(m_widget.get(), &QCheckBox::clicked, m_widget.get(), [this] {
    if (Click) Click();
  });
}

LinuxPictureBox::LinuxPictureBox(QWidget* pParent, const platform::ControlDesign& design,
                                 platform::Docking eDocking)
    : WidgetContainer(std::make_unique<DrawingSurface>(pParent), design) {
  m_widget->setProperty(sDockingProperty, static_cast<int>(eDocking));
  m_widget->resized = [this] {
    if (Resize) Resize();
  };
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
