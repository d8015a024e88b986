// What follows a change of the headend's country, language or time zone.
#pragma once

namespace tarvo_remote_control {

// Brings the device's clock in line with the stored regional settings: the time-zone file, the
// file that the Time Offset Table is built from, and the scheduler. Failures go to the system log
// and leave the files written so far in place. Returns whether everything succeeded.
bool applyCountryChanged();

}  // namespace tarvo_remote_control
