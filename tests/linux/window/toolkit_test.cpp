#include "platform/linux/window/toolkit.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include "platform/linux/window/form.h"

namespace quillorbit {
namespace {

using platform::UnloadReason;

constexpr platform::Font font = {"Verdana", 8.25F};

platform::ControlDesign Design(std::string_view sName, float fLeft, float fWidth, int iTabIndex) {
  return {sName, fLeft, 150, fWidth, 300, iTabIndex, font};
}

/// A form with a text box, a slider and a check box, whose tab order is not their order of making.
struct ToolkitTest : testing::Test {
  ToolkitTest() {
    form->QueryUnload = [this](bool& bCancel, UnloadReason eReason) {
      reasons.push_back(eReason);
      bCancel = bRefuseUnload;
    };
    form->Unloaded = [this] { ++nUnloaded; };
    form->Resize = [this] { ++nResized; };
    box->Validate = [this](bool& bCancel) {
      ++nValidated;
      bCancel = box->Text() == "bad";
    };
    check->Click = [this] { ++nClicks; };
  }

  void Show() {
    form->Show();
    widget = QApplication::topLevelWidgets().first();
    for (QWidget* pTop : QApplication::topLevelWidgets())
      if (pTop->objectName() == "form") widget = pTop;
    ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
  }
  std::string Focused() {
    const QWidget* pFocus = QApplication::focusWidget();
    return pFocus == nullptr ? "nothing" : pFocus->objectName().toStdString();
  }
  /// A press as the window system delivers it, in the middle of a control.
  void Click(const char* sControl) {
    const auto* pControl = widget->findChild<QWidget*>(sControl);
    const QPoint middle = pControl->mapTo(widget, pControl->rect().center());
    // The check box's mark stands at its left edge.
    const QPoint left = pControl->mapTo(widget, QPoint(7, pControl->height() / 2));
    QTest::mouseClick(widget->windowHandle(), Qt::LeftButton, {},
                      std::string_view(sControl) == "check" ? left : middle);
    QCoreApplication::processEvents();
  }

  static inline int argc = 1;
  static inline char sProgram[] = "toolkit_test";
  static inline char* argv[] = {sProgram, nullptr};
  linux_adapter::LinuxResources resources;
  linux_adapter::LinuxToolkit toolkit{argc, argv, resources};

  std::unique_ptr<platform::Form> form =
      toolkit.NewForm({"form", "FormClass", "Form", nullptr, 6000, 1500, font});
  std::unique_ptr<platform::CheckBox> check = form->NewCheckBox(Design("check", 4500, 900, 3), "C");
  std::unique_ptr<platform::TextBox> box = form->NewTextBox(Design("box", 150, 1500, 1), "5000");
  std::unique_ptr<platform::Slider> slider = form->NewSlider(Design("slider", 1800, 2400, 2));
  QWidget* widget = nullptr;

