#include "export/cmd_get_vsecure_cam_list.h"

#include <syslog.h>

#include "command/error_codes.h"
#include "db/database.h"
#include "db/operations.h"
#include "db/schema.h"
#include "document/xml.h"
#include "export/elements.h"
#include "mapping/cam_list.h"
#include "mapping/element.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::VSecure;

namespace {

void writeCams(document::Writer& out, sqlite3* db, bool includePublicKeys, bool fullRecords) {
    const auto conditions =
        Conditions()
            .with(mapping::When::publicKeysAskedFor, includePublicKeys || fullRecords)
            .with(mapping::When::fullList, fullRecords);
    for (const auto& cam : tarvodb::doSelect<VSecure>(db)) {
        out.open(mapping::kCams[0].name);
        writeLeaves(out, mapping::kCam, cam, conditions);
        out.close();
    }
}

}  // namespace

void CmdGetVsecureCAMList::execute() {
    platform::debugLog(LOG_DEBUG, "Running getVsecureCAMList command");
    XmlNode* resultNode = createNode("getVsecureCAMListResult");
    result().appendToData(resultNode);
    const XmlNode* includeKeys = commandNode() == nullptr
                                     ? nullptr
                                     : document::childNamed(*commandNode(), "includePublicKeys");
    const bool withKeys = includeKeys != nullptr && document::numberOf(*includeKeys) == 1;
    document::TreeWriter tree = result().writerInto(*resultNode);
    buildCAMList(tree, withKeys, false, "list");
}

void CmdGetVsecureCAMList::buildCAMList(document::Writer& out, bool includePublicKeys,
                                        bool fullRecords, const char* listName) {
    out.open(listName);
    if (const tarvodb::Database db = tarvodb::openDatabase(tarvodb::kVsecureDatabase)) {
        writeCams(out, db.get(), includePublicKeys, fullRecords);
    } else {
        addError(ErrorCode::database);
    }
    out.close();
}

}  // namespace tarvo_remote_control
