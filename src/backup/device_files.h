// What of the device the verbs copy.
#pragma once

#include "db/database.h"

namespace tarvo_backup {

// The databases that an export and an import use.
inline constexpr const char* kDatabases[] = {tarvodb::kConfigDatabase, tarvodb::kVsecureDatabase,
                                             tarvodb::kStateDatabase};

// Those that an import changes.
inline constexpr const char* kChangedDatabases[] = {tarvodb::kConfigDatabase,
                                                    tarvodb::kVsecureDatabase};

}  // namespace tarvo_backup
