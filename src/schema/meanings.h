// What the elements of a document mean, for its readers. All else about them stands in mapping/.
#pragma once

#include <string_view>
#include <vector>

namespace schema {

struct Meaning {
    std::string_view place;  // as Place::name; without the type of input where tuners do not differ
    std::string_view text;   // with the unit of a number
};

extern const std::vector<Meaning> kMeanings;

// The meaning of the element at a place. Throws std::out_of_range when there is none.
const Meaning& meaningOf(std::string_view place);

}  // namespace schema
