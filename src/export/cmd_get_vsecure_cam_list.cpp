#include "export/cmd_get_vsecure_cam_list.h"

#include <syslog.h>

#include "command/error_codes.h"
#include "db/operations.h"
#include "export/vsecure_cam.h"
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
    for (const auto& row : tarvodb::doSelect<VSecure>(db.get())) {
        XmlNode* cam = createNode("cam");
        list->append_node(cam);
        const auto append = [&](const char* element, const char* value) {
            cam->append_node(createNode(element, value));
        };
        const char* publicKey = row[VSecure::K_Publica].textOrEmpty();
        append("serialNumber", row[VSecure::idCliente].textOrEmpty());
        append("hasPublicKey", *publicKey == '\0' ? "0" : "1");
        if (includePublicKeys || fullRecords) {
            append("publicKey", publicKey);
        }
        if (fullRecords) {
            for (const CamField& field : kPlainCamFields) {
                append(field.element, row[field.column].textOrEmpty());
            }
        }
    }
    return list;
}

}  // namespace tarvo_remote_control
