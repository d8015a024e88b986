// The preferred audio languages.
#include <string>

#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::AudioLanguageListGlobal;

bool applyPreferredLanguages(CmdSetConfiguration& command, const XmlNode& section) {
    if (!emptyTable<AudioLanguageListGlobal>(command, "Could not delete preferredLanguages")) {
        return false;
    }
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "language")) {
            return fail(command, ErrorCode::invalidCommand, "language expected");
        }
        const char* code = document::textOf(element);
        tarvodb::Record<AudioLanguageListGlobal> language;
        language.put(AudioLanguageListGlobal::AudioCode, code);
        if (!insertRecord(command, language, "Could not insert preferredLanguage")) {
            return false;
        }
        logChange(std::string("New preferredLanguage ") + code);
    }
    return true;
}

}  // namespace tarvo_remote_control
