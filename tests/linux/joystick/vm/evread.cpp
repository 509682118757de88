// evread EVDEV JOYDEV: what the kernel itself shows of a joystick on its two nodes
// (/dev/input/event*, /dev/input/js*): first a description, then for each line of standard input
// two lines, the events that have come since on the one and on the other.

#include <array>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string>

#include <fcntl.h>
#include <linux/input.h>
#include <linux/joystick.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

void DescribeEvdev(int fd) {
  std::array<char, 100> name{};
  input_id id{};
  ioctl(fd, EVIOCGNAME(name.size()), name.data());
  ioctl(fd, EVIOCGID, &id);
  std::printf("name \"%s\" bus %x vendor %x product %x version %x\n", name.data(), id.bustype,
              id.vendor, id.product, id.version);

  std::array<std::uint8_t, (ABS_MAX + 8) / 8> axes{};
  ioctl(fd, EVIOCGBIT(EV_ABS, axes.size()), axes.data());
  for (unsigned code = 0; code <= ABS_MAX; ++code) {
    if ((axes[code / 8] >> code % 8 & 1) == 0) continue;
    input_absinfo axis{};
    ioctl(fd, EVIOCGABS(code), &axis);
    std::printf("axis %x: %d in %d..%d flat %d fuzz %d\n", code, axis.value, axis.minimum,
                axis.maximum, axis.flat, axis.fuzz);
  }

  std::array<std::uint8_t, (KEY_MAX + 8) / 8> keys{};
  ioctl(fd, EVIOCGBIT(EV_KEY, keys.size()), keys.data());
  std::printf("buttons");
  for (unsigned code = 0; code <= KEY_MAX; ++code)
    if ((keys[code / 8] >> code % 8 & 1) != 0) std::printf(" %x", code);
  std::printf("\n");
}

void DescribeJoydev(int fd) {
  std::array<char, 100> name{};
  std::uint8_t nAxes = 0, nButtons = 0;
  ioctl(fd, JSIOCGNAME(name.size()), name.data());
  ioctl(fd, JSIOCGAXES, &nAxes);
  ioctl(fd, JSIOCGBUTTONS, &nButtons);
  std::printf("name \"%s\" axes %d buttons %d\n", name.data(), nAxes, nButtons);
}

void PrintEvdevEvents(int fd) {
  input_event event{};
  while (read(fd, &event, sizeof event) == sizeof event) {
    if (event.type == EV_SYN && event.code == SYN_REPORT)
      std::printf(" .");
    else
      std::printf(" %x/%x=%d", event.type, event.code, event.value);
  }
}

/// Axes that rest and buttons that are up are left out of the initial state, which has all of them.
void PrintJoydevEvents(int fd) {
  js_event event{};
  while (read(fd, &event, sizeof event) == sizeof event) {
    const bool bInitial = (event.type & JS_EVENT_INIT) != 0;
    if (bInitial && event.value == 0) continue;
    std::printf(" %s%s%d=%d", bInitial ? "initial-" : "",
                (event.type & JS_EVENT_AXIS) != 0 ? "axis" : "button", event.number, event.value);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const int evdev = open(argv[1], O_RDONLY | O_NONBLOCK);
  const int joydev = open(argv[2], O_RDONLY | O_NONBLOCK);
  if (evdev < 0 || joydev < 0) {
    std::perror("open");
    return 1;
  }
  DescribeEvdev(evdev);
  DescribeJoydev(joydev);
  std::fflush(stdout);
  for (std::string sLine; std::getline(std::cin, sLine);) {
    std::printf("  evdev");
    PrintEvdevEvents(evdev);
    std::printf("\n  joydev");
    PrintJoydevEvents(joydev);
    std::printf("\n");
    std::fflush(stdout);
  }
}
