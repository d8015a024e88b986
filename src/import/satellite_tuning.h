// What a satellite tuner's settings have to do with each other: the loop from input 1 to input 2,
// DiSEqC position and band, received and intermediate frequency.
#pragma once

#include "db/record.h"
#include "db/schema.h"
#include "import/cmd_set_configuration.h"
#include "import/elements.h"

namespace tarvo_remote_control {

// Whether the tuner, one of input 2, is fed through input 1's loop.
bool isFedThroughLoop(const tarvodb::Record<tarvodb::NimGlobal>& tuner);

// Input 2 then shares input 1's DiSEqC position and band.
void followLoop(Change<tarvodb::NimGlobal>& second,
                const tarvodb::Record<tarvodb::NimGlobal>& first);

// Takes over the band of the tuner's DiSEqC position (DiSEqCGlobal), then brings received and
// intermediate frequency in line by the band's oscillator (configuracionWebGlobal, MHz). With a
// frequency given the intermediate one follows it, otherwise the received one follows the stored
// intermediate one. False when the intermediate frequency is out of the tuner's range: the error
// is recorded and logged then, and the row must not be written.
bool tuneSatellite(CmdSetConfiguration& command, Change<tarvodb::NimGlobal>& tuner,
                   bool frequencyGiven);

}  // namespace tarvo_remote_control
