// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <span>

namespace sordin {

/// Fourier transform of real samples and its inverse. Hides the library that computes it. Not thread-safe:
/// the transforms share a scratch buffer. They do not allocate.
class RealFft {
public:
    /// Prepares transforms of `length` samples; `length` must be even. Ends the process on failure.
    explicit RealFft(unsigned length);
    ~RealFft();
    RealFft(const RealFft&) = delete;
    RealFft& operator=(const RealFft&) = delete;

    /// With X[k] = sum over n of samples[n] exp(-2 pi i k n / length), computes real[k] + i imag[k] = 2 X[k]
    /// for k from 1 to length / 2 - 1. X[0] and X[length / 2] are real and share the first place:
    /// real[0] = 2 X[0], imag[0] = 2 X[length / 2]. `samples` has `length` values, `real` and `imag` have
    /// length / 2 each.
    void forward(std::span<const float> samples, std::span<float> real, std::span<float> imag);

    /// Inverts forward(), with the same layout, sizes and scale.
    void inverse(std::span<const float> real, std::span<const float> imag, std::span<float> samples);

private:
    struct Plan;
    std::unique_ptr<Plan> plan_;
};

}  // namespace sordin
