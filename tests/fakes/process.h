#pragma once

#include "fakes/call_log.h"
#include "platform/process.h"

namespace quillorbit::fakes {

class FakeProcess : public platform::Process {
 public:
  explicit FakeProcess(CallLog& log) : m_log(log) {}
  bool PrevInstance() const override {
    m_log.Call("PrevInstance");
    return bPrevInstance;
  }
  std::string Command() const override {
    m_log.Call("Command");
    return sCommand;
  }
  std::string Path() const override { return "C:\\Games"; }
  std::string EXEName() const override { return "Quillorbit"; }
  char PathSeparator() const override { return '\\'; }

  bool bPrevInstance = false;
  std::string sCommand;

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
