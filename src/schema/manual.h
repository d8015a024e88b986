// The manual page of the documents, tarvo-config-document(5).
#pragma once

#include <string>

namespace schema {

// With the macros of man(7). @PROJECT_VERSION@ stands for the version.
std::string documentManual();

}  // namespace schema
