#include "backup/similar_name.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <vector>

#include "mapping/document_tree.h"

namespace tarvo_backup {

using mapping::Element;

namespace {

// How many letters must be put in, left out or replaced to make one of the other.
std::size_t distance(std::string_view a, std::string_view b) {
    const auto same = [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    };
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (same(static_cast<unsigned char>(a[i - 1]),
                                                          static_cast<unsigned char>(b[j - 1]))
                                                         ? 0U
                                                         : 1U);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

// The element below `root` that holds one of this name; null when there is none.
const Element* holderOf(const Element& root, std::string_view name) {
    if (mapping::childOf(root, name) != nullptr) {
        return &root;
    }
    const Element* holder = nullptr;
    mapping::forEachChild(root, [&](const Element& row) {
        if (holder == nullptr) {
            holder = holderOf(row, name);
        }
    });
    return holder;
}

// Names beyond this are not slips of the pen, and need not be compared.
constexpr std::size_t kLongestName = 40;

}  // namespace

std::string hintFor(const Element* parent, std::string_view name) {
    if (name.size() > kLongestName) {
        return "";
    }
    if (const Element* holder = holderOf(mapping::kBackup, name)) {
        return std::string("; it belongs into '") + holder->name + "'";
    }
    const char* nearest = nullptr;
    std::size_t least = std::max<std::size_t>(name.size() / 3, 1) + 1;
    if (parent != nullptr) {
        mapping::forEachChild(*parent, [&](const Element& row) {
            if (const std::size_t found = distance(name, row.name); found < least) {
                least = found;
                nearest = row.name;
            }
        });
    }
    return nearest == nullptr ? "" : std::string("; did you mean '") + nearest + "'?";
}

}  // namespace tarvo_backup
