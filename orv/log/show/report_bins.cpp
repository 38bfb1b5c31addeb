#include "orv/log/show/report_bins.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orv::log {

Bins Bins::Cover(std::int64_t start, std::int64_t end, std::size_t most, std::int64_t narrowest) {
    const std::int64_t span = std::max<std::int64_t>(end - start, 0) + 1;
    const auto pieces = static_cast<std::int64_t>(most);
    std::int64_t width = 1;
    for (int step = 0; width < narrowest || (span + width - 1) / width > pieces; ++step) {
        width = step % 3 == 1 ? width / 2 * 5 : width * 2;
    }
    return {start, width, static_cast<std::size_t>((span + width - 1) / width)};
}

std::size_t Bins::At(std::int64_t time) const {
    const std::int64_t place = std::max<std::int64_t>(time - start, 0) / width;
    return std::min(static_cast<std::size_t>(place), count - 1);
}

std::vector<std::int64_t> SumPerBin(const Bins& bins, const std::vector<Sample>& samples) {
    std::vector<std::int64_t> sums(bins.count);
    for (const Sample& sample : samples) {
        sums[bins.At(sample.time)] += sample.value;
    }
    return sums;
}

std::vector<std::int64_t> CountPerBin(const Bins& bins, const std::vector<Span>& spans,
                                      std::optional<Span::State> state) {
    std::vector<std::int64_t> counts(bins.count);
    for (const Span& span : spans) {
        counts[bins.At(span.time)] += !state || span.state == *state ? 1 : 0;
    }
    return counts;
}

std::vector<std::optional<double>> MeanPerBin(const Bins& bins,
                                              const std::vector<Sample>& samples) {
    const std::vector<std::int64_t> sums = SumPerBin(bins, samples);
    std::vector<std::int64_t> counts(bins.count);
    for (const Sample& sample : samples) {
        ++counts[bins.At(sample.time)];
    }
    std::vector<std::optional<double>> means(bins.count);
    for (std::size_t bin = 0; bin < bins.count; ++bin) {
        if (counts[bin] > 0) {
            const double mean = static_cast<double>(sums[bin]) / static_cast<double>(counts[bin]);
            means[bin] = std::round(mean * 10) / 10;
        }
    }
    return means;
}

std::vector<Span> Weightiest(std::vector<Span> spans, std::size_t most) {
    if (spans.size() > most) {
        const auto end = spans.begin() + static_cast<std::ptrdiff_t>(most);
        const auto weight = [](const Span& span) {
            return std::pair(span.state == Span::State::Failed, span.length);
        };
        std::nth_element(spans.begin(), end, spans.end(), [&](const Span& one, const Span& other) {
            return weight(one) > weight(other);
        });
        spans.erase(end, spans.end());
    }
    std::sort(spans.begin(), spans.end(),
              [](const Span& one, const Span& other) { return one.time < other.time; });
    return spans;
}

}  // namespace orv::log
