// Numbers that are kept as texts.
#pragma once

namespace text {

// The decimal number that `text` begins with: 0 when it does not begin with one or is null. Columns
// and documents are read by this alone. Beyond 32 bits it is the nearest number that 32 bits hold,
// as atoi has it on the 32-bit device and not on a 64-bit host.
int toInt(const char* text);

}  // namespace text
