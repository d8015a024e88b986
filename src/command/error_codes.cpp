#include "command/error_codes.h"

namespace tarvo_remote_control {

namespace {

struct ErrorText {
    int code;
    const char* text;
};

// The whole table of the command library, of which this program raises some.
constexpr ErrorText kErrorTexts[] = {
    {0, "No error"},
    {101, "Invalid command"},
    {102, "Could not access database"},
    {103, "Invalid value"},
    {201, "No configuration sent with setConfiguration command"},
    {202, "Could not set configuration"},
    {203, "Could not apply network configuration"},
    {401, "Invalid module input"},
    {402, "Invalid module output"},
    {501, "Could not find module"},
    {502, "Invalid module family/model"},
    {503, "Invalid amount of modules"},
    {551, "Could not reset module"},
    {552, "Could not reset CAM"},
    {601, "Invalid datetime"},
    {701, "Could not download firmware"},
    {702, "Wrong MD5 checksum"},
    {711, "Could not apply FW upgrade"},
    {712, "Could not apply FW upgrade. An upgrade is already running"},
    {713, "Could not apply FW upgrade. Communication errors"},
    {714, "Could not apply FW upgrade. Insufficient space"},
    {801, "Invalid OTA type"},
    {802, "Invalid OTA linkage descriptor"},
    {803, "OTA upgrade is already running"},
    {804, "Could not start the OTA upgrade"},
    {811, "TV CAM OTA was not running"},
    {851, "Invalid username"},
    {852, "Invalid password"},
    {901, "Error generating CSR"},
    {902, "Error requesting signature of CSR"},
    {903, "Invalid CRT received"},
    {904, "Could not save CRT"},
    {911, "Error regenerating scrambling key"},
};

}  // namespace

const char* errorMessage(ErrorCode code) {
    for (const ErrorText& row : kErrorTexts) {
        if (row.code == number(code)) {
            return row.text;
        }
    }
    return "Unknown Error";
}

}  // namespace tarvo_remote_control
