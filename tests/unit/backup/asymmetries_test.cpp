#include "backup/asymmetries.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace tarvo_backup {

namespace {

struct Entry {
    std::string what;
    std::string remedy;
};

// The rows of the table in the operators' document.
std::vector<Entry> documentedEntries() {
    std::ifstream file(TARVO_ASYMMETRIES_DOCUMENT);
    std::vector<Entry> entries;
    for (std::string line; std::getline(file, line);) {
        const std::size_t bar = line.find(" | ");
        if (line.starts_with("| ") && bar != std::string::npos && line.ends_with(" |")) {
            entries.push_back(
                {line.substr(2, bar - 2), line.substr(bar + 3, line.size() - bar - 5)});
        }
    }
    if (!entries.empty()) {
        entries.erase(entries.begin());  // the headings
    }
    return entries;
}

}  // namespace

TEST(Asymmetries, AreThoseOfTheOperatorsDocumentInItsWords) {
    const auto documented = documentedEntries();
    const auto known = knownAsymmetries();
    ASSERT_EQ(documented.size(), known.size());
    ASSERT_FALSE(known.empty());
    for (std::size_t place = 0; place < known.size(); ++place) {
        EXPECT_TRUE(documented[place].what.starts_with("**" + std::string(known[place].what)))
            << documented[place].what;
        EXPECT_EQ(documented[place].remedy, known[place].remedy);
    }
}

}  // namespace tarvo_backup
