#include "platform/linux/window/text_box.h"

#include <algorithm>

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace quillorbit::linux_adapter {
namespace {

constexpr std::int16_t iEnterCode = 13;

/// The character that a key types, 0 for none.
std::int16_t CharacterCode(const QKeyEvent& key) {
  if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) return iEnterCode;
  return key.text().isEmpty() ? std::int16_t{0}
                              : static_cast<std::int16_t>(key.text()[0].unicode());
}

}  // namespace

class LinuxTextBox::Edit final : public QLineEdit {
 public:
  Edit(QWidget* pParent, LinuxTextBox& owner) : QLineEdit(pParent), m_owner(owner) {
    qApp->installEventFilter(this);
    connect(this, &QLineEdit::textChanged, this, [this] { m_bMayLeave = false; });
  }

 private:
  /// Validates, once each time that the focus is about to leave.
  bool MayLeave() {
    if (m_bMayLeave) return true;
    bool bCancel = false;
    if (m_owner.Validate) m_owner.Validate(bCancel);
    m_bMayLeave = !bCancel;
    return m_bMayLeave;
  }

  bool focusNextPrevChild(bool bNext) override {
    return MayLeave() ? QLineEdit::focusNextPrevChild(bNext) : true;
  }

  /// A press that would move the focus is swallowed at the window, before any widget gets it.
  bool eventFilter(QObject* pObject, QEvent* pEvent) override {
    if (!hasFocus() || pEvent->type() != QEvent::MouseButtonPress || pObject != TopWindow())
      return false;
    const QPoint position = static_cast<QMouseEvent*>(pEvent)->position().toPoint();
    const QWidget* pTarget = window()->childAt(position);
    while (pTarget != nullptr && (pTarget->focusPolicy() & Qt::ClickFocus) == 0)
      pTarget = pTarget->parentWidget();
    return pTarget != nullptr && pTarget != this && !MayLeave();
  }

  void focusInEvent(QFocusEvent* pEvent) override {
    m_bMayLeave = false;
    QLineEdit::focusInEvent(pEvent);
  }

  void focusOutEvent(QFocusEvent* pEvent) override {
    QLineEdit::focusOutEvent(pEvent);
    const Qt::FocusReason eReason = pEvent->reason();
    const bool bWindowLeaves = eReason == Qt::ActiveWindowFocusReason ||
                               eReason == Qt::PopupFocusReason || eReason == Qt::MenuBarFocusReason;
    if (bWindowLeaves || !window()->isVisible() || !isEnabled()) return;
    if (MayLeave()) return;
    // Not from inside a change of focus.
    QTimer::singleShot(0, this, [this] { setFocus(Qt::OtherFocusReason); });
  }

  void keyPressEvent(QKeyEvent* pEvent) override {
    const std::int16_t iCode = CharacterCode(*pEvent);
    if (iCode != 0 && m_owner.KeyPress) m_owner.KeyPress(iCode);
    QLineEdit::keyPressEvent(pEvent);
  }

  [[nodiscard]] QObject* TopWindow() const { return window()->windowHandle(); }

  LinuxTextBox& m_owner;
  bool m_bMayLeave = false;  ///< valid since the focus came or the text changed
};

LinuxTextBox::LinuxTextBox(QWidget* pParent, const platform::ControlDesign& design,
                           std::string_view sText)
    : WidgetControl(std::make_unique<Edit>(pParent, *this), design) {
  m_widget->setText(ToQString(sText));
}

std::string LinuxTextBox::Text() const { return m_widget->text().toStdString(); }

void LinuxTextBox::Text(std::string_view sText) { m_widget->setText(ToQString(sText)); }

void LinuxTextBox::SelStart(int iStart) {
  m_iSelStart = std::max(0, iStart);
  m_widget->setSelection(m_iSelStart, 0);
}

void LinuxTextBox::SelLength(int iLength) { m_widget->setSelection(m_iSelStart, iLength); }

}  // namespace quillorbit::linux_adapter
