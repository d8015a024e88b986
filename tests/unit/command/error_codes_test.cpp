#include "command/error_codes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace tarvo_remote_control {

namespace {

const std::map<int, std::string> kTexts = {
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

TEST(ErrorCodes, EachHasItsTextAndEveryOtherIsUnknown) {
    for (int code = -1; code <= 1200; ++code) {
        SCOPED_TRACE(code);
        const auto row = kTexts.find(code);
        EXPECT_EQ(errorMessage(ErrorCode{code}),
                  row == kTexts.end() ? "Unknown Error" : row->second);
    }
}

}  // namespace tarvo_remote_control
