// The simulated device that the fault loops run on: its databases and files, made small, brought
// back to what they were, and compared.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace faults {

// All rows of a database, as one text. Throws std::runtime_error when it is damaged.
std::string rowsOf(const std::string& database);

void execute(const std::string& database, const std::string& sql);

// Nothing when there is no such file.
std::optional<std::string> contentOf(const std::string& path);

// The content of every file of the folders that the program writes to; nothing else may be there.
class Files {
  public:
    static Files ofDevice();

    // Makes the device's folders hold these files and nothing else.
    void restore() const;

    // The files of `later` that are not among these.
    [[nodiscard]] std::vector<std::string> strangersIn(const Files& later) const;

    [[nodiscard]] bool same(const Files& other, const std::string& path) const;

  private:
    std::map<std::string, std::string> contents_;
};

// Leaves one module of the headend, and little else.
void makeSmall();

}  // namespace faults
