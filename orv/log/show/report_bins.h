// Divides the duration of a log into bins for diagrams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "orv/log/show/report_collector.h"

namespace orv::log {

struct Bins {
    std::int64_t start;
    std::int64_t width;  // ms
    std::size_t count;

    // Returns at most `most` bins. Their width is at least `narrowest` and one of 1, 2, 5, 10, 20,
    // 50, ...
    static Bins Cover(std::int64_t start, std::int64_t end, std::size_t most,
                      std::int64_t narrowest);

    std::size_t At(std::int64_t time) const;
};

std::vector<std::int64_t> SumPerBin(const Bins& bins, const std::vector<Sample>& samples);
// Counts the spans that begin in each bin, optionally only those in `state`.
std::vector<std::int64_t> CountPerBin(const Bins& bins, const std::vector<Span>& spans,
                                      std::optional<Span::State> state = std::nullopt);
std::vector<std::optional<double>> MeanPerBin(const Bins& bins, const std::vector<Sample>& samples);

// Returns at most `most` spans, ordered by time. Prefers failed spans, then long ones.
std::vector<Span> Weightiest(std::vector<Span> spans, std::size_t most);

}  // namespace orv::log
