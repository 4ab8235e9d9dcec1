// SPDX-License-Identifier: MIT
#include "detection/real_fft.h"

#include "support/fatal.h"

#include <kiss_fftr.h>

#include <vector>

namespace sordin {

struct RealFft::Plan {
    kiss_fftr_cfg configuration;
    std::vector<kiss_fft_cpx> bins;  // length / 2 + 1

    explicit Plan(unsigned length)
        : configuration(kiss_fftr_alloc(static_cast<int>(length), 0, nullptr, nullptr)),
          bins(length / 2 + 1) {
        if (configuration == nullptr) {
            fatal("the Fourier transform cannot be prepared");
        }
    }
    ~Plan() { kiss_fftr_free(configuration); }
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

}  // namespace sordin
