// What a module can do, by its family and model (Familia and Modelo of RedesModulos).
#pragma once

namespace tarvo_remote_control {

inline constexpr int kCamFamily = 36;

// Modules that descramble services.
constexpr bool descramblesServices(int family, int model) {
    return family == kCamFamily && model != 2;
}

// Modules that tell about their CAM and its card; a model that descrambles does not always.
constexpr bool tellsCam(int family, int model) {
    return descramblesServices(family, model) && model != 13;
}

}  // namespace tarvo_remote_control
