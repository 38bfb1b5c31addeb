// Long series made short enough to draw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "orv/log/report_collector.h"

namespace orv::log {

// The time from `start` on cut into equal pieces.
struct Bins {
    std::int64_t start;
    std::int64_t width;  // ms
    std::size_t count;

    // At most `most` pieces of a width that is a round number, not below `narrowest`.
    static Bins Cover(std::int64_t start, std::int64_t end, std::size_t most,
                      std::int64_t narrowest);

    std::size_t At(std::int64_t time) const;
};

std::vector<std::int64_t> SumPerBin(const Bins& bins, const std::vector<Sample>& samples);
std::vector<std::int64_t> CountPerBin(const Bins& bins, const std::vector<Span>& spans);
// None where a bin is empty.
std::vector<std::optional<double>> MeanPerBin(const Bins& bins, const std::vector<Sample>& samples);

// At most `most` of them in the order of time: the failed first, then the longest.
std::vector<Span> Weightiest(std::vector<Span> spans, std::size_t most);

}  // namespace orv::log
