#include "app/exit_status.h"

#include <filesystem>
#include <utility>

#include "support/fake_device.h"

namespace app {

using ExitStatus = test::DeviceTest;

constexpr const char* kErrorFile = "/tmp/Errors_ConfigurationXML.xml";

TEST_F(ExitStatus, WithoutErrorsIsZeroAndNothingIsReported) {
    EXPECT_EQ(errorsToExitStatus({}), 0);
    EXPECT_EQ(err(), "");
    EXPECT_FALSE(device.exists(kErrorFile));
}

TEST_F(ExitStatus, OfEveryCode) {
    const std::pair<int, int> statuses[] = {{101, 2}, {102, 3}, {103, 4}, {202, 5},  {401, 6},
                                            {402, 7}, {501, 8}, {502, 9}, {503, 10}, {203, 1},
                                            {911, 1}, {201, 1}, {999, 1}, {0, 1}};
    for (const auto& [code, status] : statuses) {
        EXPECT_EQ(errorsToExitStatus({code}), status) << code;
    }
}

TEST_F(ExitStatus, IsThatOfTheLowestCode) {
    EXPECT_EQ(errorsToExitStatus({401, 102}), 3);
    EXPECT_EQ(err(), "Error: 102\n");
    EXPECT_EQ(device.readFile(kErrorFile), "Error: 102");
}

TEST_F(ExitStatus, ReportReplacesAnEarlierOne) {
    device.writeFile(kErrorFile, "Error: 103 and more of an earlier run");
    errorsToExitStatus({911});
    EXPECT_EQ(device.readFile(kErrorFile), "Error: 911");
}

TEST_F(ExitStatus, AnErrorFileThatCannotBeCreatedIsNotReported) {
    std::filesystem::create_directory(device.path(kErrorFile));
    EXPECT_EQ(errorsToExitStatus({103}), 4);
    EXPECT_EQ(err(), "Error: 103\n");
}

}  // namespace app
