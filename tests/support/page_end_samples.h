// Samples that end where memory ends, so that reading past the last one stops the test.
#pragma once

#include <cstddef>
#include <span>

namespace korva::test {

/// `count` samples right before a page that may not be touched.
class PageEndSamples {
public:
    explicit PageEndSamples(std::size_t count);
    ~PageEndSamples();
    PageEndSamples(const PageEndSamples&) = delete;
    PageEndSamples& operator=(const PageEndSamples&) = delete;

    [[nodiscard]] std::span<float> samples() const { return {begin, count}; }

private:
    void* pages;
    std::size_t bytes;
    float* begin;
    std::size_t count;
};

}  // namespace korva::test
