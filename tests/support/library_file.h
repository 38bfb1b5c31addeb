// The file that the library under test was loaded from: the log lies beside it.
#pragma once

#include <string>

namespace orv {

std::string LibraryFile();

}  // namespace orv
