#include "export/cmd_set_vsecure_cam_list.h"

#include <syslog.h>

#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include "command/error_codes.h"
#include "command/system_actions.h"
#include "db/clauses.h"
#include "db/database.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "db/transaction.h"
#include "db/value.h"
#include "device/device_identity.h"
#include "document/xml.h"
#include "mapping/cam_list.h"
#include "mapping/element.h"
#include "platform/debug_log.h"
#include "platform/local_time.h"
#include "platform/platform.h"
#include "platform/signals.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::Record;
using tarvodb::StatusMark;
using tarvodb::VSecure;

namespace {

constexpr const mapping::Element& kSerialNumber = mapping::rowNamed(mapping::kCam, "serialNumber");

std::string withoutWhiteSpace(std::string text) {
    std::erase_if(text, [](unsigned char c) { return std::isspace(c) != 0; });
    return text;
}

Record<VSecure> newCam(const char* serialNumber) {
    Record<VSecure> cam;
    cam.set(VSecure::idCliente, serialNumber);
    cam.set(VSecure::Alta, platform::localTimeText(platform::now(), "%Y-%m-%d"));
    for (const auto column :
         {VSecure::Fabricante, VSecure::Descripcion, VSecure::K_Publica, VSecure::EK_Shared}) {
        cam.set(column, "");
    }
    cam.set(VSecure::Reintentos, 0);
    cam.set(VSecure::Error, 0);
    cam.set(VSecure::estado, StatusMark::changed);
    return cam;
}

void setField(Record<VSecure>& cam, const XmlNode& child) {
    const mapping::Element* element = mapping::elementOf(mapping::kCam, child);
    if (element == nullptr) {
        return;
    }
    if (element->take == mapping::Take::text) {
        cam.setValue(element->column.index, tarvodb::tSqlite3parent(document::textOf(child)));
    } else if (element->take == mapping::Take::special &&
               cam.set(VSecure::K_Publica, withoutWhiteSpace(document::textOf(child)))) {
        // The module must be processed again with its new key.
        cam.setValue(element->derived.index, tarvodb::tSqlite3parent(""));
        cam.set(VSecure::estado, StatusMark::changed);
    }
}

}  // namespace

void CmdSetVsecureCAMList::execute() {
    platform::debugLog(LOG_DEBUG, "Running setVsecureCAMList command");
    result().appendToData(createNode("setVsecureCAMListResult"));
    const XmlNode* partialList =
        commandNode() == nullptr ? nullptr : document::childNamed(*commandNode(), "partialList");
    const XmlNode* list =
        commandNode() == nullptr ? nullptr : document::childNamed(*commandNode(), "list");
    apply(list, partialList != nullptr && document::numberOf(*partialList) == 1);
}

bool CmdSetVsecureCAMList::apply(const XmlNode* list, bool partial) {
    const auto fail = [this](ErrorCode code, const char* detail = "") {
        addError(code, detail);
        return false;
    };
    if (list == nullptr) {
        return fail(ErrorCode::invalidCommand, "No 'list' element found");
    }
    tarvodb::Database db = tarvodb::openDatabase(tarvodb::kVsecureDatabase);
    if (!db) {
        return fail(ErrorCode::database);
    }
    tarvodb::Transaction transaction(db.get(), tarvodb::Tries::one);
    if (!transaction.begin()) {
        return fail(ErrorCode::database);
    }
    if (!writeList(db.get(), *list, partial)) {
        if (!transaction.rollback()) {
            addError(ErrorCode::database);
        }
        return false;
    }
    const platform::HeldSignals held;
    if (!transaction.commit()) {
        return fail(ErrorCode::database);
    }
    db.reset();
    // RNB-K408 regenerates its keys after an import of scrambling settings, the others here.
    if (!DeviceIdentity::instance().isRNB() && platform::runShell(kRegenerateScramblingKeys) != 0) {
        return fail(ErrorCode::scramblingKey);
    }
    return true;
}

bool CmdSetVsecureCAMList::writeList(sqlite3* db, const XmlNode& list, bool partial) {
    bool written = true;
    if (!partial && !tarvodb::deleteAll<VSecure>(db)) {
        addError(ErrorCode::database);
        written = false;
    }
    for (const XmlNode& cam : document::childrenOf(list)) {
        if (!document::hasName(cam, mapping::kCams[0].name)) {
            continue;
        }
        const XmlNode* serialNumber = document::childNamed(cam, kSerialNumber.name);
        if (serialNumber == nullptr) {
            addError(ErrorCode::invalidCommand, kSerialNumber.required.missing);
            return false;
        }
        if (!writeCam(db, cam, document::textOf(*serialNumber), partial)) {
            addError(ErrorCode::database);
            written = false;
        }
    }
    return written;
}

bool CmdSetVsecureCAMList::writeCam(sqlite3* db, const XmlNode& cam, const char* serialNumber,
                                    bool partial) {
    std::vector<Record<VSecure>> stored;
    if (partial) {
        stored = tarvodb::doSelect<VSecure>(db, tarvodb::clause::kByClient, serialNumber);
    }
    const bool isNew = stored.empty();
    Record<VSecure> record = isNew ? newCam(serialNumber) : std::move(stored.front());
    record.set(VSecure::idCliente, serialNumber);
    for (const XmlNode& child : document::childrenOf(cam)) {
        setField(record, child);
    }
    return isNew ? tarvodb::insert(record, db) : tarvodb::update(record, db);
}

}  // namespace tarvo_remote_control
