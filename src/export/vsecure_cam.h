// The part of a `cam` element that stands for plain columns of VSecure, on export and import.
#pragma once

#include "db/schema.h"

namespace tarvo_remote_control {

struct CamField {
    const char* element;
    tarvodb::VSecure::Column column;
};

// `serialNumber` and `publicKey` are not among them: they decide more than their own column.
inline constexpr CamField kPlainCamFields[] = {
    {"manufacturer", tarvodb::VSecure::Fabricante},
    {"registerDate", tarvodb::VSecure::Alta},
    {"ekShared", tarvodb::VSecure::EK_Shared},
    {"description", tarvodb::VSecure::Descripcion},
};

}  // namespace tarvo_remote_control
