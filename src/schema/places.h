// The places of a document where elements stand.
#pragma once

#include <string>
#include <vector>

#include "mapping/element.h"

namespace schema {

struct Place {
    std::string holder;  // the name of the element around; of an input's tuner with the type
    std::string name;    // holder and element, as meanings go by
    const mapping::Element* element;
};

// Every row of the mapping, those of one holder one after the other, in the order of the export.
const std::vector<Place>& places();

}  // namespace schema
