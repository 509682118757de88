#pragma once

namespace quillorbit::linux_adapter {

/// Something that shows a value and is repainted at the display's rate.
class Presented {
 public:
  Presented() = default;
  virtual ~Presented();
  Presented(const Presented&) = delete;
  Presented& operator=(const Presented&) = delete;

 protected:
  /// To be called when the value has changed. However often that is, everything that has changed is
  /// presented together, at most once in a display period: a value that is replaced before the
  /// display could show it costs next to nothing.
  void RequestPresentation();

 private:
  friend class Presenter;
  virtual void Present() = 0;

  bool m_bRequested = false;
};

}  // namespace quillorbit::linux_adapter
