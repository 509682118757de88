#include "filter/CFilter.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "base/Numbers.h"

namespace quillorbit {

void CFilter::Initialise(std::int16_t iSamples) {
  if (iSamples < 0) throw std::length_error("A filter buffer needs a sample count of 0 or more");
  if (iSamples != 0) {
    m_buffer.assign(static_cast<std::size_t>(iSamples), 0);
    const bool bEven = iSamples % 2 == 0;
    m_mid1 = static_cast<std::int16_t>(bEven ? iSamples / 2 - 1 : (iSamples - 1) / 2);
    m_mid2 = static_cast<std::int16_t>(bEven ? iSamples / 2 : 0);
    m_pos = 0;
  }
  m_lowPass = 0;
  m_samples = iSamples;
}

void CFilter::InitialiseLowPass(double rate, double freq) {
  if (rate == 0) throw std::domain_error("Division by zero: rate");
  const double t1 = 1 / rate;
  m_lowPass = 1;
  if (freq == 0) throw std::domain_error("Division by zero: freq");
  const double t2 = 1 / freq;
  if (t1 + t2 == 0) {
    m_alpha = std::numeric_limits<double>::quiet_NaN();
    throw std::domain_error("Division by zero: 1/rate + 1/freq");
  }
  m_alpha = t1 / (t1 + t2);
}

void CFilter::AddLowPass(std::int16_t sample) {
  m_output = RoundToInt16((1 - m_alpha) * m_output + sample * m_alpha);
}

void CFilter::Add(std::int16_t sample) {
  if (m_samples == 0) return;
  m_buffer[static_cast<std::size_t>(m_pos)] = sample;
  m_pos = static_cast<std::int16_t>((m_pos + 1) % m_samples);
  std::sort(m_buffer.begin(), m_buffer.end());
}

std::int16_t CFilter::Value() const {
  if (m_lowPass != 0) return m_output;
  if (m_samples == 0) return 0;
  const std::int16_t middle = m_buffer[static_cast<std::size_t>(m_mid1)];
  if (m_mid2 == 0) return middle;
  return RoundToInt16(ToInt16(middle + m_buffer[static_cast<std::size_t>(m_mid2)]) / 2.0);
}

}  // namespace quillorbit
