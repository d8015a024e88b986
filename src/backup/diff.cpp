#include "backup/diff.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <unordered_map>

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

bool haveSameText(Pair pair) {
    return std::string_view(document::textOf(*pair.older)) == document::textOf(*pair.newer);
}

// Whether the children have the same names in the same order.
bool haveSameNames(Pair parents) {
    const XmlNode* older = firstElement(*parents.older);
    const XmlNode* newer = firstElement(*parents.newer);
    while (older != nullptr && newer != nullptr &&
           document::sameText(older->name(), newer->name())) {
        older = nextElement(*older);
        newer = nextElement(*newer);
    }
    return older == nullptr && newer == nullptr;
}

template <class KeyOf>
Keys keysOf(const Nodes& nodes, KeyOf keyOf) {
    Keys keys;
    keys.reserve(nodes.size());
    for (const XmlNode* node : nodes) {
        keys.push_back(keyOf(*node));
    }
    return keys;
}

// Which nodes of one document belong to which of the other.
class Matching {
  public:
    Matching(Nodes older, Nodes newer)
        : older_(std::move(older)),
          newer_(std::move(newer)),
          matchOfOlder_(older_.size(), nullptr),
          isTaken_(newer_.size(), false) {}

    // Matches what has no match yet and the same key; several of a key by order. A node without
    // one (`keyOf` gives the empty text) is left.
    template <class KeyOf>
    void matchBy(KeyOf keyOf) {
        std::unordered_map<std::string, Waiting> waiting;
        for (std::size_t place = 0; place < newer_.size(); ++place) {
            if (!isTaken_[place]) {
                waiting[keyOf(*newer_[place])].places.push_back(place);
            }
        }
        waiting.erase("");
        for (std::size_t place = 0; place < older_.size() && !waiting.empty(); ++place) {
            if (matchOfOlder_[place] != nullptr) {
                continue;
            }
            const auto found = waiting.find(keyOf(*older_[place]));
            if (found != waiting.end() && found->second.next < found->second.places.size()) {
                const std::size_t match = found->second.places[found->second.next++];
                matchOfOlder_[place] = newer_[match];
                isTaken_[match] = true;
            }
        }
    }

    // Every node once: in the order of the older ones, then what only the newer document has.
    [[nodiscard]] std::vector<Pair> pairs() const {
        std::vector<Pair> pairs;
        for (std::size_t place = 0; place < older_.size(); ++place) {
            pairs.push_back({older_[place], matchOfOlder_[place]});
        }
        for (std::size_t place = 0; place < newer_.size(); ++place) {
            if (!isTaken_[place]) {
                pairs.push_back({nullptr, newer_[place]});
            }
        }
        return pairs;
    }

    [[nodiscard]] const Nodes& older() const { return older_; }
    [[nodiscard]] const Nodes& newer() const { return newer_; }

  private:
    struct Waiting {
        std::vector<std::size_t> places;
        std::size_t next = 0;
    };

    Nodes older_;
    Nodes newer_;
    Nodes matchOfOlder_;
    std::vector<bool> isTaken_;
};

// The identities of a list's entries.
class Identities {
  public:
    Identities(const Element& list, const Nodes& older, const Nodes& newer) : list_(list) {
        count(older);
        count(newer);
    }

    // Empty for an entry that nothing identifies.
    [[nodiscard]] const std::string& of(const XmlNode& node) const { return ofNode_.at(&node); }

    // Whether a document has several entries with the identity.
    [[nodiscard]] bool isDoubled(const XmlNode& node) const {
        return !doubled_.empty() && doubled_.contains(of(node));
    }

  private:
    void count(const Nodes& nodes) {
        std::unordered_map<std::string_view, const XmlNode*> seen;
        seen.reserve(nodes.size());
        ofNode_.reserve(ofNode_.size() + nodes.size());
        for (const XmlNode* node : nodes) {
            const Element* row = mapping::childOf(list_, node->name());
            std::string& identity = ofNode_[node];
            identity = row == nullptr ? "" : identityOf(*row, *node);
            if (!identity.empty() && !seen.emplace(identity, node).second) {
                doubled_.emplace(identity, true);
            }
        }
    }

    const Element& list_;
    std::unordered_map<const XmlNode*, std::string> ofNode_;
    std::unordered_map<std::string, bool> doubled_;
};

class Comparison {
  public:
    explicit Comparison(DiffScope scope) : scope_(scope) {}

