// How deep elements may stand in each other.
#pragma once

#include <optional>
#include <string>

namespace document {

// The XML library calls itself for every level. The deepest document that the program makes has
// ten.
inline constexpr std::size_t kMaxLevels = 256;

// Where the first element begins that has more than `levels` - 1 others around it, as an offset in
// `text`. Nothing when there is none, which says nothing else about the text: what is malformed is
// left to the XML library, whose reading of comments, CDATA sections, processing instructions,
// document types and attributes this follows to the letter.
std::optional<std::size_t> firstElementBelow(const std::string& text, std::size_t levels);

}  // namespace document
