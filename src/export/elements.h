// How rows of tables become elements, by the rows of the mapping.
#pragma once

#include <vector>

#include "db/record.h"
#include "db/value.h"
#include "document/writer.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// The conditions that hold for one element's children.
class Conditions {
  public:
    [[nodiscard]] constexpr Conditions with(mapping::When condition, bool holds) const {
        Conditions conditions = *this;
        if (holds) {
            conditions.bits_ |= bit(condition);
        }
        return conditions;
    }
    [[nodiscard]] constexpr bool hold(mapping::When condition) const {
        return (bits_ & bit(condition)) != 0;
    }

  private:
    static constexpr unsigned bit(mapping::When condition) {
        return 1U << static_cast<unsigned>(condition);
    }
    unsigned bits_ = bit(mapping::When::always);
};

// Whether this controller exports the element, as far as its model decides it.
bool isExported(const mapping::Element& element);

// Writes an element with the text of its column, or of the code in it. `record` is a row of the
// column's table.
void writeLeaf(document::Writer& out, const mapping::Element& element, const tarvodb::Row& record);

// Whether the value is neither NULL nor the empty text.
inline bool hasText(const tarvodb::tSqlite3parent& value) { return *value.textOrEmpty() != '\0'; }

// Writes the children of one element, in the order of their rows. Leaves of the record's table are
// written here; all others, and those that are written specially, by `writeOther(element)`.
template <class WriteOther>
void writeChildren(document::Writer& out, mapping::Elements elements, const tarvodb::Row& record,
                   Conditions conditions, WriteOther writeOther) {
    for (const mapping::Element& element : elements) {
        if (!isExported(element) || !conditions.hold(element.when)) {
            continue;
        }
        if (element.constant != nullptr) {
            out.leaf(element.name, element.constant);
        } else if (element.presenceOf != nullptr) {
            out.leaf(element.name, hasText(record.value(element.presenceOf->index)) ? "1" : "0");
        } else if (element.writtenSpecially || !element.column.isOf(record.table())) {
            writeOther(element);
        } else {
            writeLeaf(out, element, record);
        }
    }
}

// As above, where all children are leaves of the record's table.
void writeLeaves(document::Writer& out, mapping::Elements elements, const tarvodb::Row& record,
                 Conditions conditions = {});

// Writes a list with one entry per record.
template <class Table>
void writeList(document::Writer& out, const mapping::Element& list,
               const std::vector<tarvodb::Record<Table>>& records) {
    const mapping::Element& entry = list.children[0];
    out.open(list.name);
    for (const auto& record : records) {
        if (entry.kind == mapping::Kind::leaf) {
            writeLeaf(out, entry, record);
        } else {
            out.open(entry.name);
            writeLeaves(out, entry.children, record);
            out.close();
        }
    }
    out.close();
}

}  // namespace tarvo_remote_control
