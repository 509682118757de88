#pragma once

#include "fakes/form.h"
#include "fakes/resources.h"
#include "platform/toolkit.h"

namespace quillorbit::fakes {

struct FakeToolkit : Fake<Toolkit> {
  using Fake::Fake;
  Own<Form> NewForm(const FormDesign& d) override {
    const bool bMain = d.sName == "frmMain";
    auto form = std::make_unique<FakeForm>(log, registry, d, bMain ? 1001 : 1002,
                                           FakeResources::Icon(d.sIcon, 16));
    (bMain ? pMain : pTray) = form.get();
    return form;
  }
  MsgBoxAnswer MsgBox(View sPrompt, u32 lFlags, View sTitle) override {
    log.Call("MsgBox", sPrompt, lFlags, sTitle);
    if (whileBoxIsOpen) whileBoxIsOpen();
    return eAnswer;
  }
  void Beep() override { log.Call("Beep"); }
  int Run() override { return 0; }
  void End() override { log.Call("End"); }

  Registry registry;
  FakeForm* pMain = nullptr;
  FakeForm* pTray = nullptr;
  MsgBoxAnswer eAnswer = IDOK;
  std::function<void()> whileBoxIsOpen;
};

}  // namespace quillorbit::fakes
