// What is known of an element of the document, for both ways: one row says which column it stands
// for, which controllers export it, what the import does with it, and what it holds. The rows of
// all elements form the tree of the document (mapping/document_tree.h).
//
// Export writes the rows in their order. Import looks them up by name, whatever the document's
// order, and skips or refuses what has no row, as its parent says.
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "db/table.h"
#include "document/coded_texts.h"
#include "document/input_type.h"
#include "document/xml.h"

namespace mapping {

// A column of any table. `Column` is made from a table's enumerator: `NimGlobal::fe`.
struct Column {
    static constexpr std::size_t kNone = SIZE_MAX;

    const tarvodb::TableInfo* table = nullptr;
    std::size_t index = kNone;

    constexpr Column() = default;
    template <class Enumerator>
    requires std::is_enum_v<Enumerator>
    constexpr Column(Enumerator column)  // NOLINT(google-explicit-constructor): rows read plainly
        : table(&tableOf(column)), index(static_cast<std::size_t>(column)) {}

    // Not by the table: where pointers are instrumented, the compiler does not know a global's
    // address from null.
    [[nodiscard]] constexpr bool exists() const { return index != kNone; }
    [[nodiscard]] constexpr bool isOf(const tarvodb::TableInfo& other) const {
        return table == &other;
    }
};

enum class Kind : unsigned char {
    leaf,
    section,  // holds one element of each of its rows, at most
    list,     // holds any number of the one element that its row describes
    entry,    // an element of a list, unless it is a leaf itself
};

// The controllers that export an element. The import takes every element on every controller.
enum class ExportedBy : unsigned char {
    all,
    rnb,
    exceptRnb,
    familyA,
    familyAOrLmv,
    familyAOrWvxa,
    exceptWvxb,
};

// What else must hold for an element to be exported.
enum class When : unsigned char {
    always,
    moduleDescrambles,   // the module descrambles services (mapping/module_family.h)
    moduleReportsCam,    // the module reports its conditional-access module
    noDiseqcPosition,    // the satellite tuner has no DiSEqC position
    secondTuner,         // the tuner's number on its module is above 1
    fileExists,          // the file that it describes exists
    publicKeysAskedFor,  // of a list of conditional-access modules; a full list has them too
    fullList,            // the list is the one of a backup
};

// How the import takes an element's text.
enum class Take : unsigned char {
    text,              // compared and stored as text
    number,            // "05" is 5; the decimal number is stored
    numberStoredText,  // compared as a number; the text is stored as it stands
    numberUnlessZero,  // as number, but 0 counts as not given
    code,              // one of the texts, in any letter case
    codeExactly,       // one of the texts
    codeOrNumber,      // one of the texts, or a number
    bits,              // the bits that its children give; the others stay
    key,               // finds the row; a new row gets it as it stands
    special,           // as the section's handler says
    children,          // its children say
    ignored,
};

// What the text stands for. Import need not insist on it.
enum class Form : unsigned char {
    number,  // unless there is a code table
    text,
    onOff,    // 1 or 0
    address,  // dotted IPv4
    code,
    codeOrNumber,
    none,  // no text
};

// What must be done on the device when a setting has got another value.
enum class PostAction : int {
    none = 0,
    network = 1,
    remoteControl = 2,
    scramblingKeys = 3,
    regional = 4
};

// Numbers from `lowest` to `highest`, both included.
struct Range {
    int lowest = INT_MIN;
    int highest = INT_MAX;

    [[nodiscard]] constexpr bool contains(int number) const {
        return number >= lowest && number <= highest;
    }
    [[nodiscard]] constexpr bool isLimited() const {
        return lowest != INT_MIN || highest != INT_MAX;
    }
};

inline constexpr Range kBinary{0, 1};
// Identifiers of DVB, and channel numbers.
inline constexpr Range kIdentifier{1, 65535};

// What the import says of an element that must be there, in this range.
struct Requirement {
    const char* missing = nullptr;  // null: the element may be missing
    Range range = {};
    const char* outOfRange = "";
    const char* outOfRangeDebugLine = nullptr;  // the debug log's own line, if it has one
};

// Bits in which the device reports a state.
struct StateBits {
    Column enabledBy = {};  // there is a state where this column is 1
    int valid = 0;          // and this bit is set
    int error = 0;          // then set for an error, code 1
};

// A file among those of the SI tables.
struct SiTable {
    const char* file = nullptr;
    // The headend's own, one for each network: the file's name ends with the network's identifier.
    bool ofNetwork = false;
};

struct Element;
struct ChildTable;

// A view of rows that stand in an array.
template <class Item>
class Rows {
  public:
    constexpr Rows() = default;
    template <std::size_t Size>
    constexpr Rows(const Item (&rows)[Size])  // NOLINT(google-explicit-constructor): as std::span
        : first_(rows), size_(Size) {}

