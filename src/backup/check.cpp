#include "backup/check.h"

#include <map>
#include <set>
#include <string_view>

#include "backup/findings.h"
#include "backup/forms.h"
#include "backup/leaf_check.h"
#include "backup/references_check.h"
#include "backup/similar_name.h"
#include "backup/text_check.h"
#include "backup/values.h"
#include "document/input_type.h"
#include "import/module_binding.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

using document::childrenOf;
using document::numberOf;
using document::textOf;
using mapping::Element;
using mapping::Kind;

namespace {

// Whether the entries become rows that are found by their id, which is their first element.
bool isKeyedById(const Element& entry) {
    return !entry.children.empty() && isRowIdElement(entry.children[0]);
}

class TreeCheck {
  public:
    TreeCheck(const Document& document, Findings& findings)
        : document_(document), findings_(findings), walk_(findings) {}

    void run() {
        const XmlNode* configuration = document_.configuration();
        if (configuration == nullptr) {
            findings_.add(Severity::error, 0, "no 'configuration' element");
            return;
        }
        if (document_.isRedacted()) {
            findings_.add(Severity::error, 0, "secrets are masked; no import takes this document");
        }
        checkOutermost();
        checkMembers(mapping::kConfiguration, *configuration);
        checkReferences(*configuration, findings_);
    }

  private:
    // --- Places ------------------------------------------------------------------------------

    // Inside what the import does not read, nothing is worse than a warning.
    [[nodiscard]] Severity error() const { return isRead_ ? Severity::error : Severity::warning; }
    void add(Severity severity, const XmlNode& node, const std::string& message) {
        walk_.add(severity, node, message);
    }

    template <class Check>
    void within(const Step& step, Check check) {
        walk_.within(step, check);
    }

    template <class Check>
    void unread(bool isUnread, Check check) {
        const bool before = isRead_;
        isRead_ = isRead_ && !isUnread;
        check();
        isRead_ = before;
    }

    // --- The frame -----------------------------------------------------------------------------

    void checkOutermost() {
        const XmlNode* backup = document_.backup();
        const XmlNode* outermost = backup == nullptr ? document_.configuration() : backup;
        for (const XmlNode& node : childrenOf(*outermost->parent())) {
            if (&node != backup && &node != document_.configuration()) {
                noteUnknown(nullptr, node);
            }
        }
        if (backup == nullptr) {
            return;
        }
        for (const XmlNode& node : childrenOf(*backup)) {
            if (&node == document_.camList()) {
                const Element& list = *rowOf(&mapping::kBackup, node);
                within({.name = list.name}, [&] { checkEntries(list, node); });
            } else if (&node != document_.configuration()) {
                noteUnknown(nullptr, node);
            }
        }
    }

    void noteUnknown(const Element* parent, const XmlNode& node) {
        if (!isElement(node)) {
            add(Severity::warning, node, "text between elements");
            return;
        }
        within({.name = node.name()}, [&] {
            add(Severity::warning, node, "unknown element" + hintFor(parent, node.name()));
        });
    }

    // --- Sections and entries --------------------------------------------------------------------

    void checkMembers(const Element& parent, const XmlNode& node) {
        const XmlNode* type = inputTypeIn(parent, node);
        LeafContext context{.isLoopRead = type != nullptr && isLoopReadIn(node, *type)};
        const LastLists lastLists = lastListsIn(parent, node);
        std::set<const Element*> seen;
        for (const XmlNode& child : childrenOf(node)) {
            const Element* row = isElement(child) ? memberRow(parent, type, child) : nullptr;
            if (row == nullptr) {
                checkStranger(parent, type, child);
                continue;
            }
            within({.name = row->name}, [&] {
                context.isFirst = seen.insert(row).second;
                if (!context.isFirst && row->kind == Kind::leaf && !row->perRow) {
                    add(Severity::warning, child, "given twice");
                }
                const auto last = lastLists.find(row);
                const bool isReplaced = last != lastLists.end() && last->second != &child;
                unread(row->liveState || isReplaced,
                       [&] { checkMember(parent, *row, child, context); });
            });
        }
        checkMissing(parent, node);
    }

