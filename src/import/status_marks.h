// The marks in the status columns of services and elementary streams, for the device's own
// software to act on.
#pragma once

namespace tarvo_remote_control::mark {

// EstadoBorrado
inline constexpr int kListed = 0;
inline constexpr int kToBeRemoved = 2;

// EstadoServicio, EstadoPID: changed and still to be applied.
inline constexpr int kChanged = 1;

}  // namespace tarvo_remote_control::mark
