// Shell commands of the device that more than one command runs.
#pragma once

namespace tarvo_remote_control {

// Computes the derived forms of the scrambling keys from the known CAMs. Exits with 0 on success.
inline constexpr const char* kRegenerateScramblingKeys =
    "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";

}  // namespace tarvo_remote_control
