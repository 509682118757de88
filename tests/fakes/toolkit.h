#pragma once

#include <deque>
#include <functional>
#include <string>

#include "fakes/form.h"
#include "platform/toolkit.h"

namespace quillorbit::fakes {

class FakeToolkit : public platform::Toolkit {
 public:
  explicit FakeToolkit(CallLog& log) : m_log(log) {}

  std::unique_ptr<platform::Form> NewForm(const platform::FormDesign& d) override {
    auto form = std::make_unique<FakeForm>(m_log, registry, d);
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
  FakeForm* pForm = nullptr;
  platform::MsgBoxAnswer eAnswer = platform::IDOK;
  std::function<void()> whileBoxIsOpen;

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
