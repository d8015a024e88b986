// A schema of the documents that the export writes.
#pragma once

#include <string>

namespace schema {

// In the compact syntax of RELAX NG.
std::string exportSchema();

}  // namespace schema
