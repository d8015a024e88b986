#include "document/coded_texts.h"

#include <algorithm>
#include <cstring>

#include "document/xml.h"

namespace document {

namespace {

template <class Predicate>
const CodeText* find(CodeTable table, Predicate predicate) {
    const auto found = std::find_if(table.begin(), table.end(), predicate);
    return found == table.end() ? nullptr : &*found;
}

std::optional<int> codeIn(const CodeText* row) {
    return row == nullptr ? std::nullopt : std::optional(row->code);
}

}  // namespace

const char* codeText(CodeTable table, int code, const char* otherwise) {
    const CodeText* row = find(table, [code](const CodeText& each) { return each.code == code; });
    return row == nullptr ? otherwise : row->text;
}

std::optional<int> codeOfAnyCase(CodeTable table, const char* text) {
    return codeIn(find(table, [text](const CodeText& each) { return sameText(each.text, text); }));
}

std::optional<int> codeOfExactly(CodeTable table, const char* text) {
    return codeIn(
        find(table, [text](const CodeText& each) { return std::strcmp(each.text, text) == 0; }));
}

}  // namespace document
