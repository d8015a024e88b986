// A schema of the documents that the import takes.
#pragma once

#include <string>
#include <vector>

namespace schema {

// In the compact syntax of RELAX NG.
std::string importSchema();

// What the import takes and the schema refuses, each with the reason.
const std::vector<std::string>& refusedAlthoughTaken();

}  // namespace schema
