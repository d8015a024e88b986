// The preferred audio languages.
#include "mapping/preferred_languages.h"

#include <string>

#include "command/error_codes.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/value.h"
#include "document/xml.h"
#include "import/reporting.h"
#include "import/sections.h"
#include "import/table_writes.h"
#include "mapping/element.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::AudioLanguageListGlobal;

bool apply::preferredLanguages(CmdSetConfiguration& command, const XmlNode& section) {
    if (!emptyTable<AudioLanguageListGlobal>(command, "Could not delete preferredLanguages")) {
        return false;
    }
    const mapping::Element& entry = mapping::kPreferredLanguages[0];
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, entry.name)) {
            return fail(command, ErrorCode::invalidCommand, "language expected");
        }
        const char* code = document::textOf(element);
        tarvodb::Record<AudioLanguageListGlobal> language;
        language.setValue(entry.column.index, tarvodb::columnValue(code));
        if (!insertRecord(command, language, "Could not insert preferredLanguage")) {
            return false;
        }
        logChange(std::string("New preferredLanguage ") + code);
    }
    return true;
}

}  // namespace tarvo_remote_control
