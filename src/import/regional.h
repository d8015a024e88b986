// What follows a change of the headend's country, language or time zone.
#pragma once

namespace tarvo_remote_control {

// Works the time offsets out, and leaves them in a file for us.
inline constexpr const char* kTimeOffsetsScript = "/tarvo/script/get_time_offsets.sh";
inline constexpr const char* kTimeOffsetsFile = "/tmp/temp_tot_file_web";

// Brings the device's clock in line with the stored regional settings: the time-zone file, the
// file that the Time Offset Table is built from, and the scheduler. A failure leaves the files
// written so far in place and goes to the system log, but for a database that does not open, a
// setting that is missing and a time-zone file that cannot be written. Returns whether everything
// succeeded.
bool applyCountryChanged();

}  // namespace tarvo_remote_control
