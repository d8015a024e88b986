#include "backup/diff.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "backup/tree.h"
#include "backup/values.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

using mapping::Element;
using mapping::Kind;

namespace {

// The same place in both documents; null where one has nothing there.
struct Pair {
    const XmlNode* older = nullptr;
    const XmlNode* newer = nullptr;

    [[nodiscard]] const XmlNode& any() const { return older == nullptr ? *newer : *older; }
};

using Nodes = std::vector<const XmlNode*>;
using Keys = std::vector<std::string>;

Nodes elementsIn(const XmlNode& parent) {
    Nodes elements;
    for (const XmlNode* child = firstElement(parent); child != nullptr;
         child = nextElement(*child)) {
        elements.push_back(child);
    }
    return elements;
}

bool holdsElements(const XmlNode& node) { return firstElement(node) != nullptr; }

std::string lowerCaseName(const XmlNode& node) {
    std::string name = node.name();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

bool isList(const Element* row) { return row != nullptr && row->kind == Kind::list; }

// Documents are long and mostly alike: what is compared most often comes first here and below.
bool haveSameName(const XmlNode& a, const XmlNode& b) {
    return a.name_size() == b.name_size() && (std::memcmp(a.name(), b.name(), a.name_size()) == 0 ||
                                              document::sameText(a.name(), b.name()));
}

bool haveSameText(Pair pair) {
    const XmlNode& older = *pair.older;
    const XmlNode& newer = *pair.newer;
    if (older.value_size() != 0 && newer.value_size() != 0) {
        return older.value_size() == newer.value_size() &&
               std::memcmp(older.value(), newer.value(), older.value_size()) == 0;
    }
    return std::string_view(document::textOf(older)) == document::textOf(newer);
}

// Whether the node is seen to hold text alone, without looking at its children.
bool isPlainLeaf(const XmlNode& node) {
    return node.first_node() == nullptr ||
           (node.value_size() != 0 && node.first_node() == node.last_node());
}

// Whether the children have the same names in the same order.
bool haveSameNames(Pair parents) {
    const XmlNode* older = firstElement(*parents.older);
    const XmlNode* newer = firstElement(*parents.newer);
    while (older != nullptr && newer != nullptr && haveSameName(*older, *newer)) {
        older = nextElement(*older);
        newer = nextElement(*newer);
    }
    return older == nullptr && newer == nullptr;
}

// A key for each of some nodes; empty for one that it does not apply to.
template <class KeyOf>
Keys keysOf(const Nodes& nodes, KeyOf keyOf) {
    Keys keys;
    keys.reserve(nodes.size());
    for (std::size_t place = 0; place < nodes.size(); ++place) {
        keys.push_back(keyOf(*nodes[place], place));
    }
    return keys;
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Which nodes of one document belong to which of the other, by their places among their siblings.
class Matching {
  public:
    Matching(std::size_t older, std::size_t newer) : newerOf_(older, kNone), taken_(newer, false) {}

    // Matches what has no match yet and the same key, several of a key by order. The empty key is
    // none.
    void matchBy(const Keys& older, const Keys& newer) {
        // The places of a key are a chain through `next`.
        std::unordered_map<std::string_view, std::size_t> first;
        std::vector<std::size_t> next(newer.size(), kNone);
        first.reserve(newer.size());
        for (std::size_t place = newer.size(); place-- > 0;) {
            if (!taken_[place] && !newer[place].empty()) {
                const auto [entry, isNew] = first.try_emplace(newer[place], place);
                if (!isNew) {
                    next[place] = entry->second;
                    entry->second = place;
                }
            }
        }
        for (std::size_t place = 0; place < older.size(); ++place) {
            const auto found = newerOf_[place] == kNone ? first.find(older[place]) : first.end();
            if (found != first.end() && found->second != kNone) {
                newerOf_[place] = found->second;
                taken_[found->second] = true;
                found->second = next[found->second];
            }
        }
    }

    // Calls visit(older place, newer place) for every node: in the order of the older ones, then
    // for what only the newer document has. kNone stands for what is not there.
    template <class Visit>
    void forEach(Visit visit) const {
        for (std::size_t place = 0; place < newerOf_.size(); ++place) {
            visit(place, newerOf_[place]);
        }
        for (std::size_t place = 0; place < taken_.size(); ++place) {
            if (!taken_[place]) {
                visit(kNone, place);
            }
        }
    }

  private:
    std::vector<std::size_t> newerOf_;
    std::vector<bool> taken_;
};

Pair pairAt(const Nodes& older, std::size_t olderPlace, const Nodes& newer,
            std::size_t newerPlace) {
    return {olderPlace == kNone ? nullptr : older[olderPlace],
            newerPlace == kNone ? nullptr : newer[newerPlace]};
}

// The keys that a document has several times.
void collectDoubled(const Keys& keys, std::unordered_set<std::string_view>& doubled) {
    std::unordered_set<std::string_view> seen;
    seen.reserve(keys.size());
    for (const std::string& key : keys) {
        if (!key.empty() && !seen.insert(key).second) {
            doubled.insert(key);
        }
    }
}

// Elements may be nested deeply, and the stack be small: what is not needed while the elements
// inside are compared stays out of the frames of those that call themselves.
class Comparison {
  public:
    explicit Comparison(DiffScope scope) : scope_(scope) {}

    // `row` is the pair's own; null for an element that the import does not know.
    void compareContents(const Element* row, Pair pair) {
        if (!haveSameValue(row, pair)) {
            note(pair, document::textOf);
        }
        if (scope_.order && row != nullptr && row->orderCounts && !haveSameOrder(*row, pair)) {
            note(pair, shownText);
        }
        if (isList(row)) {
            for (const Entry& entry : entriesOf(*row, pair)) {
                const Element* entryRow = rowOf(row, entry.pair.any());
                compare(entryRow, entry.pair,
                        {.name = shownName(entryRow, entry.pair.any()),
                         .identity = &entry.identity,
                         .place = entry.place});
            }
        } else if (haveSameNames(pair)) {
            compareMembersInOrder(row, pair);
        } else {
            for (const Pair& member : membersByName(pair)) {
                compareMember(row, member);
            }
        }
    }

    void compareMember(const Element* parent, Pair pair) {
        const Element* row = rowOf(parent, pair.any());
        compare(row, pair, {.name = shownName(row, pair.any())});
    }

    [[nodiscard]] std::vector<Difference> takeDifferences() { return std::move(differences_); }

  private:
    void compare(const Element* row, Pair pair, const Step& step) {
        if (isLeftOut(row)) {
            return;
        }
        path_.push_back(step);
        if (pair.older != nullptr && pair.newer != nullptr) {
            compareContents(row, pair);
        } else {
            note(pair, shownText);
        }
        path_.pop_back();
    }

    [[gnu::noinline]] bool haveSameValue(const Element* row, Pair pair) {
        return haveSameText(pair) || canonical(row, *pair.older) == canonical(row, *pair.newer);
    }

    std::string canonical(const Element* row, const XmlNode& node) {
        return canonicalText(row, node, row == nullptr ? 0 : rfOutputModes_.at(*row, node));
    }

    [[nodiscard]] bool isLeftOut(const Element* row) const {
        return row != nullptr && row->liveState && !scope_.liveState;
    }

    [[gnu::noinline]] bool haveSameOrder(const Element& list, Pair pair) {
        const auto contents = [&](const XmlNode& parent) {
            return keysOf(elementsIn(parent), [&](const XmlNode& node, std::size_t) {
                return contentOf(rowOf(&list, node), node);
            });
        };
        return contents(*pair.older) == contents(*pair.newer);
    }

    // Children of a section or an entry belong together by name, several of a name by order.
    void compareMembersInOrder(const Element* row, Pair parents) {
        const XmlNode* newer = firstElement(*parents.newer);
        for (const XmlNode* older = firstElement(*parents.older); older != nullptr;
             older = nextElement(*older), newer = nextElement(*newer)) {
            const Pair pair{older, newer};
            // Most leaves are alike and need no more than this.
            if (!haveSameText(pair) || !isPlainLeaf(*older) || !isPlainLeaf(*newer)) {
                compareMember(row, pair);
            }
        }
    }

    [[gnu::noinline]] static std::vector<Pair> membersByName(Pair parents) {
        const Nodes older = elementsIn(*parents.older);
        const Nodes newer = elementsIn(*parents.newer);
        const auto name = [](const XmlNode& node, std::size_t) { return lowerCaseName(node); };
        Matching matching(older.size(), newer.size());
        matching.matchBy(keysOf(older, name), keysOf(newer, name));
        std::vector<Pair> members;
        members.reserve(older.size());
        matching.forEach([&](std::size_t olderPlace, std::size_t newerPlace) {
            members.push_back(pairAt(older, olderPlace, newer, newerPlace));
        });
        return members;
    }

    // An entry of a list in either document.
    struct Entry {
        Pair pair;
        std::string identity;
        std::size_t place;  // among its siblings, from 1
    };

    [[gnu::noinline]] std::vector<Entry> entriesOf(const Element& list, Pair parents) {
        const Nodes older = elementsIn(*parents.older);
        const Nodes newer = elementsIn(*parents.newer);
        const auto identity = [&](const XmlNode& node, std::size_t) {
            const Element* row = rowOf(&list, node);
            return row == nullptr ? std::string() : identityOf(*row, node);
        };
        Keys olderIdentities = keysOf(older, identity);
        Keys newerIdentities = keysOf(newer, identity);
        const Matching matching =
            matchEntries(list, older, newer, olderIdentities, newerIdentities);
        std::vector<Entry> entries;
        entries.reserve(older.size());
        matching.forEach([&](std::size_t olderPlace, std::size_t newerPlace) {
            const bool isNew = olderPlace == kNone;
            entries.push_back({.pair = pairAt(older, olderPlace, newer, newerPlace),
                               .identity = std::move(isNew ? newerIdentities[newerPlace]
                                                           : olderIdentities[olderPlace]),
                               .place = (isNew ? newerPlace : olderPlace) + 1});
        });
        return entries;
    }

    // By identity; those of a doubled one by content before. Entries that nothing identifies by
    // content, and what is left of them by order.
    Matching matchEntries(const Element& list, const Nodes& older, const Nodes& newer,
                          const Keys& olderIdentities, const Keys& newerIdentities) {
        Matching matching(older.size(), newer.size());
        std::unordered_set<std::string_view> doubled;
        collectDoubled(olderIdentities, doubled);
        collectDoubled(newerIdentities, doubled);
        const auto content = [&](const XmlNode& node) {
            return contentOf(rowOf(&list, node), node);
        };
        // By `keyOf`, among the entries with an identity that `isMeant`.
        const auto matchAmong = [&](auto isMeant, auto keyOf) {
            const auto keys = [&](const Nodes& nodes, const Keys& identities) {
                return keysOf(nodes, [&](const XmlNode& node, std::size_t place) {
                    return isMeant(identities[place]) ? keyOf(node) : std::string();
                });
            };
            matching.matchBy(keys(older, olderIdentities), keys(newer, newerIdentities));
        };
        const auto isDoubled = [&](const std::string& identity) {
            return doubled.contains(identity);
        };
        const auto isNone = [](const std::string& identity) { return identity.empty(); };
        if (!doubled.empty()) {
            matchAmong(isDoubled, content);
        }
        matching.matchBy(olderIdentities, newerIdentities);
        matchAmong(isNone, content);
        matchAmong(isNone, lowerCaseName);
        return matching;
    }

    // The same for nodes between which nothing is different.
    std::string contentOf(const Element* row, const XmlNode& node) {
        struct Child {
            std::string name;
            std::string content;
        };
        std::vector<Child> children;
        for (const XmlNode* child = firstElement(node); child != nullptr;
             child = nextElement(*child)) {
            const Element* childRow = rowOf(row, *child);
            if (!isLeftOut(childRow)) {
                children.push_back({lowerCaseName(*child), contentOf(childRow, *child)});
            }
        }
        // Children of one name keep their order, unless they are entries.
        std::stable_sort(children.begin(), children.end(),
                         [ofList = isList(row)](const Child& a, const Child& b) {
                             return ofList ? a.content < b.content : a.name < b.name;
                         });
        // Control characters keep the parts apart.
        std::string content = lowerCaseName(node) + '\1' + canonical(row, node);
        for (const Child& child : children) {
            content += '\2' + child.content + '\3';
        }
        return content;
    }

    static std::string shownText(const XmlNode& node) {
        return holdsElements(node) ? document::printed(node, document::kNoIndenting)
                                   : document::textOf(node);
    }

    template <class TextOf>
    [[gnu::noinline]] void note(Pair pair, TextOf textOf) {
        const auto textIn = [&textOf](const XmlNode* node) {
            return node == nullptr ? std::nullopt : std::optional<std::string>(textOf(*node));
        };
        differences_.push_back({.path = pathText(path_),
                                .oldText = textIn(pair.older),
                                .newText = textIn(pair.newer),
                                .holdsElements = (pair.older == nullptr || pair.newer == nullptr) &&
                                                 holdsElements(pair.any())});
    }

    DiffScope scope_;
    RfOutputModes rfOutputModes_;
    Path path_;
    std::vector<Difference> differences_;
};

}  // namespace

std::vector<Difference> diff(const Document& older, const Document& newer, DiffScope scope) {
    Comparison comparison(scope);
    const Pair configurations{older.configuration(), newer.configuration()};
    if (configurations.older != nullptr && configurations.newer != nullptr) {
        comparison.compareContents(&mapping::kConfiguration, configurations);
    }
    const Pair camLists{older.camList(), newer.camList()};
    if (camLists.older != nullptr || camLists.newer != nullptr) {
        comparison.compareMember(&mapping::kBackup, camLists);
    }
    return comparison.takeDifferences();
}

}  // namespace tarvo_backup
