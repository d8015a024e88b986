// What a module can do, by its family and model.
#pragma once

#include "db/record.h"
#include "db/schema.h"

namespace mapping {

inline constexpr int kCamFamily = 36;

// Modules that descramble services.
inline bool descramblesServices(const tarvodb::Record<tarvodb::RedesModulos>& module) {
    return module[tarvodb::RedesModulos::Familia].asInt() == kCamFamily &&
           module[tarvodb::RedesModulos::Modelo].asInt() != 2;
}

// Modules that report their CAM and its card; one that descrambles does not always.
inline bool reportsCam(const tarvodb::Record<tarvodb::RedesModulos>& module) {
    return descramblesServices(module) && module[tarvodb::RedesModulos::Modelo].asInt() != 13;
}

}  // namespace mapping
