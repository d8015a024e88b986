// Where elements stand in a text, and how deep in each other.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace document {

// The XML library calls itself for every level. The deepest document that the program makes has
// ten.
inline constexpr std::size_t kMaxLevels = 256;

// Where the first element begins that has more than `levels` - 1 others around it, as an offset in
// `text`. Nothing when there is none, which says nothing else about the text: what is malformed is
// left to the XML library, whose reading of comments, CDATA sections, processing instructions,
// document types and attributes this follows to the letter.
std::optional<std::size_t> firstElementBelow(const std::string& text, std::size_t levels);

// A part of a text, from `begin` up to `end`.
struct Extent {
    std::size_t begin;
    std::size_t end;
};

// The names of elements that stand in each other, without regard to letter case.
using ElementPath = std::vector<std::string_view>;

// The contents of the elements at the end of the path, wherever it begins. What is malformed is
// left to the XML library here too: in what it accepts these are the contents that it finds.
std::vector<Extent> contentsAt(const std::string& text, const ElementPath& path);

}  // namespace document
