// What the import and the export of a section obey of its rows. A row can say more than its section
// reads: it would promise what nobody does. Of what the import reads all is looked at; of what the
// export reads `when`, and in settings that they are plain. The rest (`unknown`, `stateBits`,
// `siTable`, `writtenSpecially`, `perRow`, ...) is for the writer of the section to obey.
#pragma once

#include <algorithm>
#include <climits>
#include <concepts>
#include <iterator>
#include <optional>
#include <string_view>

#include "mapping/element.h"

namespace mapping {

// A set of values of one enumeration.
template <class Enumeration>
class SetOf {
  public:
    template <std::same_as<Enumeration>... Each>
    constexpr SetOf(Each... each)  // NOLINT(google-explicit-constructor): a value is a set of one
        : bits_((bit(each) | ... | 0U)) {}

    [[nodiscard]] constexpr bool has(Enumeration value) const { return (bits_ & bit(value)) != 0; }
    [[nodiscard]] constexpr SetOf with(SetOf others) const {
        SetOf both = *this;
        both.bits_ |= others.bits_;
        return both;
    }

  private:
    static constexpr unsigned bit(Enumeration value) { return 1U << static_cast<unsigned>(value); }

    unsigned bits_;
};

using Takes = SetOf<Take>;

struct Obeyed {
    // The ways to take an element that the import knows here, and the members that it obeys of
    // elements that it takes so.
    Takes takes;
    Takes labels = {};
    Takes ranges = {};
    Takes lowestOfOther = {};
    Takes derived = {};
    // A text without a code is refused; where it is not, `otherTextsAreOne` has to be set.
    Takes refusedCodes = {};
    Takes dvbCTexts = {};
    bool otherTextsAreOne = false;
    bool refusedAsOutput = false;
    // The one range that the import's error tells of, whatever the row says.
    std::optional<Range> toldRange = {};
    // The elements that must be there, and whether that is so in a range only.
    Rows<std::string_view> required = {};
    bool requiredRanges = false;
    // All leaves are settings, and no others.
    bool settings = false;
    // The conditions that the export knows here.
    SetOf<When> conditions = {};
};

namespace obeyed_detail {

constexpr bool isTaken(const Element& row, const Obeyed& by) {
    const bool needsCode = row.take == Take::code || row.take == Take::codeExactly;
    return by.takes.has(row.take) &&
           (row.otherTextsAreOne ? needsCode && by.otherTextsAreOne
                                 : !needsCode || by.refusedCodes.has(row.take)) &&
           (row.dvbCTexts.empty() || by.dvbCTexts.has(row.take)) &&
           (!row.refusedAsOutput || by.refusedAsOutput) &&
           (!row.derived.exists() || by.derived.has(row.take));
}

constexpr bool isLogged(const Element& row, const Obeyed& by) {
    return row.label == nullptr || by.labels.has(row.take);
}

constexpr bool isInRange(const Element& row, const Obeyed& by) {
    const bool isTold = !by.toldRange || (row.range.lowest == by.toldRange->lowest &&
                                          row.range.highest == by.toldRange->highest);
    return (!row.range.isLimited() || (by.ranges.has(row.take) && isTold)) &&
           (row.lowestOfOther == INT_MIN || by.lowestOfOther.has(row.take));
}

constexpr bool isRequired(const Element& row, const Obeyed& by) {
    const bool isNamed =
        std::find(by.required.begin(), by.required.end(), row.name) != by.required.end();
    return (row.required.missing != nullptr) == isNamed &&
           (!row.required.range.isLimited() || (isNamed && by.requiredRanges));
}

// Settings are written as they stand.
constexpr bool isPlain(const Element& row) {
    return row.texts.empty() && row.constant == nullptr && !row.exportedAsOnOff &&
           row.presenceOf == nullptr && row.rnbPrefix == nullptr && !row.writtenSpecially;
}

constexpr bool isWritten(const Element& row, const Obeyed& by) {
    return (!by.settings || isPlain(row)) &&
           (row.when == When::always || by.conditions.has(row.when));
}

constexpr bool isSetting(const Element& row, const Obeyed& by) {
    return (row.key != nullptr) == (by.settings && row.kind == Kind::leaf) &&
           (row.postAction == PostAction::none || by.settings);
}

}  // namespace obeyed_detail

// Whether a row says nothing that is not obeyed.
constexpr bool isObeyed(const Element& row, const Obeyed& by) {
    using namespace obeyed_detail;
    return isTaken(row, by) && isLogged(row, by) && isInRange(row, by) && isRequired(row, by) &&
           isSetting(row, by) && isWritten(row, by);
}

constexpr bool areObeyed(Elements rows, const Obeyed& by) {
    return std::all_of(rows.begin(), rows.end(),
                       [&by](const Element& row) { return isObeyed(row, by); });
}

}  // namespace mapping
