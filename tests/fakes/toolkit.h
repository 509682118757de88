#pragma once

#include "fakes/form.h"
#include "platform/toolkit.h"

namespace quillorbit::fakes {

struct FakeToolkit : Fake<Toolkit> {
  using Fake::Fake;
  Own<Form> NewForm(const FormDesign& design) override {
    auto form = std::make_unique<FakeForm>(log, registry, design);
    (design.sName == "frmMain" ? pMain : pTray) = form.get();
    return form;
  }
  MsgBoxAnswer MsgBox(View sPrompt, u32 lFlags, View sTitle) override {
    Call(__func__, sPrompt, lFlags, sTitle);
    if (whileBoxIsOpen) whileBoxIsOpen();
    return eAnswer;
  }
  void Beep() override { Call(__func__); }
  int Run() override { return 0; }
  void End() override { Call(__func__); }

  Registry registry;
  FakeForm* pMain = nullptr;
  FakeForm* pTray = nullptr;
  MsgBoxAnswer eAnswer = IDOK;
  std::function<void()> whileBoxIsOpen;
};

}  // namespace quillorbit::fakes
