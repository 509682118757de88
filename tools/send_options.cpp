#include "tools/send_options.h"

#include <array>

#include "tools/arguments.h"

namespace quillorbit::tools {

const char* const sSendHelp = R"(Usage: quillorbit-send [OPTION]...
A stand-in for the phone: sends motion datagrams to quillorbit.

  --host HOST      name or address (default 127.0.0.1)
  --port PORT      UDP port, 1 to 65535 (default 5000)
  --rate RATE      datagrams per second, 1 to 10000 (default 60)
  --seconds S      stop after S seconds, 0.001 to 86400
  --count N        stop after N datagrams, 1 to 1000000000
  --pattern NAME   steady, sweep, circle, buttons, demo (the default), or file
  --file FILE      play FILE, raw datagrams of 20 bytes, up to 64 MiB, in a
                   loop; implies --pattern file
  --once           stop after the file's last datagram
  --record FILE    write what is sent to FILE in that format ("-": standard
                   output)
  --help           show this help and exit

  --measure        measure the time from a datagram's sending to the arrival of
                   its report at the user-space driver, whose place is taken
                   meanwhile. The button mask carries the datagram's number.
                   Start quillorbit after it, on the same machine.
  --wait S         wait for quillorbit to open the device, and then again for
                   the first report, up to S seconds each, 0.1 to 86400
                   (default 30)
  --settle S       keep sending unnumbered datagrams for S seconds, 0 to 86400,
                   before the first numbered one (default 0)
  --csv            print the measurement as one line,
                   sent,arrived,lost,reordered,min,median,p90,p99,p99.9,max
                   with times in microseconds, empty when nothing arrived

Quantiles are nearest-rank. With neither --seconds nor --count it goes on until
SIGINT or SIGTERM; with both, the first to come ends it. A summary goes to the
standard error, a measurement to the standard output. The exit code is 0, or 1
after a failure, or 2 for bad usage.
)";

namespace {

constexpr double dMaxSeconds = 86400;

constexpr std::array table{
    option{"host", required_argument, nullptr, 0},
    option{"port", required_argument, nullptr, 0},
    option{"rate", required_argument, nullptr, 0},
    option{"seconds", required_argument, nullptr, 0},
    option{"count", required_argument, nullptr, 0},
    option{"pattern", required_argument, nullptr, 0},
    option{"file", required_argument, nullptr, 0},
    option{"once", no_argument, nullptr, 0},
    option{"record", required_argument, nullptr, 0},
    option{"measure", no_argument, nullptr, 0},
    option{"wait", required_argument, nullptr, 0},
    option{"settle", required_argument, nullptr, 0},
    option{"csv", no_argument, nullptr, 0},
    option{"help", no_argument, nullptr, 0},
};

/// What was given, as far as the checks of options against each other need it.
struct Given {
  std::optional<std::string> sPattern;
  bool bWait = false;
  bool bSettle = false;
};

void TakePattern(SendOptions& options, const std::string& sName) {
  if (sName == "file") return;
  const std::optional<Pattern> found = PatternOfName(sName);
  if (!found)
    throw UsageError("--pattern: '" + sName +
                     "' is none of steady, sweep, circle, buttons, demo, file");
  options.pattern = *found;
}

void Take(SendOptions& options, Given& given, const std::string& sName, const std::string& sValue) {
  if (sName == "--host") options.sHost = sValue;
  if (sName == "--port") options.nPort = ParseInteger(sName, sValue, 1, 65535);
  if (sName == "--rate") options.nRate = ParseInteger(sName, sValue, 1, 10000);
  if (sName == "--seconds") options.dSeconds = ParseSeconds(sName, sValue, 0.001, dMaxSeconds);
  if (sName == "--count") options.nCount = ParseInteger(sName, sValue, 1, 1'000'000'000);
  if (sName == "--pattern") TakePattern(options, *(given.sPattern = sValue));
  if (sName == "--file") options.sFile = sValue;
  if (sName == "--once") options.bOnce = true;
  if (sName == "--record") options.sRecord = sValue;
  if (sName == "--measure") options.bMeasure = true;
  if (sName == "--wait") options.dWait = ParseSeconds(sName, sValue, 0.1, dMaxSeconds);
  if (sName == "--wait") given.bWait = true;
  if (sName == "--settle") options.dSettle = ParseSeconds(sName, sValue, 0, dMaxSeconds);
  if (sName == "--settle") given.bSettle = true;
  if (sName == "--csv") options.bCsv = true;
  if (sName == "--help") options.bHelp = true;
}

void CheckTogether(const SendOptions& options, const Given& given) {
  if (given.sPattern == "file" && !options.sFile) throw UsageError("--pattern file: needs --file");
  if (options.sFile && given.sPattern && given.sPattern != "file")
    throw UsageError("--pattern " + *given.sPattern + ": cannot go with --file");
  if (options.bOnce && !options.sFile) throw UsageError("--once: needs --file");
  if (options.bCsv && !options.bMeasure) throw UsageError("--csv: needs --measure");
  if (given.bWait && !options.bMeasure) throw UsageError("--wait: needs --measure");
  if (given.bSettle && !options.bMeasure) throw UsageError("--settle: needs --measure");
  if (options.sRecord && options.bMeasure) throw UsageError("--record: cannot go with --measure");
}

}  // namespace

SendOptions ParseSendOptions(int argc, char** argv) {
  SendOptions options;
  Given given;
  ForEachOption(argc, argv, table, [&](const std::string& sName, const std::string& sValue) {
    Take(options, given, sName, sValue);
  });
  if (!options.bHelp) CheckTogether(options, given);
  return options;
}

}  // namespace quillorbit::tools
