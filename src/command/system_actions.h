// Shell commands of the device that commands run.
#pragma once

namespace tarvo_remote_control {

// Sets the network up as the configuration database says. Exits with 0 on success.
inline constexpr const char* kNetworkScript = "/tarvo/script/WAN_from_DB.sh";

// Regenerates the scrambling keys. Exits with 0 on success.
inline constexpr const char* kRegenerateScramblingKeys =
    "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";

}  // namespace tarvo_remote_control
