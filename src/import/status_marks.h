// The marks in the status columns, for the device's own software to act on.
#pragma once

namespace tarvo_remote_control::mark {

// Estado, estado, EstadoServicio, EstadoPID: changed and still to be applied.
inline constexpr int kChanged = 1;

// EstadoBorrado
inline constexpr int kListed = 0;
inline constexpr int kToBeRemoved = 2;

}  // namespace tarvo_remote_control::mark
