#pragma once

#include <atomic>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "orv/transfer/input.h"

namespace orv {

class Source {
  public:
    // `name` is a path, or "-" for the standard input. Throws a Problem if the file cannot be read,
    // or is neither a file nor a pipe.
    explicit Source(const std::string& name);

    // Returns the size that a file had when it was opened, or nothing for a pipe.
    std::optional<std::uint64_t> Size() const { return size; }

    // Returns the next `most` bytes, fewer at the end, none after the end or an interrupt. They are
    // valid until the next call. Throws a Problem if reading fails.
    std::string_view Next(std::size_t most);

  private:
    // Shared with the reading thread.
    struct File {
        std::ifstream stream;
        std::atomic<bool> isBroken = false;
    };

    std::string name;
    std::optional<std::uint64_t> size;
    std::shared_ptr<File> file = std::make_shared<File>();
    std::optional<Input> input;
    std::string pending;  // bytes that were read; Next has returned `taken` of them
    std::size_t taken = 0;
    bool hasEnded = false;
};

}  // namespace orv
