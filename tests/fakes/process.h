#pragma once

#include "fakes/call_log.h"
#include "platform/process.h"

namespace quillorbit::fakes {

struct FakeProcess : Fake<Process> {
  using Fake::Fake;
  bool PrevInstance() const override { return bPrevInstance; }
  std::string Command() const override { return sCommand; }
  std::string Path() const override { return "C:\\Games"; }
  std::string EXEName() const override { return "Quillorbit"; }
  char PathSeparator() const override { return '\\'; }
  ModuleHandle hInstance() const override { return 0x400000; }
  u32 GetVersion() const override { return lVersion; }
  MutexHandle CreateMutexA(const void* p, bool bInitialOwner, const char* s) override {
    return Answer(0U, __func__, p, bInitialOwner, s);
  }
  double Rnd() override { return 0; }

  bool bPrevInstance = false;
  std::string sCommand;
  u32 lVersion = 5;  // 5.0 of the NT family
};

}  // namespace quillorbit::fakes
