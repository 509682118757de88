#pragma once

namespace quillorbit::linux_adapter {

/// Something that shows a value, and is shown anew when the display next shows anything.
class Presented {
 public:
  Presented() = default;
  virtual ~Presented();
  Presented(const Presented&) = delete;
  Presented& operator=(const Presented&) = delete;

 protected:
  /// The value has changed. At most once in a display period all that has changed is presented
  /// together, however often it changes: a value that a newer one replaces before the display could
  /// show it costs next to nothing.
  void RequestPresentation();

 private:
  friend class Presenter;
  virtual void Present() = 0;

  bool m_bRequested = false;
};

}  // namespace quillorbit::linux_adapter