    // `row` is the pair's own; null for an element that the import does not know.
    void compareContents(const Element* row, Pair pair) {
        if (!haveSameText(pair) &&
            canonicalText(row, *pair.older) != canonicalText(row, *pair.newer)) {
            note(pair, document::textOf);
        }
        if (isList(row)) {
            compareEntries(*row, pair);
        } else if (haveSameNames(pair)) {
            compareMembersInOrder(row, pair);
        } else {
            compareMembersByName(row, pair);
        }
    }

    void compareMember(const Element* parent, Pair pair) {
        const Element* row = rowOf(parent, pair.any());
        compare(row, pair, row == nullptr ? pair.any().name() : row->name);
    }

    [[nodiscard]] std::vector<Difference> takeDifferences() { return std::move(differences_); }

  private:
    void compare(const Element* row, Pair pair, std::string step) {
        if (isLeftOut(row)) {
            return;
        }
        path_.push_back(std::move(step));
        if (pair.older != nullptr && pair.newer != nullptr) {
            compareContents(row, pair);
        } else {
            note(pair, shownText);
        }
        path_.pop_back();
    }

    [[nodiscard]] bool isLeftOut(const Element* row) const {
        return row != nullptr && row->liveState && !scope_.liveState;
    }

    // Children of a section or an entry belong together by name, several of a name by order.
    void compareMembersInOrder(const Element* row, Pair parents) {
        const XmlNode* newer = firstElement(*parents.newer);
        for (const XmlNode* older = firstElement(*parents.older); older != nullptr;
             older = nextElement(*older), newer = nextElement(*newer)) {
            const Pair pair{older, newer};
            // Most leaves are alike and need no more than this.
            if (!haveSameText(pair) || holdsElements(*older) || holdsElements(*newer)) {
                compareMember(row, pair);
            }
        }
    }

    void compareMembersByName(const Element* row, Pair parents) {
        Matching matching(elementsIn(*parents.older), elementsIn(*parents.newer));
        matching.matchBy(lowerCaseName);
        for (const Pair& pair : matching.pairs()) {
            compareMember(row, pair);
        }
    }

    void compareEntries(const Element& list, Pair parents) {
        Matching matching(elementsIn(*parents.older), elementsIn(*parents.newer));
        const Identities identities(list, matching.older(), matching.newer());
        const auto content = [&](const XmlNode& node) {
            return contentOf(mapping::childOf(list, node.name()), node);
        };
        matching.matchBy([&](const XmlNode& node) {
            return identities.isDoubled(node) ? content(node) : std::string();
        });
        matching.matchBy([&](const XmlNode& node) { return identities.of(node); });
        const auto ifUnidentified = [&](const auto& keyOf) {
            return [&](const XmlNode& node) {
                return identities.of(node).empty() ? keyOf(node) : std::string();
            };
        };
        matching.matchBy(ifUnidentified(content));
        matching.matchBy(ifUnidentified(lowerCaseName));

        std::unordered_map<const XmlNode*, std::size_t> places;
        for (const Nodes* nodes : {&matching.older(), &matching.newer()}) {
            for (std::size_t place = 0; place < nodes->size(); ++place) {
                places.emplace((*nodes)[place], place + 1);
            }
        }
        for (const Pair& pair : matching.pairs()) {
            const XmlNode& node = pair.any();
            const Element* row = mapping::childOf(list, node.name());
            const std::string& identity = identities.of(node);
            compare(row, pair,
                    std::string(row == nullptr ? node.name() : row->name) + "[" +
                        (identity.empty() ? std::to_string(places.at(&node)) : identity) + "]");
        }
    }

    // The same for nodes between which nothing is different.
    [[nodiscard]] std::string contentOf(const Element* row, const XmlNode& node) const {
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
        std::string content = lowerCaseName(node) + '\1' + canonicalText(row, node);
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
    void note(Pair pair, TextOf textOf) {
        const auto text = [&textOf](const XmlNode* node) {
            return node == nullptr ? std::nullopt : std::optional<std::string>(textOf(*node));
        };
        std::string path;
        for (const std::string& step : path_) {
            path += (path.empty() ? "" : "/") + step;
        }
        differences_.push_back({.path = path,
                                .oldText = text(pair.older),
                                .newText = text(pair.newer),
                                .holdsElements = (pair.older == nullptr || pair.newer == nullptr) &&
                                                 holdsElements(pair.any())});
    }

    DiffScope scope_;
    std::vector<std::string> path_;
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
