#include "platform/linux/window/toolkit.h"

#include <gtest/gtest.h>

#include <QMenu>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include "platform/linux/window/form.h"

namespace quillorbit {
namespace {

using platform::WindowState;

constexpr platform::Font font = {"Verdana", 8.25F};

platform::ControlDesign Design(std::string_view sName, float fLeft, float fWidth, int iTabIndex) {
  return {sName, fLeft, 150, fWidth, 300, iTabIndex, font};
}

/// A form whose tab order is not the order in which its controls are made.
struct ToolkitTest : testing::Test {
  ToolkitTest() {
    form->QueryUnload = [this](bool& bCancel, platform::UnloadReason eReason) {
      sEvents += "query" + std::to_string(static_cast<int>(eReason)) + " ";
      bCancel = bRefuseUnload;
    };
    form->Unloaded = [this] { sEvents += "unloaded "; };
    form->Resize = [this] { sEvents += "resized "; };
    box->KeyPress = [this](int iCode) { sEvents += "key" + std::to_string(iCode) + " "; };
    box->Validate = [this](bool& bCancel) {
      sEvents += "validate ";
      bCancel = box->Text() == "bad";
    };
    slider->Change = [this] { sEvents += "slider" + std::to_string(slider->Value()) + " "; };
    check->Click = [this] { sEvents += "click "; };
  }
  void Show() {
    form->Show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
    sEvents.clear();
  }
  QWidget* Find(const char* sName) { return widget->findChild<QWidget*>(sName); }
  std::string Focused() { return widget->focusWidget()->objectName().toStdString(); }
  void Press(Qt::Key eKey) { QTest::keyClick(widget->windowHandle(), eKey); }
  /// A press as the window system delivers it, near the upper left corner of a control.
  void Click(const char* sControl) {
    QTest::mouseClick(widget->windowHandle(), Qt::LeftButton, {},
                      Find(sControl)->mapTo(widget, QPoint(9, 9)));
    QCoreApplication::processEvents();
  }

  static inline int argc = 1;
  static inline char* argv[] = {const_cast<char*>("toolkit_test"), nullptr};
  linux_adapter::LinuxResources resources;
  linux_adapter::LinuxToolkit toolkit{argc, argv, resources};
  std::unique_ptr<platform::Form> form =
      toolkit.NewForm({"form", "Class", "Form", nullptr, 6000, 1500, font});
  std::unique_ptr<platform::PictureBox> panel =
      form->NewPictureBox({"panel", 0, 0, 6000, 900, 1, font}, platform::Docking::Bottom);
  std::unique_ptr<platform::CheckBox> check =
      panel->NewCheckBox(Design("check", 4500, 900, 4), "A & B");
  std::unique_ptr<platform::TextBox> box = panel->NewTextBox(Design("box", 150, 1500, 2), "5000");
  std::unique_ptr<platform::Slider> slider = panel->NewSlider(Design("slider", 1800, 2400, 3));
  std::unique_ptr<platform::PictureBox> surface =
      form->NewPictureBox({"surface", 0, 0, 6000, 600, 0, font}, platform::Docking::Top);
  QWidget* widget = QWidget::find(form->hWnd());
  bool bRefuseUnload = false;
  std::string sEvents;
};

TEST_F(ToolkitTest, FocusFollowsTheTabIndexesAndStaysWithABadText) {
  Show();
  EXPECT_EQ(Focused(), "surface");  // the panel leaves the focus to its controls
  for (const char* sNext : {"box", "slider", "check"}) {
    Press(Qt::Key_Tab);
    EXPECT_EQ(Focused(), sNext);
  }
  Press(Qt::Key_Backtab);
  Press(Qt::Key_Backtab);
  box->SelStart(1);
  box->SelLength(2);
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_9}) Press(key);
  EXPECT_EQ(box->Text(), "590");
  EXPECT_EQ(sEvents, "validate key13 key13 key57 ");
  sEvents.clear();
  box->Text("bad");
  Press(Qt::Key_Tab);
  Press(Qt::Key_Backtab);
  Click("check");
  Find("slider")->setFocus(Qt::OtherFocusReason);
  QCoreApplication::processEvents();
  EXPECT_TRUE(Find("box")->hasFocus());
  EXPECT_EQ(sEvents, "validate validate validate validate ");
  EXPECT_EQ(check->Value(), 0);

  sEvents.clear();
  box->Text("5000");
  Click("panel");  // takes no focus
  Click("check");
  check->Value(0);  // no click of the user's
  EXPECT_EQ(sEvents, "validate click ");
  EXPECT_EQ(Focused(), "check");
}

TEST_F(ToolkitTest, TextBoxHasTheFocusWhereTheSurfaceIsHidden) {
  surface->Visible(false);
  Show();
  EXPECT_EQ(Focused(), "box");
}

