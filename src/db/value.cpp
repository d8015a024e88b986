#include "db/value.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace tarvodb {

namespace {

template <std::size_t Size, class Number>
std::string formatted(const char* format, Number number) {
    std::array<char, Size> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, number);
    return buffer.data();
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

tSqlite3int::tSqlite3int(int number) : tSqlite3parent(formatted<10>("%d", number)) {}

tSqlite3int::tSqlite3int(long number) : tSqlite3parent(formatted<20>("%ld", number)) {}

}  // namespace tarvodb