  std::vector<UnloadReason> reasons;
  bool bRefuseUnload = false;
  int nUnloaded = 0, nResized = 0, nValidated = 0, nClicks = 0;
};

TEST_F(ToolkitTest, TabFollowsTheTabIndexesAndStopsAtABadText) {
  Show();
  EXPECT_EQ(Focused(), "box");
  QTest::keyClick(widget->windowHandle(), Qt::Key_Tab);
  EXPECT_EQ(Focused(), "slider");
  EXPECT_EQ(nValidated, 1);
  QTest::keyClick(widget->windowHandle(), Qt::Key_Tab);
  EXPECT_EQ(Focused(), "check");
  QTest::keyClick(widget->windowHandle(), Qt::Key_Backtab);
  QTest::keyClick(widget->windowHandle(), Qt::Key_Backtab);
  EXPECT_EQ(Focused(), "box");
  EXPECT_EQ(nValidated, 1);

  box->Text("bad");
  for (const auto key : {Qt::Key_Tab, Qt::Key_Backtab}) {
    QTest::keyClick(widget->windowHandle(), key);
    EXPECT_EQ(Focused(), "box");
  }
  EXPECT_EQ(nValidated, 3);
}

TEST_F(ToolkitTest, PressOnAnotherControlIsSwallowedWhileTheTextIsBad) {
  Show();
  box->Text("bad");
  Click("check");
  EXPECT_EQ(Focused(), "box");
  EXPECT_EQ(nClicks, 0);
  EXPECT_EQ(check->Value(), 0);
  EXPECT_EQ(nValidated, 1);

  box->Text("5000");
  Click("check");
  EXPECT_EQ(nClicks, 1);
  EXPECT_EQ(check->Value(), 1);
  EXPECT_EQ(Focused(), "check");
  EXPECT_EQ(nValidated, 2);  // once, not once more as the focus goes

  Click("box");
  // Nothing there takes the focus.
  QTest::mouseClick(widget->windowHandle(), Qt::LeftButton, {}, QPoint(2, 2));
  EXPECT_EQ(Focused(), "box");
  EXPECT_EQ(nValidated, 2);
}

TEST_F(ToolkitTest, FocusThatLeavesInAnotherWayComesBackToABadText) {
  Show();
  box->Text("bad");
  widget->findChild<QWidget*>("slider")->setFocus(Qt::OtherFocusReason);
  QCoreApplication::processEvents();
  EXPECT_EQ(Focused(), "box");
  EXPECT_EQ(nValidated, 1);
  form->Hide();  // the window's going is no leaving
  form->Show();
  EXPECT_EQ(nValidated, 1);
}

TEST_F(ToolkitTest, KeysHaveTheirCharacterCodesAndAreTaken) {
  Show();
  std::vector<int> codes;
  box->KeyPress = [&](std::int16_t iCode) { codes.push_back(iCode); };
  QWindow* pWindow = widget->windowHandle();
  QTest::keyClick(pWindow, Qt::Key_Return);
  QTest::keyClick(pWindow, Qt::Key_Enter, Qt::KeypadModifier);
  QTest::keyClick(pWindow, Qt::Key_Left);
  QTest::keyClick(pWindow, '7');
  EXPECT_EQ(codes, (std::vector<int>{13, 13, '7'}));
  EXPECT_EQ(box->Text(), "50070");
  box->SelStart(0);
  box->SelLength(5);
  QTest::keyClick(pWindow, '9');
  EXPECT_EQ(box->Text(), "9");
}

TEST_F(ToolkitTest, SliderClampsAndTellsEveryChange) {
  int nChanges = 0;
  slider->Change = [&] { ++nChanges; };
  slider->Min(1);
  slider->Max(30);
  slider->Value(2147483647);
  EXPECT_EQ(slider->Value(), 30);
  slider->Value(31);
  slider->Value(-30);
  EXPECT_EQ(slider->Value(), 1);
  EXPECT_EQ(nChanges, 3);  // to 1 by the minimum, to 30, to 1
  Show();
  widget->findChild<QWidget*>("slider")->setFocus();
  QTest::keyClick(widget->windowHandle(), Qt::Key_Right);
  EXPECT_EQ(slider->Value(), 2);
  EXPECT_EQ(nChanges, 4);
}

TEST_F(ToolkitTest, CheckBoxTellsTheUsersClicksOnly) {
  check->Value(1);
  EXPECT_EQ(check->Value(), 1);
  EXPECT_EQ(nClicks, 0);
}

TEST_F(ToolkitTest, GeometryIsInTwipsOnWholePixels) {
  slider->Width(917);
  EXPECT_EQ(slider->Width(), 915);
  EXPECT_THROW(slider->Width(-15), std::invalid_argument);
  EXPECT_EQ(slider->Width(), 915);
  EXPECT_THROW(slider->Move(0, 0, 15, -1), std::invalid_argument);
  slider->Left(-150);
  EXPECT_EQ(slider->Left(), -150);
  EXPECT_EQ(form->ScaleWidth(), 6000);

  auto label = form->NewLabel(Design("label", 0, 15, 0), platform::LabelKind::Text, "i");
  const float fNarrow = label->Width();
  label->Caption("wide enough");
  EXPECT_GT(label->Width(), 5 * fNarrow);
  EXPECT_EQ(label->Caption(), "wide enough");
  auto lamp = form->NewLabel({"lamp", 0, 0, 255, 255, 0, font}, platform::LabelKind::Lamp, "00");
  lamp->Caption("a caption that is too long for it");
  EXPECT_EQ(lamp->Width(), 255);
}

TEST_F(ToolkitTest, LabelsShowOnceWhatWasSetManyTimes) {
  Show();
  auto lamp = form->NewLabel({"lamp", 0, 0, 255, 255, 0, font}, platform::LabelKind::Lamp, "");
  lamp->Visible(true);
  const auto* pLamp = widget->findChild<QWidget*>("lamp");
  for (int i = 0; i < 1000; ++i) lamp->BackColor(i % 2 == 0 ? 0xFF : 0xFF00);
  ASSERT_TRUE(QTest::qWaitFor([&] {
    return widget->grab().toImage().pixelColor(pLamp->geometry().center()) == QColor(0, 255, 0);
  }));
  lamp->BackColor(0xFF);
  lamp.reset();  // what waits to be shown may go
  QTest::qWait(20);
}

TEST_F(ToolkitTest, DockedChildrenFollowTheFormBeforeItTells) {
  auto top = form->NewPictureBox({"top", 0, 0, 6000, 900, 0, font}, platform::Docking::Top);
  auto bottom =
      form->NewPictureBox({"bottom", 0, 900, 6000, 405, 0, font}, platform::Docking::Bottom);
  std::vector<float> widths;
  bottom->Resize = [&] { widths.push_back(bottom->ScaleWidth()); };
  form->Width(7500);  // before it is shown, too
  EXPECT_EQ(nResized, 1);
  EXPECT_EQ(top->Width(), form->ScaleWidth());
  EXPECT_GT(top->Width(), 6000);
  Show();
  nResized = 0;
  form->Width(9000);
  form->Height(3000);
  const QMargins frame = widget->windowHandle()->frameMargins();
  const int nClientWidth = 600 - frame.left() - frame.right();
  const int nClientHeight = 200 - frame.top() - frame.bottom();
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return widget->size() == QSize(nClientWidth, nClientHeight); }));
  EXPECT_EQ(form->ScaleHeight(), static_cast<float>(nClientHeight * 15));
  EXPECT_EQ(bottom->ScaleWidth(), static_cast<float>(nClientWidth * 15));
  EXPECT_EQ(bottom->Height(), 405);
  EXPECT_EQ(widths.back(), bottom->ScaleWidth());
  EXPECT_EQ(widget->findChild<QWidget*>("bottom")->y(), nClientHeight - 27);
  EXPECT_EQ(top->Height(), 900);
  EXPECT_GE(nResized, 1);

  form->WindowState(platform::WindowState::Minimized);
  EXPECT_EQ(form->WindowState(), platform::WindowState::Minimized);
  EXPECT_GE(nResized, 2);
}

