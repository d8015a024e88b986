// A document of any bytes is imported: the database is changed only when the status is 0.
#include <algorithm>

#include "app/run_modes.h"
#include "db/database.h"
#include "fuzz_device.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const char* const models[] = {"QRA-310", "LMV-502", "RNB-K408", "WVX-BQ4"};
    fuzz::Device device(models[size % std::size(models)]);
    const std::string before = *device.files().readFile(tarvodb::kConfigDatabase);
    const std::string cams = *device.files().readFile(tarvodb::kVsecureDatabase);
    device.files().writeFile("/tmp/document.xml", {reinterpret_cast<const char*>(data), size});
    bool succeeded = false;
    try {
        succeeded = app::importConfiguration("/tmp/document.xml") == app::ExitStatus::success;
    } catch (const document::ParseError&) {
        succeeded = false;  // an abnormal end of the program
    }
    const std::vector<std::string> statements = device.files().statements();
    const bool committed = std::ranges::count(statements, "COMMIT") > 0;
    fuzz::require(committed || before == *device.files().readFile(tarvodb::kConfigDatabase),
                  "a refused document has changed the configuration");
    fuzz::require(succeeded || cams == *device.files().readFile(tarvodb::kVsecureDatabase),
                  "a refused document has changed the CAM list");
    return 0;
}
