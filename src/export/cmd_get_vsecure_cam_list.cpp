#include "export/cmd_get_vsecure_cam_list.h"

#include <syslog.h>

#include "command/error_codes.h"
#include "db/operations.h"
#include "document/xml.h"
#include "export/elements.h"
#include "mapping/cam_list.h"
#include "mapping/element.h"
#include "platform/debug_log.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::VSecure;

void CmdGetVsecureCAMList::execute() {
    platform::debugLog(LOG_DEBUG, "Running getVsecureCAMList command");
    XmlNode* resultNode = createNode("getVsecureCAMListResult");
    result().appendToData(resultNode);
    const XmlNode* includeKeys = commandNode() == nullptr
                                     ? nullptr
                                     : document::childNamed(*commandNode(), "includePublicKeys");
    const bool withKeys = includeKeys != nullptr && document::numberOf(*includeKeys) == 1;
    resultNode->append_node(buildCAMList(withKeys, false, "list"));
}

XmlNode* CmdGetVsecureCAMList::buildCAMList(bool includePublicKeys, bool fullRecords,
                                            const char* listName) {
    XmlNode* list = createNode(listName);
    const tarvodb::Database db = tarvodb::openDatabase(tarvodb::kVsecureDatabase);
    if (!db) {
        addError(ErrorCode::database);
        return list;
    }
    const auto conditions =
        Conditions()
            .with(mapping::When::publicKeysAskedFor, includePublicKeys || fullRecords)
            .with(mapping::When::fullList, fullRecords);
    for (const auto& cam : tarvodb::doSelect<VSecure>(db.get())) {
        XmlNode* node = append(*this, list, mapping::kCams[0].name);
        appendChildren(*this, node, mapping::kCam, cam, conditions,
                       [&](const mapping::Element& hasPublicKey) {
                           const bool hasKey = *cam[VSecure::K_Publica].textOrEmpty() != '\0';
                           append(*this, node, hasPublicKey.name, hasKey ? "1" : "0");
                       });
    }
    return list;
}

}  // namespace tarvo_remote_control
