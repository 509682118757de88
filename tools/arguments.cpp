#include "tools/arguments.h"

#include <charconv>
#include <csignal>
#include <exception>
#include <iostream>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace quillorbit::tools {
namespace {

template <typename Number, typename... Format>
Number ParseNumber(const std::string& sOption, const std::string& sText, Number min, Number max,
                   Format... format) {
  Number value{};
  const char* end = sText.data() + sText.size();
  const auto [stop, error] = std::from_chars(sText.data(), end, value, format...);
  // A NaN is in no range.
  if (error == std::errc{} && stop == end && value >= min && value <= max) return value;
  std::ostringstream message;
  message << sOption << ": '" << sText << "' is not a number from " << min << " to " << max;
  throw UsageError(message.str());
}

/// The argument that getopt_long has just refused.
std::string RefusedArgument(char** argv) {
  const bool bShort = optopt > 0 && optopt < 256;
  return bShort ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
}

/// Opens what the caller has closed of the three standard descriptors, so that no file or socket
/// takes their numbers. Using them fails.
void HoldStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(fd, F_GETFD) < 0) open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace

int ParseInteger(const std::string& sOption, const std::string& sText, int nMin, int nMax) {
  return ParseNumber(sOption, sText, nMin, nMax);
}

double ParseSeconds(const std::string& sOption, const std::string& sText, double dMin,
                    double dMax) {
  return ParseNumber(sOption, sText, dMin, dMax, std::chars_format::fixed);
}

void ForEachOption(int argc, char** argv, std::span<const option> options,
                   const std::function<void(const std::string&, const std::string&)>& take) {
  // getopt_long wants an end mark, and values that cannot be mistaken for a short option.
  constexpr int firstValue = 256;
  std::vector<option> table(options.begin(), options.end());
  for (std::size_t i = 0; i < table.size(); ++i) table[i].val = firstValue + static_cast<int>(i);
  table.push_back({});

  opterr = 0;
  for (int result; (result = getopt_long(argc, argv, ":", table.data(), nullptr)) != -1;) {
    if (result == ':') throw UsageError(RefusedArgument(argv) + ": a value is missing");
    if (result == '?') throw UsageError(RefusedArgument(argv) + ": no such option");
    const option& found = table[static_cast<std::size_t>(result - firstValue)];
    take(std::string("--") + found.name, optarg == nullptr ? "" : optarg);
  }
  if (optind < argc) throw UsageError(std::string(argv[optind]) + ": unexpected argument");
}

int RunTool(const std::string& sName, const std::function<void()>& run) {
  HoldStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  try {
    run();
    return 0;
  } catch (const UsageError& error) {
    std::cerr << sName << ": " << error.what() << "\nTry '" << sName << " --help'.\n";
    return 2;
  } catch (const std::exception& error) {
    std::cerr << sName << ": " << error.what() << '\n';
    return 1;
  }
}

}  // namespace quillorbit::tools
