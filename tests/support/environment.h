// How much a test that draws by lot does, and with which seed: what the environment asks for.
#pragma once

#include <cstdlib>

namespace test {

inline unsigned long fromEnvironment(const char* name, unsigned long otherwise) {
    const char* text = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
    return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

}  // namespace test