TEST_F(ToolkitTest, UnloadingAsksTellsOnceAndSilencesTheForm) {
  auto timer = form->NewTimer(1, true);
  int nTicks = 0;
  timer->Tick = [&] { ++nTicks; };
  Show();
  bRefuseUnload = true;
  form->Unload();
  EXPECT_TRUE(form->Visible());
  EXPECT_EQ(nUnloaded, 0);
  bRefuseUnload = false;
  widget->close();  // as the end of the session does it
  EXPECT_EQ(reasons, (std::vector{UnloadReason::FormCode, UnloadReason::AppWindows}));
  EXPECT_EQ(nUnloaded, 1);

  nTicks = nResized = nValidated = 0;
  form->Unload();
  form->Show();
  form->Width(3000);
  QTest::qWait(20);
  EXPECT_FALSE(form->Visible());
  EXPECT_EQ(reasons.size(), 2U);
  EXPECT_EQ(nUnloaded + nTicks + nResized + nValidated, 1);
  EXPECT_EQ(toolkit.Run(), 0);  // no form is loaded: it does not wait
}

TEST_F(ToolkitTest, CloseCommandOfTheWindowManager) {
  Show();
  QTimer::singleShot(0, [&] {
    // What the window system's close message becomes.
    QCloseEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event);
  });
  EXPECT_EQ(toolkit.Run(), 0);
  EXPECT_EQ(reasons, std::vector{UnloadReason::ControlMenu});
}

