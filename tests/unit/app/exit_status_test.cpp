#include "app/exit_status.h"

#include <filesystem>
#include <utility>

#include "platform/platform.h"
#include "support/fake_device.h"

namespace app {

using tarvo_remote_control::ErrorCode;

using ExitStatuses = test::DeviceTest;

constexpr const char* kErrorFile = "/tmp/Errors_ConfigurationXML.xml";

TEST_F(ExitStatuses, WithoutErrorsIsZeroAndNothingIsReported) {
    EXPECT_EQ(errorsToExitStatus({}), ExitStatus::success);
    EXPECT_EQ(err(), "");
    EXPECT_FALSE(device.exists(kErrorFile));
}

TEST_F(ExitStatuses, OfEveryCode) {
    const std::pair<int, int> statuses[] = {{101, 2}, {102, 3}, {103, 4}, {202, 5},  {401, 6},
                                            {402, 7}, {501, 8}, {502, 9}, {503, 10}, {203, 1},
                                            {911, 1}, {201, 1}, {999, 1}, {0, 1}};
    for (const auto& [code, status] : statuses) {
        EXPECT_EQ(static_cast<int>(errorsToExitStatus({ErrorCode{code}})), status) << code;
    }
}

TEST_F(ExitStatuses, IsThatOfTheLowestCode) {
    EXPECT_EQ(errorsToExitStatus({ErrorCode::moduleInput, ErrorCode::database}),
              ExitStatus::database);
    EXPECT_EQ(err(), "Error: 102\n");
    EXPECT_EQ(device.readFile(kErrorFile), "Error: 102");
}

TEST_F(ExitStatuses, ReportReplacesAnEarlierOne) {
    device.writeFile(kErrorFile, "Error: 103 and more of an earlier run");
    errorsToExitStatus({ErrorCode::scramblingKey});
    EXPECT_EQ(device.readFile(kErrorFile), "Error: 911");
}

TEST_F(ExitStatuses, ReportReplacesALinkAndIsReadableByAll) {
    device.writeFile("/tmp/precious", "content");
    std::filesystem::create_symlink(device.path("/tmp/precious"), device.path(kErrorFile));
    errorsToExitStatus({ErrorCode::database});
    EXPECT_EQ(device.readFile("/tmp/precious"), "content");
    EXPECT_EQ(platform::fileStatus(kErrorFile).value().mode, 0644U);
}

TEST_F(ExitStatuses, AnErrorFileThatCannotBeCreatedIsNotReported) {
    std::filesystem::create_directory(device.path(kErrorFile));
    EXPECT_EQ(errorsToExitStatus({ErrorCode::invalidValue}), ExitStatus::invalidValue);
    EXPECT_EQ(err(), "Error: 103\n");
}

}  // namespace app
