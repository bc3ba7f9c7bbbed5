// What the details of a text report are made of.
#pragma once

#include <string>
#include <string_view>

#include "doctor/report/page.h"

namespace doctor {

/// The bytes in quotes; of long ones the beginning, and how many more there are.
std::string Shortened(std::string_view bytes);

/// Somebody's words, line by line under a line that says whose they are. Nothing where there are none.
void PutWords(Page& page, const std::string& whose, std::string words);

}  // namespace doctor
