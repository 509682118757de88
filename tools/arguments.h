#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>

#include <getopt.h>

namespace quillorbit::tools {

/// The command line cannot be understood; the message names the argument.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A number in decimal and nothing else; throws UsageError that names the option and the range.
[[nodiscard]] int ParseInteger(const std::string& sOption, const std::string& sText, int nMin,
                               int nMax);

/// As ParseInteger, with decimals after a point.
[[nodiscard]] double ParseSeconds(const std::string& sOption, const std::string& sText, double dMin,
                                  double dMax);

/// Calls `take` with the name (as in "--rate") and the value of each option in turn; the value is
/// empty for an option that takes none. Throws UsageError for anything else on the command line.
void ForEachOption(int argc, char** argv, std::span<const option> options,
                   const std::function<void(const std::string&, const std::string&)>& take);

/// Runs a tool and returns its exit code: 2 for bad usage and 1 for any other failure, each with a
/// message on the standard error. A write to a closed pipe is such a failure, not a signal.
[[nodiscard]] int RunTool(const std::string& sName, const std::function<void()>& run);

}  // namespace quillorbit::tools
