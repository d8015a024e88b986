// Files with the SI tables (NIT, BAT, SDT) that other programs of the device keep per network.
#pragma once

#include <string>

namespace tarvodb {

inline constexpr const char* kSiTableFolder = "/tarvo/datosWeb/tablasSI/";
// A network's NIT is in the file of this name followed by the network identifier.
inline constexpr const char* kNitTable = "NIT_table_";
inline constexpr const char* kSdtTable = "SDT_table_";

// Whether a network identifier can be part of a file's name. One with a "/" would lead elsewhere.
bool namesSiTableFile(const std::string& id);

// Renames the NIT and SDT files of a network from its old to its new network identifier (as text)
// and brings the change to the disk. A file that is not there is no error; an
// identifier that names no file renames nothing.
void renameSiTableFiles(const std::string& oldId, const std::string& newId);

}  // namespace tarvodb
