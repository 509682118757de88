#pragma once

#include <deque>
#include <functional>
#include <string>

#include "fakes/form.h"
#include "fakes/resources.h"
#include "platform/toolkit.h"

namespace quillorbit::fakes {

class FakeToolkit : public platform::Toolkit {
 public:
  FakeToolkit(CallLog& log, const FakeResources& resources) : m_log(log), m_resources(resources) {}

  std::unique_ptr<platform::Form> NewForm(const platform::FormDesign& d) override {
    FakeForm*& pForm = d.sName == "frmMain" ? pMain : pTray;
    auto form = std::make_unique<FakeForm>(m_log, registry, d, d.sName == "frmMain" ? 1001 : 1002,
                                           m_resources.Icon(d.sIcon, 16));
    pForm = form.get();
    return form;
  }
  platform::MsgBoxAnswer MsgBox(std::string_view sPrompt, std::uint32_t lFlags,
                                std::string_view sTitle) override {
    m_log.Call("MsgBox ", sPrompt, " | ", lFlags, " | ", sTitle);
    if (whileBoxIsOpen) whileBoxIsOpen();
    return eAnswer;
  }
  void Beep() override { m_log.Call("Beep"); }
  int Run() override { return 0; }
  void End() override { m_log.Call("End"); }

  Registry registry;
  FakeForm* pMain = nullptr;
  FakeForm* pTray = nullptr;
  platform::MsgBoxAnswer eAnswer = platform::IDOK;
  std::function<void()> whileBoxIsOpen;

 private:
  CallLog& m_log;
  const FakeResources& m_resources;
};

}  // namespace quillorbit::fakes
