// Tables with one row for each value of an enumeration.
#pragma once

#include <cstddef>

namespace orv::log {

template <auto Key, typename Row, std::size_t Count>
constexpr bool HasEachRow(const Row (&rows)[Count]) {
    for (std::size_t value = 0; value < Count; ++value) {
        bool found = false;
        for (const Row& row : rows) {
            found = found || static_cast<std::size_t>(row.*Key) == value;
        }
        if (!found) {
            return false;
        }
    }
    return true;
}

// Returns the row whose key equals `value`. The row must exist.
template <auto Key, typename Row, std::size_t Count, typename Value>
constexpr const Row& RowOf(const Row (&rows)[Count], Value value) {
    const Row* row = rows;
    while (row->*Key != value) {
        ++row;
    }
    return *row;
}

}  // namespace orv::log
