// The error codes of the remote-control command library.
#pragma once

namespace tarvo_remote_control {

// The codes that this program records, by name.
namespace error {
inline constexpr int kInvalidCommand = 101;
inline constexpr int kDatabase = 102;
inline constexpr int kInvalidValue = 103;
inline constexpr int kSetConfiguration = 202;
inline constexpr int kNetwork = 203;
inline constexpr int kModuleInput = 401;
inline constexpr int kModuleOutput = 402;
inline constexpr int kModuleNotFound = 501;
inline constexpr int kModuleModel = 502;
inline constexpr int kModuleAmount = 503;
inline constexpr int kScramblingKey = 911;
}  // namespace error

// The text of a code, "Unknown Error" for a code that has none.
const char* errorMessage(int code);

}  // namespace tarvo_remote_control
