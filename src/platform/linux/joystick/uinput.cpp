#include "platform/linux/joystick/uinput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

#include <endian.h>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "platform/linux/process/file_descriptor.h"
#include "platform/linux/process/lock_file.h"
#include "platform/linux/process/runtime_folder.h"

namespace quillorbit::linux_adapter {
namespace {

// Fixed, so that games recognise the joystick from one run to the next.
constexpr std::uint16_t vendorId = 0x5155;
constexpr std::uint16_t productId = 0x0001;
constexpr std::uint16_t productVersion = 1;

/// In the report's order.
constexpr std::array<std::uint16_t, 4> axisCodes = {ABS_X, ABS_Y, ABS_Z, ABS_RZ};
constexpr int axisMinimum = 0;
constexpr int axisMaximum = 150;
constexpr int axisCentre = 75;

constexpr unsigned nButtons = 32;

/// The report as it arrives: packed, least significant byte first.
struct ReportBytes {
  std::array<std::uint16_t, axisCodes.size()> axes;
  std::uint32_t buttons;
};
static_assert(sizeof(ReportBytes) == nReportBytes);

/// The first sixteen buttons are a joystick's own codes; there are no more of those, and
/// BTN_TRIGGER_HAPPY is the range made for the rest. SDL and joydev number them 0 to 31.
constexpr std::uint16_t ButtonCode(unsigned bit) {
  const unsigned code = bit < 16 ? BTN_JOYSTICK + bit : BTN_TRIGGER_HAPPY1 + bit - 16;
  return static_cast<std::uint16_t>(code);
}

[[noreturn]] void Fail(const std::filesystem::path& node, const std::string& sFinding) {
  throw std::runtime_error(node.string() + ": " + sFinding);
}

std::string ErrnoText() { return std::generic_category().message(errno); }

constexpr const char* sModuleAdvice =
    "the kernel module uinput is not loaded; load it with: sudo modprobe uinput";

[[noreturn]] void FailToOpen(const std::filesystem::path& node) {
  switch (errno) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      Fail(node, sModuleAdvice);
    case EACCES:
    case EPERM:
      Fail(node,
           "permission denied; to let the user at this machine's screen open it, put the line\n"
           "      KERNEL==\"uinput\", SUBSYSTEM==\"misc\", OPTIONS+=\"static_node=uinput\", "
           "TAG+=\"uaccess\"\n"
           "    into the file /etc/udev/rules.d/70-quillorbit.rules and restart the machine");
    default:
      Fail(node, ErrnoText());
  }
}

template <class... Argument>
void Set(const std::filesystem::path& node, int fd, unsigned long request, Argument... argument) {
  if (ioctl(fd, request, argument...) != 0)
    Fail(node, "the joystick could not be made: " + ErrnoText());
}

void CreateJoystick(const std::filesystem::path& node, int fd) {
  Set(node, fd, UI_SET_EVBIT, EV_KEY);
  for (unsigned bit = 0; bit < nButtons; ++bit) Set(node, fd, UI_SET_KEYBIT, int{ButtonCode(bit)});

  Set(node, fd, UI_SET_EVBIT, EV_ABS);
  for (const std::uint16_t code : axisCodes) {
    Set(node, fd, UI_SET_ABSBIT, int{code});
    uinput_abs_setup axis{};
    axis.code = code;
    axis.absinfo.minimum = axisMinimum;
    axis.absinfo.maximum = axisMaximum;
    axis.absinfo.value = axisCentre;  // or readers start at one end
    axis.absinfo.flat = 0;
    axis.absinfo.fuzz = 0;  // with any, the kernel swallows small moves
    Set(node, fd, UI_ABS_SETUP, &axis);
  }

  uinput_setup device{};
  device.id = {
      .bustype = BUS_VIRTUAL, .vendor = vendorId, .product = productId, .version = productVersion};
  std::strcpy(device.name, "Quillorbit");
  Set(node, fd, UI_DEV_SETUP, &device);
  Set(node, fd, UI_DEV_CREATE);
}

/// uinput itself would make another joystick for each program. Where no lock file can be made, the
/// joystick is made without.
FileDescriptor LockJoystick(const std::filesystem::path& node) {
  try {
    FileDescriptor lock = TryLock(RuntimeFolder() / (std::string(sDeviceName) + ".uinput.lock"));
    if (lock.IsOpen()) return lock;
  } catch (const std::system_error&) {
    return {};
  }
  Fail(node, "another program of yours already plays the joystick; close that one first");
}

class UinputJoystick final : public Joystick {
 public:
  UinputJoystick(FileDescriptor fd, FileDescriptor lock)
      : m_fd(std::move(fd)), m_lock(std::move(lock)) {}
  ~UinputJoystick() override { ioctl(m_fd.Get(), UI_DEV_DESTROY); }
  UinputJoystick(const UinputJoystick&) = delete;
  UinputJoystick& operator=(const UinputJoystick&) = delete;

  [[nodiscard]] bool Control(std::uint32_t lControlCode,
                             std::span<const std::byte> input) override {
    ReportBytes report;
    if (lControlCode != reportControlCode || input.size() != sizeof report) return false;
    std::memcpy(&report, input.data(), sizeof report);
    return Write(report);
  }

 private:
  [[nodiscard]] bool Write(const ReportBytes& report) {
    std::array<input_event, axisCodes.size() + nButtons + 1> events{};
    auto event = events.begin();
    for (std::size_t i = 0; i < axisCodes.size(); ++i, ++event) {
      event->type = EV_ABS;
      event->code = axisCodes[i];
      // joydev turns values far outside the range into ones with the wrong sign.
      event->value = std::clamp<int>(static_cast<std::int16_t>(le16toh(report.axes[i])),
                                     axisMinimum, axisMaximum);
    }
    const std::uint32_t buttons = le32toh(report.buttons);
    for (unsigned bit = 0; bit < nButtons; ++bit, ++event) {
      event->type = EV_KEY;
      event->code = ButtonCode(bit);
      event->value = static_cast<int>(buttons >> bit & 1);
    }
    event->type = EV_SYN;
    event->code = SYN_REPORT;
    // The kernel takes a whole report at once and has no queue for it that could be full. A reader
    // that falls behind is told so, and reads the present state.
    ssize_t nWritten = 0;
    do {
      nWritten = write(m_fd.Get(), events.data(), sizeof events);
    } while (nWritten < 0 && errno == EINTR);
    return nWritten == ssize_t{sizeof events};
  }

  FileDescriptor m_fd;
  FileDescriptor m_lock;  ///< released after the joystick is gone
};

}  // namespace

void FindUinput(const std::filesystem::path& node) {
  struct stat status {};
  if (stat(node.c_str(), &status) != 0) FailToOpen(node);
}

std::unique_ptr<Joystick> OpenUinput(const std::filesystem::path& node) {
  FileDescriptor fd(open(node.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  if (!fd.IsOpen()) FailToOpen(node);
  FileDescriptor lock = LockJoystick(node);
  CreateJoystick(node, fd.Get());
  return std::make_unique<UinputJoystick>(std::move(fd), std::move(lock));
}

}  // namespace quillorbit::linux_adapter
