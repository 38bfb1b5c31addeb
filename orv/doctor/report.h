#pragma once

#include <string>

#include "orv/doctor/examination.h"

namespace orv::doctor {

std::string TextReport(const Examination& run);
std::string JsonReport(const Examination& run);

}  // namespace orv::doctor
