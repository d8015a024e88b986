#include "db/si_tables.h"

#include "platform/platform.h"

namespace tarvodb {

bool namesSiTableFile(const std::string& id) { return id.find('/') == std::string::npos; }

void renameSiTableFiles(const std::string& oldId, const std::string& newId) {
    if (namesSiTableFile(oldId) && namesSiTableFile(newId)) {
        for (const char* table : {kNitTable, kSdtTable}) {
            const std::string stem = std::string(kSiTableFolder) + table;
            platform::renameFile(stem + oldId, stem + newId);
        }
    }
    platform::syncFiles();
}

}  // namespace tarvodb
