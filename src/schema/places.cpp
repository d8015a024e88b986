#include "schema/places.h"

#include <set>

#include "document/input_type.h"
#include "mapping/document_tree.h"

namespace schema {

using mapping::Element;

namespace {

std::string typeName(document::InputType type) {
    switch (type) {
        case document::InputType::satellite:
            return "satellite ";
        case document::InputType::terrestrial:
            return "terrestrial ";
        case document::InputType::cable:
            return "cable ";
    }
    return "";
}

class Walk {
  public:
    void into(const Element& holder) {
        if (!seen_.insert(holder.children.begin()).second) {
            return;  // what the tuners of all types hold
        }
        add(holder.name, holder.children);
        for (const mapping::ChildTable& table : holder.childTables) {
            add((table.inputType ? typeName(*table.inputType) : "") + holder.name, table.rows);
        }
        mapping::forEachChild(holder, [this](const Element& child) {
            if (child.kind != mapping::Kind::leaf) {
                into(child);
            }
        });
    }

    std::vector<Place> found;

  private:
    void add(const std::string& holder, mapping::Elements rows) {
        for (const Element& row : rows) {
            found.push_back({.holder = holder, .name = holder + "/" + row.name, .element = &row});
        }
    }

    std::set<const Element*> seen_;
};

}  // namespace

const std::vector<Place>& places() {
    static const std::vector<Place> kPlaces = [] {
        Walk walk;
        walk.into(mapping::kBackup);
        return walk.found;
    }();
    return kPlaces;
}

}  // namespace schema
