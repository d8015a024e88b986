// When the import takes two texts of an element for the same value.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_backup {

// The RF output modes of modules, on which the texts of an output's constellation depend. Those
// that were asked for are kept, so that no document may change meanwhile.
class RfOutputModes {
  public:
    // The mode that counts for the element `node`, which `row` is of; 0 where none does.
    int at(const mapping::Element& row, const document::XmlNode& node);

  private:
    std::unordered_map<const document::XmlNode*, int> known_;  // by `outputs`
};

// A form in which the texts of an element are equal exactly when the import takes them for the same
// value: "05" is 5 where numbers are compared, "LOW" and the code 0 are "low". Texts of an element
// that the import does not know (`row` is null) stay as they are. `node` is the element itself.
std::string canonicalText(const mapping::Element* row, const document::XmlNode& node,
                          int rfOutputMode = 0);

// The text that the import stores for a number, or for a text that may be one.
std::string storedText(const mapping::Element& row, const char* text);

// Whether that is another number.
bool isCut(const mapping::Element& row, const char* text);

// Whether the element is the id of a row, by which the row is found.
bool isRowIdElement(const mapping::Element& row);

// Whether the text is a decimal number from end to end, blanks around it aside, as a column of
// numbers takes it.
bool isWholeNumber(std::string_view text);

}  // namespace tarvo_backup
