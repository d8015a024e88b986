// The preferred audio languages.
#pragma once

#include "db/schema.h"
#include "mapping/element.h"

namespace mapping {

inline constexpr Element kPreferredLanguages[] = {
    {.name = "language",
     .column = tarvodb::AudioLanguageListGlobal::AudioCode,
     .form = Form::text,
     .identity = true},
};

}  // namespace mapping
