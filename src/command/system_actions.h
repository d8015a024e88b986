// Shell commands of the device that more than one command runs.
#pragma once

namespace tarvo_remote_control {

// Regenerates the scrambling keys. Exits with 0 on success.
inline constexpr const char* kRegenerateScramblingKeys =
    "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";

}  // namespace tarvo_remote_control
