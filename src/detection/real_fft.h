// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <span>

namespace sordin {

/// Fourier transform of real samples and its inverse. The one place that knows which library does it.
class RealFft {
public:
    /// Prepares transforms of `length` samples, an even number. Ends the process if it cannot.
    explicit RealFft(unsigned length);
    ~RealFft();
    RealFft(const RealFft&) = delete;
    RealFft& operator=(const RealFft&) = delete;

    /// With X[k] = sum over n of samples[n] exp(-2 pi i k n / length): real[k] + i imag[k] = 2 X[k] for k
    /// from 1 to length / 2 - 1, real[0] = 2 X[0], imag[0] = 2 X[length / 2] (packed, both are real).
    /// `samples` holds `length` values, `real` and `imag` take half as many. Not re-entrant; allocates
    /// nothing.
    void forward(std::span<const float> samples, std::span<float> real, std::span<float> imag);

    /// Undoes forward(): the same layout, the same sizes and scale. Not re-entrant; allocates nothing.
    void inverse(std::span<const float> real, std::span<const float> imag, std::span<float> samples);

private:
    struct Plan;
    std::unique_ptr<Plan> plan_;
};

}  // namespace sordin
