#include "db/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace tarvodb {

namespace {

// The first `Size` characters of the decimal text.
template <std::size_t Size>
std::string decimal(long number) {
    std::array<char, 24> digits{};
    char* end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return {digits.data(), std::min(end, digits.data() + Size)};
}

}  // namespace

tSqlite3parent::tSqlite3parent(const char* text) {
    if (text != nullptr) {
        text_ = text;
    }
}

bool tSqlite3parent::readsSameAs(const tSqlite3parent& other) const {
    return std::strcmp(textOrEmpty(), other.textOrEmpty()) == 0;
}

tSqlite3int::tSqlite3int(int number) : tSqlite3parent(decimal<9>(number)) {}

tSqlite3int::tSqlite3int(long number) : tSqlite3parent(decimal<19>(number)) {}

}  // namespace tarvodb
