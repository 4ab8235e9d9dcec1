// SPDX-License-Identifier: MIT
#include "detection/real_fft.h"

#include "support/fatal.h"

#include <kiss_fftr.h>

#include <vector>

namespace sordin {

struct RealFft::Plan {
    kiss_fftr_cfg configuration;
    kiss_fftr_cfg inverse;
    std::vector<kiss_fft_cpx> bins;  // length / 2 + 1

    explicit Plan(unsigned length)
        : configuration(kiss_fftr_alloc(static_cast<int>(length), 0, nullptr, nullptr)),
          inverse(kiss_fftr_alloc(static_cast<int>(length), 1, nullptr, nullptr)),
          bins(length / 2 + 1) {
        if (configuration == nullptr || inverse == nullptr) {
            fatal("cannot prepare the Fourier transform");
        }
    }
    ~Plan() {
        kiss_fftr_free(configuration);
        kiss_fftr_free(inverse);
    }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;
};

RealFft::RealFft(unsigned length) : plan_(std::make_unique<Plan>(length)) {}

RealFft::~RealFft() = default;

void RealFft::forward(std::span<const float> samples, std::span<float> real, std::span<float> imag) {
    auto& bins = plan_->bins;
    kiss_fftr(plan_->configuration, samples.data(), bins.data());
    const std::size_t half = bins.size() - 1;
    for (std::size_t k = 0; k < half; ++k) {
        real[k] = 2.0F * bins[k].r;
        imag[k] = 2.0F * bins[k].i;
    }
    imag[0] = 2.0F * bins[half].r;
}

void RealFft::inverse(std::span<const float> real, std::span<const float> imag, std::span<float> samples) {
    auto& bins = plan_->bins;
    const std::size_t half = bins.size() - 1;
    // forward() doubles the values, and the library's inverse multiplies them by the length.
    const float scale = 1.0F / static_cast<float>(4 * half);
    for (std::size_t k = 0; k < half; ++k) {
        bins[k] = {scale * real[k], scale * imag[k]};
    }
    bins[half] = {scale * imag[0], 0};
    bins[0].i = 0;
    kiss_fftri(plan_->inverse, bins.data(), samples.data());
}

}  // namespace sordin
