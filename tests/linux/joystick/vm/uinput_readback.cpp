// Plays reports into the joystick and prints what games read of each, through evdev and SDL.

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include <SDL.h>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "joystick/JoystickReport.h"
#include "platform/linux/joystick/device.h"

using namespace quillorbit;

namespace {

/// Opens the joystick's event node and describes it.
int OpenEvdev() {
  int fd = -1;
  std::array<char, 100> name{};
  for (int n = 0; n < 10 && name.data() != std::string_view("Quillorbit"); ++n) {
    fd = open(("/dev/input/event" + std::to_string(n)).c_str(), O_RDONLY | O_NONBLOCK);
    ioctl(fd, EVIOCGNAME(name.size()), name.data());
  }
  input_id id{};
  ioctl(fd, EVIOCGID, &id);
  std::printf("evdev: bus %x vendor %x product %x version %x\n", id.bustype, id.vendor, id.product,
              id.version);
  for (const unsigned code : std::array<unsigned, 4>{ABS_X, ABS_Y, ABS_Z, ABS_RZ}) {
    input_absinfo axis{};
    ioctl(fd, EVIOCGABS(code), &axis);
    std::printf("%d in %d..%d flat %d fuzz %d\n", axis.value, axis.minimum, axis.maximum, axis.flat,
                axis.fuzz);
  }
  std::array<unsigned char, KEY_CNT / 8> buttons{};
  ioctl(fd, EVIOCGBIT(EV_KEY, buttons.size()), buttons.data());
  std::printf("buttons");
  for (std::size_t code = 0; code < KEY_CNT; ++code)
    if ((buttons[code / 8] >> code % 8 & 1) != 0) std::printf(" %zx", code);
  std::printf("\n");
  return fd;
}

/// The events since the last call as type/code=value; the end of a report is 0/0=0.
void PrintEvents(int fd) {
  std::printf("  evdev");
  for (input_event event{}; read(fd, &event, sizeof event) == sizeof event;)
    std::printf(" %x/%x=%d", event.type, event.code, event.value);
  std::printf("\n");
}

SDL_Joystick* OpenSdl() {
  SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
  SDL_Init(SDL_INIT_JOYSTICK);
  SDL_Joystick* const joystick = SDL_JoystickOpen(0);
  std::printf("SDL: %d joystick, \"%s\", axes %d buttons %d\n", SDL_NumJoysticks(),
              SDL_JoystickName(joystick), SDL_JoystickNumAxes(joystick),
              SDL_JoystickNumButtons(joystick));
  return joystick;
}

void PrintSdlState(SDL_Joystick* joystick) {
  SDL_JoystickUpdate();
  std::printf("  SDL axes");
  for (int i = 0; i < SDL_JoystickNumAxes(joystick); ++i)
    std::printf(" %d", SDL_JoystickGetAxis(joystick, i));
  std::printf(" buttons");
  for (int i = 0; i < SDL_JoystickNumButtons(joystick); ++i)
    if (SDL_JoystickGetButton(joystick, i) != 0) std::printf(" %d", i);
  std::printf("\n");
}

platform::DeviceHandle Open(linux_adapter::LinuxDevice& device) {
  return device.CreateFileA(R"(\\.\vJoyQuillorbit)", 0, 0, nullptr, 3, 0, 0);
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // in its place among the lines of the standard error
  linux_adapter::LinuxDevice device, second;
  const platform::DeviceHandle hDevice = Open(device);
  if (hDevice == platform::INVALID_HANDLE_VALUE) return 1;
  const int evdev = OpenEvdev();
  SDL_Joystick* const sdl = OpenSdl();
  PrintSdlState(sdl);

  const struct {
    std::uint32_t lCode, lSize;
    JoystickReport report;
  } controls[] = {
      {100, 12, {0, 150, 1, 149, 0x00018005}},
      {100, 12, {-1, 151, -32768, 32767, INT32_MIN}},
      {101, 12, {75, 75, 75, 75, 0}},
      {100, 13, {75, 75, 75, 75, 0}},
  };
  for (const auto& [lCode, lSize, report] : controls) {
    std::array<std::byte, JoystickReport::nBytes + 1> bytes{};
    std::ranges::copy(report.ToBytes(), bytes.begin());
    const bool bSent =
        device.DeviceIoControl(hDevice, lCode, bytes.data(), lSize, nullptr, 0, nullptr, nullptr);
    std::printf("[%u %u: %d %d %d %d %x] %s\n", lCode, lSize, report.x, report.y, report.z,
                report.zr, static_cast<unsigned>(report.b), bSent ? "sent" : "refused");
    if (!bSent) continue;
    PrintEvents(evdev);
    PrintSdlState(sdl);
  }
  std::puts("[a second program]");
  if (Open(second) != platform::INVALID_HANDLE_VALUE) return 1;
  device.CloseHandle(hDevice);
  for (SDL_Event event{}; SDL_WaitEventTimeout(&event, 10'000) != 0;)
    if (event.type == SDL_JOYDEVICEREMOVED) return std::puts("[closed]") < 0;
}
