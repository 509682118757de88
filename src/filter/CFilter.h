#pragma once

#include <cstdint>
#include <vector>

namespace quillorbit {

/// Smooths a stream of 16-bit samples of one axis, in one of two modes: as a first-order recursive
/// low-pass filter, or as the median of a buffer. The last initialisation chooses the mode; a new
/// filter is in median mode without a buffer and its output is 0.
///
/// Failures: std::domain_error for a division by zero, std::overflow_error for a result that does
/// not fit 16 bits, std::length_error for a negative sample count.
class CFilter {
 public:
  /// Number of samples of the median buffer, 0 when there is none.
  [[nodiscard]] std::int16_t Samples() const { return m_samples; }

  /// Median mode, with a buffer of `iSamples` zeros. 0 leaves median mode without a buffer.
  void Initialise(std::int16_t iSamples);

  /// Low-pass mode, with the smoothing factor alpha = T / (T + tau) of a sample period T = 1/rate
  /// and a time constant tau = 1/freq, that is freq / (freq + rate). The output stays what it is.
  ///
  /// Fails with `rate` 0, which changes nothing; with `freq` 0, which changes to low-pass mode with
  /// the previous factor; and when 1/rate and 1/freq cancel out, which leaves no usable factor.
  void InitialiseLowPass(double rate, double freq);

  /// Feeds the low-pass filter. Fails, keeping its output, when there is no usable factor.
  void AddLowPass(std::int16_t sample);

  /// Feeds the median buffer, if there is one. Each sample replaces the element at the next rank of
  /// the sorted buffer, in cyclic order, however old that element is.
  void Add(std::int16_t sample);

  /// The low-pass output, or the middle element of the median buffer, or the mean of the two middle
  /// ones rounded with halves to even.
  [[nodiscard]] std::int16_t Value() const;

 private:
  std::int16_t m_samples = 0;
  std::vector<std::int16_t> m_buffer;  ///< in ascending order
  std::int16_t m_mid1 = 0;
  std::int16_t m_mid2 = 0;  ///< 0: there is one middle element only
  std::int16_t m_pos = 0;   ///< the rank that the next sample replaces
  std::int32_t m_lowPass = 0;
  double m_alpha = 0;  ///< weight of the new sample
  std::int16_t m_output = 0;
};

}  // namespace quillorbit
