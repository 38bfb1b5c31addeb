#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "orv/scan/scanner.h"

namespace orv {

enum class ScanFormat : std::uint8_t {
    Table,  // prints a table at the end
    Json,
    Csv,
    Watch,  // updates a table during the scan
};

// The result of a poll. `second` counts from the start of the scan.
struct ScanState {
    Devices devices;
    double second = 0;
    std::optional<double> offSince;  // when the radio was found off; empty while it is on
};

class ScanView {
  public:
    virtual ~ScanView() = default;
    virtual void Show(const ScanState& state) = 0;
    virtual void End(const ScanState& state) = 0;
};

std::unique_ptr<ScanView> MakeScanView(ScanFormat format);

}  // namespace orv
