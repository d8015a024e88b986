// The sections whose elements are single settings in configuracionWebGlobal.
#pragma once

#include "document/xml.h"
#include "import/cmd_set_configuration.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

// Writes each child of `section` that `settings` names; other children are skipped. A failed write
// records error 102 and ends the section. Returns whether all writes succeeded.
bool applySettings(CmdSetConfiguration& command, const document::XmlNode& section,
                   mapping::Elements settings);

}  // namespace tarvo_remote_control
