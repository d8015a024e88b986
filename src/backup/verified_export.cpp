#include "backup/verified_export.h"

#include <filesystem>

#include "app/exit_status.h"
#include "backup/device_run.h"
#include "backup/document.h"
#include "backup/fault.h"
#include "backup/progress.h"
#include "backup/sandbox.h"
#include "backup/sqlite.h"
#include "command/result_document.h"
#include "db/database.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failReading(const std::string& reason) {
    throw Fault(ExitStatus::cannotRead, std::string(tarvodb::kConfigDatabase) +
                                            ": the configuration database is " + reason);
}

bool hasRows(sqlite3* db, const std::string& table) {
    const bool isThere =
        !query(db, "SELECT 1 FROM sqlite_master WHERE name = '" + table + "'").empty();
    return isThere && !query(db, "SELECT 1 FROM " + table + " LIMIT 1").empty();
}

// An export of a database that was lost succeeds too, and is empty.
void checkConfiguration(const Sandbox& sandbox) {
    const std::string copy = sandbox.mapped(tarvodb::kConfigDatabase);
    if (!fs::exists(copy)) {
        failReading("not there");
    }
    try {
        const Connection db = openConnection(copy, Access::readOnly);
        if (query(db.get(), "PRAGMA quick_check") != std::vector<Cells>{{"ok"}}) {
            failReading("damaged");
        }
        for (const char* table : {"configuracionWebGlobal", "RedesModulos"}) {
            if (!hasRows(db.get(), table)) {
                failReading(std::string("empty: nothing is in the table ") + table);
            }
        }
    } catch (const DatabaseFault& fault) {
        failReading(std::string("damaged: ") + fault.what());
    }
}

// The document with elements that hold nothing but blanks as empty ones, which is what the parser
// takes them for.
std::string withoutBlankTexts(const std::string& text) {
    std::string result;
    std::size_t copied = 0;
    for (std::size_t end = text.find('>'); end != std::string::npos;
         end = text.find('>', end + 1)) {
        const std::size_t next = text.find_first_not_of(" \t\r\n", end + 1);
        if (next == std::string::npos || next == end + 1 || text.compare(next, 2, "</") != 0) {
            continue;
        }
        const std::size_t start = text.rfind('<', end) + 1;
        const std::string closing = "</" + text.substr(start, end - start) + ">";
        if (text.compare(next, closing.size(), closing) == 0) {
            result.append(text, copied, end - copied).append("/>");
            copied = next + closing.size();
        }
    }
    return result.append(text, copied);
}

// Whether parsing the document and printing the tree gives it again.
bool readsBack(const std::string& text) {
    const Document document("backup", text);
    const XmlNode* root = document.tree().first_node();
    return root != nullptr &&
           std::string(tarvo_remote_control::kXmlDeclaration) + "\n" + document::printed(*root) ==
               withoutBlankTexts(text);
}

}  // namespace

std::string verifiedExportIn(Sandbox& sandbox) {
    beginStep("Checking the databases");
    checkConfiguration(sandbox);
    loadIdentity();
    beginStep("Exporting the headend");
    std::string document = exportIn(sandbox);
    if (!readsBack(document)) {
        throw Fault(ExitStatus::cannotRead, "the document cannot be read back as it is written");
    }
    return document;
}

std::string verifiedExport() {
    beginStep("Copying the databases");
    Sandbox sandbox;
    return verifiedExportIn(sandbox);
}

TriedExport triedExport() {
    beginStep("Copying the databases");
    Sandbox sandbox;
    TriedExport tried{.document = verifiedExportIn(sandbox), .refusals = {}, .notTried = {}};
    beginStep("Importing into a copy");
    try {
        if (importIn(sandbox, tried.document) == app::ExitStatus::success) {
            return tried;
        }
    } catch (const Fault& fault) {
        tried.notTried = fault.what();
        return tried;
    }
    tried.refusals = importErrors(Document("backup", tried.document), sandbox.traffic().errors);
    // It only says that the import failed.
    std::erase_if(tried.refusals, [](const ImportError& error) {
        return error.code == number(tarvo_remote_control::ErrorCode::setConfiguration);
    });
    return tried;
}

}  // namespace tarvo_backup