TEST_F(ToolkitTest, TermSignalUnloadsAndEndsAlsoABoxThatWaits) {
  QTimer::singleShot(0, [&] { raise(SIGTERM); });
  EXPECT_EQ(toolkit.MsgBox("Sure?", platform::MB_YESNO, "Title"), platform::IDNO);
  EXPECT_EQ(reasons, std::vector{UnloadReason::AppWindows});
  EXPECT_EQ(toolkit.Run(), 0);
}

TEST_F(ToolkitTest, EndOfTheSessionUnloadsAlsoAHiddenForm) {
  Show();
  form->Hide();
  QTimer::singleShot(0, [&] { QCoreApplication::quit(); });
  EXPECT_EQ(toolkit.Run(), 0);
  EXPECT_EQ(reasons, std::vector{UnloadReason::AppWindows});
}

TEST_F(ToolkitTest, MessageBoxBlocksTheWindowAlsoWhenAnotherProgramIsInFront) {
  Show();
  QApplication::setActiveWindow(nullptr);
  QTimer::singleShot(0, [&] {
    auto* const pBox = QApplication::activeModalWidget();
    EXPECT_EQ(pBox->parentWidget(), widget);
    pBox->close();
  });
  toolkit.MsgBox("Sure?", platform::MB_YESNO, "Title");
}

TEST_F(ToolkitTest, MessageBoxShowsPlainTextAndAnswers) {
  const auto answer = [&](std::function<void(QMessageBox&)> act, std::uint32_t lFlags) {
    QTimer::singleShot(
        0, [&] { act(dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget())); });
    return toolkit.MsgBox("<b>5000</b>\r\n&", lFlags, "Title");
  };
  EXPECT_EQ(answer([](QMessageBox& message) { message.button(QMessageBox::Yes)->click(); }, 36),
            platform::IDYES);
  EXPECT_EQ(answer([](QMessageBox& message) { message.button(QMessageBox::No)->click(); }, 36),
            platform::IDNO);
  EXPECT_EQ(answer([](QMessageBox& message) { message.close(); }, 36), platform::IDNO);
  EXPECT_EQ(answer(
                [](QMessageBox& message) {
                  EXPECT_EQ(message.text(), "<b>5000</b>\r\n&");
                  EXPECT_EQ(message.textFormat(), Qt::PlainText);
                  EXPECT_EQ(message.icon(), QMessageBox::Information);
                  message.close();
                },
                64),
            platform::IDOK);
}

TEST_F(ToolkitTest, TimersRestartAndDoNotCatchUp) {
  auto timer = form->NewTimer(500, true);
  int nTicks = 0;
  timer->Tick = [&] { ++nTicks; };
  qint64 nLongest = 0;
  QElapsedTimer clock;
  clock.start();
  for (int i = 0; i < 70; ++i) {  // restarted before it is due, it never is
    QTest::qWait(10);
    timer->Enabled(false);
    timer->Enabled(true);
    nLongest = std::max(nLongest, clock.restart());
  }
  if (nLongest > 400) GTEST_SKIP() << "the machine paused the test for " << nLongest << " ms";
  EXPECT_EQ(nTicks, 0);

  timer->Interval(20);
  QTest::qSleep(200);  // ten intervals in which nothing is delivered
  QCoreApplication::processEvents();
  EXPECT_EQ(nTicks, 1);
}

}  // namespace
}  // namespace quillorbit

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