    // The lists that stand in for earlier ones of the same entry. Sections are read one after the
    // other, the lists of modules too.
    using LastLists = std::map<const Element*, const XmlNode*>;

    static LastLists lastListsIn(const Element& parent, const XmlNode& node) {
        LastLists lists;
        if (!isNamed(parent, "serviceEPG") && !isNamed(parent, "service")) {
            return lists;
        }
        for (const XmlNode& child : childrenOf(node)) {
            const Element* row = rowOf(&parent, child);
            if (row != nullptr && row->kind == Kind::list) {
                lists[row] = &child;
            }
        }
        return lists;
    }

    void checkMember(const Element& parent, const Element& row, const XmlNode& node,
                     LeafContext context) {
        switch (row.kind) {
            case Kind::leaf:
                context.error = error();
                context.rfOutputMode = rfOutputModes_.at(row, node);
                checkLeaf(parent, row, node, context, walk_);
                break;
            case Kind::section:
            case Kind::entry:
                checkMembers(row, node);
                break;
            case Kind::list:
                checkEntries(row, node);
                break;
        }
        if (isNamed(row, "dvbNetwork")) {
            checkPattern(node);
        }
    }

    // The child that says which child tables are meant, if it is there itself.
    static const XmlNode* inputTypeIn(const Element& parent, const XmlNode& node) {
        const Element* row = mapping::inputTypeOf(parent);
        return row == nullptr ? nullptr : document::childNamed(node, row->name);
    }

    // Input 1 feeds the loop, and only a satellite input is sure to have a satellite tuner.
    static bool isLoopReadIn(const XmlNode& input, const XmlNode& type) {
        const XmlNode* id = document::childNamed(input, "inputId");
        return id != nullptr && numberOf(*id) == 2 &&
               numberOf(type) == static_cast<int>(document::InputType::satellite);
    }

    // Of an input only what its type has counts, but for what all of them have.
    static const Element* memberRow(const Element& parent, const XmlNode* type,
                                    const XmlNode& child) {
        for (const Element& row : parent.children) {
            if (document::hasName(child, row.name)) {
                return &row;
            }
        }
        for (const mapping::ChildTable& table : parent.childTables) {
            const bool isMeant =
                !table.inputType ||
                (type != nullptr && static_cast<int>(*table.inputType) == numberOf(*type));
            for (const Element& row : table.rows) {
                if (isMeant && document::hasName(child, row.name)) {
                    return &row;
                }
            }
        }
        return nullptr;
    }

    void checkStranger(const Element& parent, const XmlNode* type, const XmlNode& child) {
        if (!isElement(child) || rowOf(&parent, child) == nullptr) {
            noteUnknown(&parent, child);
        } else if (type != nullptr) {
            within({.name = rowOf(&parent, child)->name}, [&] {
                add(Severity::warning, child, "an input of this type has no such element");
            });
        }
    }

    void checkMissing(const Element& parent, const XmlNode& node) {
        for (const Element& row : parent.children) {
            if (row.required.missing != nullptr &&
                document::childNamed(node, row.name) == nullptr) {
                add(error(), node, "has no " + inQuotes(row.name));
            }
        }
    }

    // --- Lists ---------------------------------------------------------------------------------

    void checkEntries(const Element& list, const XmlNode& node) {
        const Element& entry = list.children[0];
        std::set<std::string> identities;
        std::set<long long> rowIds;
        std::size_t place = 0;
        for (const XmlNode& child : childrenOf(node)) {
            place += isElement(child) ? 1U : 0U;
            if (!document::hasName(child, entry.name)) {
                noteWrongEntry(list, entry, child);
                continue;
            }
            const std::string identity = identityOf(entry, child);
            within({.name = entry.name, .identity = &identity, .place = place}, [&] {
                checkMember(list, entry, child, {});
                if (isKeyedById(entry)) {
                    checkRowId(entry, child, rowIds);
                } else if (!identity.empty() && !identities.insert(identity).second) {
                    add(Severity::warning, child, kDoubled);
                }
            });
        }
        if (isNamed(list, "modules")) {
            checkBindings(entry, node);
        }
    }

