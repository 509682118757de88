#include <cstring>
#include <iomanip>
#include <iostream>
#include <optional>
#include <stdexcept>

#include "tools/arguments.h"
#include "tools/measure.h"
#include "tools/output_file.h"
#include "tools/send_options.h"
#include "tools/send_schedule.h"
#include "tools/stop_signal.h"
#include "tools/udp_sender.h"

namespace quillorbit::tools {
namespace {

void Summarize(const UdpSender& sender, double dSeconds) {
  const double dRate = dSeconds > 0 ? static_cast<double>(sender.Sent()) / dSeconds : 0;
  std::cerr << "quillorbit-send: sent " << sender.Sent() << " datagrams in " << std::fixed
            << std::setprecision(2) << dSeconds << " s, " << std::setprecision(1) << dRate
            << " per second, send errors " << sender.Errors();
  if (sender.Errors() > 0) std::cerr << " (" << std::strerror(sender.LastError()) << ')';
  std::cerr << '\n';
}

void SendAll(const SendOptions& options) {
  SendSchedule schedule(options);
  UdpSender sender(options.sHost, options.nPort);
  std::optional<OutputFile> record;
  if (options.sRecord) record = OutputFile::Open(*options.sRecord);

  const StopSignal stop;
  for (schedule.Begin(); !schedule.Ended(); schedule.Advance()) {
    while (!stop.Received() && Clock::now() < schedule.Due()) stop.WaitFor(-1, 0, schedule.Due());
    if (stop.Received()) break;
    const MotionData motion = schedule.Motion();
    sender.Send(motion);
    if (record) record->Write(std::span<const std::byte>(motion.ToBytes()), stop);
  }
  while (!stop.Received() && Clock::now() < schedule.End()) stop.WaitFor(-1, 0, schedule.End());
  Summarize(sender, schedule.Seconds());
  if (sender.Sent() == 0 && sender.Errors() > 0)
    throw std::runtime_error("not one datagram could be sent");
}

void MeasureAll(const SendOptions& options) {
  StopSignal stop;
  const LatencyLog log = Measure(options, stop);
  OutputFile::StandardOutput().Write(options.bCsv ? log.CsvLine() : log.Summary());
}

void RunSend(int argc, char** argv) {
  const SendOptions options = ParseSendOptions(argc, argv);
  if (options.bHelp) return OutputFile::StandardOutput().Write(sSendHelp);
  if (options.bMeasure) return MeasureAll(options);
  SendAll(options);
}

}  // namespace
}  // namespace quillorbit::tools

int main(int argc, char** argv) {
  using namespace quillorbit::tools;
  return RunTool("quillorbit-send", [&] { RunSend(argc, argv); });
}
