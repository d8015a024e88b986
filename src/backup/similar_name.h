// What a misspelt name probably means.
#pragma once

#include <string>
#include <string_view>

#include "mapping/element.h"

namespace tarvo_backup {

// What is known of a name that has no row in `parent`: "; did you mean 'lcn'?", "; it belongs into
// 'network'", or nothing. `parent` may be null.
std::string hintFor(const mapping::Element* parent, std::string_view name);

}  // namespace tarvo_backup