    static constexpr const char* kDoubled = "is there twice, by what identifies it";

    void noteWrongEntry(const Element& list, const Element& entry, const XmlNode& child) {
        const Severity severity = list.skipsOthers ? Severity::warning : error();
        if (!isElement(child)) {
            add(severity, child, "text between elements");
            return;
        }
        within({.name = child.name()}, [&] {
            add(severity, child,
                "only " + inQuotes(entry.name) + " may be here" + hintFor(&list, child.name()));
        });
    }

    // SQLite takes nothing but a number for a row's id, and each only once. As a pattern an id may
    // find a row that is there.
    void checkRowId(const Element& entry, const XmlNode& node, std::set<long long>& rowIds) {
        const char* name = entry.children[0].name;
        const XmlNode* id = document::lastChildNamed(node, name);
        if (id == nullptr) {
            return;
        }
        const std::string_view text = textOf(*id);
        const auto rowId = rowIdOf(textOf(*id));
        if (!rowId) {
            within({.name = name}, [&] {
                add(isRowIdPattern(text) ? Severity::warning : error(), *id,
                    inQuotes(text) + " is no number");
            });
        } else if (!rowIds.insert(*rowId).second) {
            add(error(), node, kDoubled);
        }
    }

    // With fewer `mac` elements than modules a document fits no headend but an RNB-K408's.
    void checkBindings(const Element& entry, const XmlNode& modules) {
        std::size_t count = 0;
        std::size_t macs = 0;
        bool fitsRnb = true;
        std::set<std::string> addresses;
        for (const XmlNode& module : childrenOf(modules)) {
            if (document::hasName(module, entry.name)) {
                ++count;
                macs += tarvo_remote_control::readModuleEntry(module, true).macElements;
                fitsRnb = mayBeOfRnb(module, addresses) && fitsRnb;
            }
        }
        if (modules.first_node() == nullptr) {
            add(Severity::warning, modules, "holds no module, which only an RNB-K408 takes");
        }
        const Severity severity = macs < count && !fitsRnb ? error() : Severity::warning;
        std::size_t place = 0;
        for (const XmlNode& module : childrenOf(modules)) {
            if (!isElement(module)) {
                continue;
            }
            ++place;
            if (document::hasName(module, entry.name) &&
                document::childNamed(module, "mac") == nullptr) {
                const std::string none;
                within({.name = entry.name, .identity = &none, .place = place},
                       [&] { add(severity, module, "has no 'mac'"); });
            }
        }
    }

    // There modules are of no kind, which an element must not tell otherwise as far as it is read.
    // Of the first one with an address, if there is a module with it, the master flag does not
    // count.
    static bool mayBeOfRnb(const XmlNode& module, std::set<std::string>& addresses) {
        const auto entry = tarvo_remote_control::readModuleEntry(module, false);
        const bool isFirst = !entry.mac.empty() && addresses.insert(entry.mac).second;
        return entry.kind.family.empty() && entry.kind.model.empty() &&
               (entry.kind.master.empty() || isFirst);
    }

    void checkPattern(const XmlNode& network) {
        mapping::NitPattern pattern;
        for (const XmlNode& child : childrenOf(network)) {
            const Element* row = mapping::elementOf(mapping::kDvbNetwork, child);
            if (row != nullptr && !pattern.allows(*row, numberOf(child))) {
                notePattern(child, row == &mapping::kNitPattern
                                       ? "without a 'tipoNITPatron' before it it must be 0 or 1"
                                       : "without a 'nitPatron' before it it must be 0");
            }
        }
    }

    void notePattern(const XmlNode& node, const char* rule) {
        within({.name = node.name()},
               [&] { add(error(), node, inQuotes(textOf(node)) + " is not allowed; " + rule); });
    }

    const Document& document_;
    Findings& findings_;
    Walk walk_;
    RfOutputModes rfOutputModes_;
    bool isRead_ = true;
};

}  // namespace

std::vector<Finding> check(const Document& document) {
    Findings findings(document);
    checkText(document.text(), findings);
    TreeCheck(document, findings).run();
    return std::move(findings).byPosition();
}

}  // namespace tarvo_backup
