#include <cstdio>
#include <stdexcept>

#include <QProcess>

#include "place.h"
#include "sections.h"

namespace quillorbit::bench {

void Frame() {
  QProcess program;
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  program.start(Place::Built("bench_frame"), QStringList());
  if (!program.waitForFinished(120'000) || program.exitCode() != 0)
    throw std::runtime_error("bench_frame has failed");
  std::printf("%s", program.readAllStandardOutput().constData());
}

}  // namespace quillorbit::bench
