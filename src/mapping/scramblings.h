// The scrambling systems with their control words. The headend has one; the import writes every
// element to it, whatever its name.
#pragma once

#include "db/schema.h"
#include "document/coded_texts.h"
#include "mapping/element.h"

namespace mapping {

using ScramblingKeys = tarvodb::ScramblingKeysGlobal;

// A control word. Its encrypted form stays on the device, whose key tool makes it anew.
constexpr Element controlWord(const char* name, ScramblingKeys::Column column,
                              ScramblingKeys::Column encrypted) {
    return {
        .name = name, .column = column, .form = Form::text, .secret = true, .derived = encrypted};
}

inline constexpr Element kScrambling[] = {
    {.name = "name",
     .column = ScramblingKeys::System,
     .take = Take::ignored,
     .form = Form::text,
     .required = {.missing = "scrambling has no name field"},
     .identity = true},
    // Exported as 0 for a system without a row.
    {.name = "active",
     .column = tarvodb::ScramblingGlobal::Mode,
     .take = Take::number,
     .form = Form::onOff,
     .range = kBinary},
    {.name = "mode",
     .column = ScramblingKeys::Mode,
     .take = Take::code,
     .texts = document::kScramblingMode},
    {"frequency", ScramblingKeys::Frequency},
    controlWord("oddKey", ScramblingKeys::Odd, ScramblingKeys::EK_Odd),
    controlWord("evenKey", ScramblingKeys::Even, ScramblingKeys::EK_Even),
    {.name = "date", .column = ScramblingKeys::Date, .form = Form::text},
};

inline constexpr Element kScramblings[] = {entry("scrambling", kScrambling)};

}  // namespace mapping