TEST_F(ToolkitTest, SliderStaysInItsRangeAndControlsOnWholePixels) {
  slider->Min(1);
  slider->Max(30);
  for (const int iValue : {31, 30, -30}) slider->Value(iValue);
  slider->Width(917);
  EXPECT_THROW(slider->Width(-15), std::invalid_argument);
  EXPECT_THROW(slider->Move(0, 0, 15, -1), std::invalid_argument);
  EXPECT_EQ(slider->Width(), 915);
  slider->Left(-150);
  EXPECT_EQ(slider->Left(), -150);
  form->Width(7500);  // before it is shown, too
  EXPECT_EQ(sEvents, "slider1 slider30 slider1 resized ");
  EXPECT_EQ(surface->Width(), form->ScaleWidth());

  Show();
  float fReported = 0;
  panel->Resize = [&] { fReported = panel->ScaleWidth(); };
  form->Width(9000);
  form->Height(3000);
  const QSize client = QSize(600, 200).shrunkBy(widget->windowHandle()->frameMargins());
  ASSERT_TRUE(QTest::qWaitFor([&] { return widget->size() == client; }));
  EXPECT_EQ(form->ScaleHeight(), static_cast<float>(client.height() * 15));
  EXPECT_EQ(fReported, static_cast<float>(client.width() * 15));
  EXPECT_EQ(Find("panel")->geometry(), QRect(0, client.height() - 60, client.width(), 60));
  EXPECT_EQ(Find("surface")->geometry(), QRect(0, 0, client.width(), 40));
  sEvents.clear();
  form->WindowState(WindowState::Minimized);
  EXPECT_EQ(form->WindowState(), WindowState::Minimized);
  EXPECT_EQ(sEvents, "resized ");
}

TEST_F(ToolkitTest, TextsAreShownAsTheyStand) {
  for (const char* sCaption : {"[*] & [*][*]", ""}) {
    form->Caption(sCaption);
    EXPECT_EQ(form->Caption(), sCaption);
    EXPECT_EQ(widget->windowHandle()->title().toStdString(), sCaption);
  }
  EXPECT_EQ(static_cast<QCheckBox*>(Find("check"))->text(), "A && B");  // one "&" for the user
  auto label = panel->NewLabel(Design("label", 5500, 15, 0), platform::LabelKind::Text, "");
  auto lamp = panel->NewLabel({"lamp", 0, 0, 255, 255, 0, font}, platform::LabelKind::Lamp, "00");
  lamp->Caption("too long for it");
  EXPECT_EQ(lamp->Width(), 255);
  const auto colour = [&] { return Find("lamp")->grab().toImage().pixelColor(8, 3); };
  for (const auto& [lColour, shown] : {std::pair(0xFFU, Qt::red), {0xFFFFFFU, Qt::white}}) {
    lamp->BackColor(lColour);
    EXPECT_TRUE(QTest::qWaitFor([&] { return colour() == shown; }));
  }
  label->Caption("&");
  EXPECT_GT(label->Width(), 60);
}

TEST_F(ToolkitTest, UnloadingAsksReportsOnceAndSilencesTheForm) {
  auto timer = form->NewTimer(1, true);
  Show();
  timer->Tick = [&] { sEvents += "tick "; };
  bRefuseUnload = true;
  form->Unload();
  QCloseEvent close;  // what the window manager's message becomes
  QSpontaneKeyEvent::setSpontaneous(&close);
  qApp->notify(widget, &close);
  EXPECT_TRUE(form->Visible());
  bRefuseUnload = false;
  QTimer::singleShot(0, [] { QCoreApplication::quit(); });  // as the end of the session does
  EXPECT_EQ(toolkit.Run(), 0);
  form->Unload();
  form->Show();
  form->Width(3000);
  QTest::qWait(20);
  EXPECT_FALSE(form->Visible());
  EXPECT_EQ(sEvents, "query1 query0 query2 unloaded ");
}

TEST_F(ToolkitTest, SignalUnloadsAHiddenFormAndEndsAnOpenBox) {
  QTimer::singleShot(0, [] { raise(SIGTERM); });
  EXPECT_EQ(toolkit.MsgBox("Sure?", platform::MB_YESNO, "Title"), platform::IDNO);
  EXPECT_EQ(toolkit.Run(), 0);
  EXPECT_EQ(sEvents, "query2 unloaded ");
}

TEST_F(ToolkitTest, MessageBoxBlocksTheWindowAndShowsPlainText) {
  Show();
  QTimer::singleShot(0, [&] {
    auto& message = dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget());
    EXPECT_EQ(message.parentWidget(), widget);
    EXPECT_EQ(message.text(), "<b>a</b> & b");
    EXPECT_EQ(message.textFormat(), Qt::PlainText);
    EXPECT_EQ(message.windowHandle()->title(), "<i> & [*]");
    message.close();
  });
  EXPECT_EQ(toolkit.MsgBox("<b>a</b> & b", 64, "<i> & [*]"), platform::IDOK);
}

TEST_F(ToolkitTest, MenuMarksItsDefaultItemAndReportsTheChoice) {
  Show();
  auto menu = form->NewMenu("Menu");
  auto item = menu->NewItem();
  item->Caption("&A & b");
  item->Click = [&] { sEvents += "chosen "; };
  QTimer::singleShot(0, [&] {
    auto* const pMenu = static_cast<QMenu*>(QApplication::activePopupWidget());
    EXPECT_EQ(pMenu->defaultAction()->text(), "&A & b");
    form->PopupMenu(*menu, 0, nullptr);  // it is open already
    QTest::keyClick(pMenu, Qt::Key_A);
  });
  form->PopupMenu(*menu, 0, item.get());
  EXPECT_EQ(sEvents, "chosen ");
}

}  // namespace
}  // namespace quillorbit

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
