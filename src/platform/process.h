#pragma once

#include <cstdint>
#include <string>

namespace quillorbit::platform {

/// A named mutex's handle; 0 is none.
using MutexHandle = std::uint32_t;
/// A program file's handle, as LoadImageA takes it.
using ModuleHandle = std::uint32_t;

/// What the platform knows about the running program. Texts are UTF-8.
class Process {
 public:
  virtual ~Process() = default;

  /// Whether another process of the same program file was running when this one started.
  [[nodiscard]] virtual bool PrevInstance() const = 0;
  /// The argument text: everything after the program's name.
  [[nodiscard]] virtual std::string Command() const = 0;
  /// The folder of the program file, without a trailing separator.
  [[nodiscard]] virtual std::string Path() const = 0;
  /// The program file's name without its extension.
  [[nodiscard]] virtual std::string EXEName() const = 0;
  [[nodiscard]] virtual char PathSeparator() const = 0;
  /// The handle of this program file.
  [[nodiscard]] virtual ModuleHandle hInstance() const = 0;

  /// The platform's version word: bits 0-7 major version, 8-15 minor version, bit 31 clear for the
  /// NT family.
  [[nodiscard]] virtual std::uint32_t GetVersion() const = 0;

  /// Creates or opens a named mutex, which exists as long as a process has it open: for the
  /// session, or with the prefix "Global\" for the machine. 0 when that fails.
  virtual MutexHandle CreateMutexA(const void* pSecurityAttributes, bool bInitialOwner,
                                   const char* sName) = 0;

  /// A pseudo-random number in [0, 1).
  [[nodiscard]] virtual double Rnd() = 0;
};

}  // namespace quillorbit::platform
