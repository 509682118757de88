#pragma once

#include <string>

namespace quillorbit::platform {

/// What the platform knows of the running program. Texts are UTF-8.
class Process {
 public:
  virtual ~Process() = default;

  /// Whether another process of the same program file was running when this one started.
  [[nodiscard]] virtual bool PrevInstance() const = 0;
  /// The argument text: everything behind the program's name.
  [[nodiscard]] virtual std::string Command() const = 0;
  /// The folder of the program file, without a trailing separator.
  [[nodiscard]] virtual std::string Path() const = 0;
  /// The program file's name without its extension.
  [[nodiscard]] virtual std::string EXEName() const = 0;
  [[nodiscard]] virtual char PathSeparator() const = 0;
};

}  // namespace quillorbit::platform