    [[nodiscard]] constexpr const Item* begin() const { return first_; }
    [[nodiscard]] constexpr const Item* end() const { return first_ + size_; }
    [[nodiscard]] constexpr std::size_t size() const { return size_; }
    [[nodiscard]] constexpr bool empty() const { return size_ == 0; }
    constexpr const Item& operator[](std::size_t index) const { return first_[index]; }

  private:
    const Item* first_ = nullptr;
    std::size_t size_ = 0;
};

using Elements = Rows<Element>;
using ChildTables = Rows<ChildTable>;

// Not every section obeys every member of its rows: which ones say something to its import is in
// mapping/obeyed.cpp, where the compiler refuses a row that says more.
struct Element {
    const char* name;

    // The column that it stands for. None: it has no column of its own, or several.
    Column column = {};
    Take take = Take::text;
    // Of the import's log; null: it does not appear there.
    const char* label = nullptr;
    document::CodeTable texts = {};
    // Exported for a code that `texts` does not have.
    const char* otherwise = "";
    // Exported where the device does not know the value; null: it always does.
    const char* unknown = nullptr;
    // Where export and import disagree: the texts that the import takes.
    document::CodeTable importedTexts = {};
    // Instead of `texts` on a module whose RF output mode is not 0 (DVB-C).
    document::CodeTable dvbCTexts = {};
    // A text that is not in the table is imported as code 1. Otherwise it is refused.
    bool otherTextsAreOne = false;
    // The error of a refused text is recorded as one of an output, but logged as one of an input.
    bool refusedAsOutput = false;
    Form form = Form::number;

    ExportedBy exportedBy = ExportedBy::all;
    When when = When::always;
    // Exported whatever the tables hold.
    const char* constant = nullptr;
    // Exported as 1 when this column has a text, as 0 when it has none.
    const Column* presenceOf = nullptr;
    // On RNB-K408 exported with this in front of it, unless it is empty.
    const char* rnbPrefix = nullptr;
    // Exported as 1 for any number above 0, as 0 for the others.
    bool exportedAsOnOff = false;
    // Exported as the section's writer says: more than a column's text.
    bool writtenSpecially = false;
    // Once for each row of its table, instead of exactly once.
    bool perRow = false;
    // What the device reports of itself, not what it is set to.
    bool liveState = false;
    // Not to be shown to everybody.
    bool secret = false;
    // Where the device reports a live state, if the row says so.
    const StateBits* stateBits = nullptr;
    const SiTable* siTable = nullptr;

    // The import refuses numbers outside.
    Range range = {};
    // The import refuses a number below this, unless it is stored already.
    int lowestOfOther = INT_MIN;
    Requirement required = {};
    // Emptied on import when this column gets another value: it is derived from it.
    Column derived = {};

    // A setting: the row of configuracionWebGlobal with this `nombre`.
    const char* key = nullptr;
    PostAction postAction = PostAction::none;
    // A bit of the parent's column.
    int bit = 0;

