#pragma once

#include <optional>
#include <string>

#include "tools/patterns.h"

namespace quillorbit::tools {

struct SendOptions {
  std::string sHost = "127.0.0.1";
  int nPort = 5000;
  int nRate = 60;
  std::optional<double> dSeconds;
  std::optional<int> nCount;
  Pattern pattern = Pattern::demo;
  std::optional<std::string> sFile;  ///< played instead of the pattern
  bool bOnce = false;
  std::optional<std::string> sRecord;
  bool bMeasure = false;
  double dWait = 30;
  double dSettle = 0;  ///< seconds between the first report and the first numbered datagram
  bool bCsv = false;
  bool bHelp = false;
};

/// Throws UsageError.
[[nodiscard]] SendOptions ParseSendOptions(int argc, char** argv);

extern const char* const sSendHelp;

}  // namespace quillorbit::tools
