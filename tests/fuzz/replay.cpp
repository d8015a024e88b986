// Runs a fuzz target once with each file of the folders and files given: what the fuzzer has found
// is a test in every build.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "fuzz_device.h"

namespace {

void runWith(const std::filesystem::path& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    const std::string text = content.str();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace

int main(int argc, char** argv) {
    int runs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            runWith(entry.path());
            ++runs;
        }
    }
    std::cout << runs << " inputs" << std::endl;
    return runs > 0 ? 0 : 1;
}