    Kind kind = Kind::leaf;
    // Tells its entry from the others of the list, with the other identities of the entry. A leaf
    // that is an entry itself identifies itself.
    bool identity = false;
    // Its number is the document::InputType that says which of its parent's child tables are meant.
    bool isInputType = false;
    // A list whose other elements the import skips. Other lists hold their entries and nothing
    // else.
    bool skipsOthers = false;
    // A list whose entries are in an order that says something.
    bool orderCounts = false;
    Elements children = {};
    ChildTables childTables = {};
};

// Further children of an element, once for each row of another table that belongs to it.
struct ChildTable {
    Elements rows;
    const tarvodb::TableInfo* table;
    // Only in an element of this type.
    std::optional<document::InputType> inputType = {};
};

// Elements that hold others.
constexpr Element section(const char* name, Elements children,
                          ExportedBy exportedBy = ExportedBy::all) {
    return {.name = name,
            .take = Take::children,
            .exportedBy = exportedBy,
            .kind = Kind::section,
            .children = children};
}
constexpr Element list(const char* name, Elements entry, ExportedBy exportedBy = ExportedBy::all) {
    return {.name = name,
            .take = Take::children,
            .exportedBy = exportedBy,
            .kind = Kind::list,
            .children = entry};
}
constexpr Element entry(const char* name, Elements children, ChildTables childTables = {}) {
    return {.name = name,
            .take = Take::children,
            .kind = Kind::entry,
            .children = children,
            .childTables = childTables};
}

constexpr Element ordered(Element list) {
    list.orderCounts = true;
    return list;
}

constexpr Element secret(Element element) {
    element.secret = true;
    return element;
}

// Whether controllers of this model export the element, as far as the model decides it.
bool isExportedBy(ExportedBy exportedBy, std::string_view model);

// The form, worked out from code table and children where the row leaves it open.
Form formOf(const Element& element);

// The numbers that the import lets pass.
Range importedRange(const Element& element);

// The texts that the export writes and the import takes for codes. `rfOutputMode` is the module's,
// for an element of an output.
document::CodeTable exportedTexts(const Element& element, int rfOutputMode = 0);
document::CodeTable importedTexts(const Element& element, int rfOutputMode = 0);

// Whether the element is a setting or holds nothing but settings.
constexpr bool isOfSettings(const Element& element) {
    return element.key != nullptr ||
           (!element.children.empty() && isOfSettings(element.children[0]));
}

// The row that names the node, without regard to letter case; null when there is none.
const Element* elementOf(Elements rows, const document::XmlNode& node);

// As elementOf, among the rows of one table.
const Element* elementOf(Elements rows, const document::XmlNode& node,
                         const tarvodb::TableInfo& table);

constexpr bool isNamed(const Element& element, std::string_view name) {
    return element.name == name;
}

// The row with exactly this `name`, of elements or of any other rows that name elements. It must be
// there; in a constant expression the compiler sees to it.
template <class AnyRows>
constexpr const auto& rowNamed(const AnyRows& rows, std::string_view name) {
    // Not a loop that returns: with a throw after it g++ 10 finds no constant.
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [name](const auto& each) { return each.name == name; });
    if (row == std::end(rows)) {
        throw std::out_of_range("no row of that name");
    }
    return *row;
}

// Whether every one of `rows` names one of the elements.
template <class AnyRows>
constexpr bool nameOnly(const AnyRows& rows, Elements elements) {
    return std::all_of(std::begin(rows), std::end(rows), [elements](const auto& each) {
        return std::any_of(elements.begin(), elements.end(),
                           [&each](const Element& element) { return isNamed(element, each.name); });
    });
}

// Whether `rows` name the elements that `isMeant(element)`, each of them once, and no others.
template <class AnyRows, class IsMeant>
constexpr bool nameExactly(const AnyRows& rows, Elements elements, IsMeant isMeant) {
    return nameOnly(rows, elements) &&
           std::all_of(elements.begin(), elements.end(), [&](const Element& element) {
               const auto count =
                   std::count_if(std::begin(rows), std::end(rows),
                                 [&](const auto& each) { return isNamed(element, each.name); });
               return count == (isMeant(element) ? 1 : 0);
           });
}

// Visits the rows of all children, those of the child tables last.
template <class Visit>
constexpr void forEachChild(const Element& parent, Visit visit) {
    for (const Element& child : parent.children) {
        visit(child);
    }
    for (const ChildTable& table : parent.childTables) {
        for (const Element& child : table.rows) {
            visit(child);
        }
    }
}

// The row of the child that says which child tables are meant; null when all are.
const Element* inputTypeOf(const Element& parent);

// The row of a child, in `children` or in any of the child tables, without regard to letter case;
// null when the element holds no such child.
const Element* childOf(const Element& parent, std::string_view name);

}  // namespace mapping
