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
  platform::ModuleHandle hInstance() const override { return 0x400000; }
  std::uint32_t GetVersion() const override { return lVersion; }
  platform::MutexHandle CreateMutexA(const void* pSecurityAttributes, bool bInitialOwner,
                                     const char* sName) override {
    m_log.Call("CreateMutexA ", pSecurityAttributes, ", ", bInitialOwner, ", ", sName);
    return 0;
  }
  double Rnd() override { return dRnd; }

  bool bPrevInstance = false;
  std::string sCommand;
  std::uint32_t lVersion = 5;  // 5.0 of the NT family
  double dRnd = 0;

 private:
  CallLog& m_log;
};

}  // namespace quillorbit::fakes
