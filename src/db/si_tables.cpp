#include "db/si_tables.h"

#include "platform/platform.h"

namespace tarvodb {

void renameSiTableFiles(const std::string& oldId, const std::string& newId) {
    for (const char* table : {kNitTable, kSdtTable}) {
        const std::string stem = std::string(kSiTableFolder) + table;
        platform::renameFile(stem + oldId, stem + newId);
    }
    platform::syncFiles();
}

}  // namespace tarvodb
