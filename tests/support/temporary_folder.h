// A folder that is gone after the test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace test {

class InTemporaryFolder : public testing::Test {
  protected:
    InTemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvo-test-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    ~InTemporaryFolder() override { std::filesystem::remove_all(folder_); }

    [[nodiscard]] std::string path(const std::string& name) const { return folder_ / name; }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            found.push_back(entry.path().filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

  private:
    std::filesystem::path folder_;
};

}  // namespace test
