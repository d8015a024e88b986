// The compact syntax of RELAX NG, as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mapping/element.h"

namespace schema {

using Patterns = std::vector<std::string>;

std::string joined(const Patterns& parts, std::string_view separator);

// `open`, then one pattern a line, then `close`.
std::string block(std::string_view open, const Patterns& patterns, std::string_view separator,
                  std::string_view close);

// One of the patterns, on one line.
std::string oneOf(const Patterns& patterns);

// Exactly this text, and this text in any letter case.
std::string exactly(std::string_view text);
std::string inAnyCase(std::string_view text);

// A whole number. An element without a text reads as 0.
std::string number(mapping::Range range = {});

// An element on one line.
std::string leaf(std::string_view name, std::string_view content);

std::string definition(std::string_view name, std::string_view pattern);

// What both schemas begin with: `about`, a line of comment each, and the definition of a number.
std::string preamble(const Patterns& about);

}  // namespace schema
