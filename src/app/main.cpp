// tarvo-config: exports the headend's configuration as XML, or imports the given document.
#include <cstdlib>
#include <exception>
#include <string>

#include "app/run_modes.h"
#include "db/database.h"
#include "device/device_identity.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/signals.h"

namespace {

app::ExitStatus run(int argc, char** argv) {
    tarvodb::prepareSqlite();
    tarvo_remote_control::DeviceIdentity::instance().load();
    return argc < 2 ? app::exportConfiguration(app::kOutputFile) : app::importWithRetries(argv[1]);
}

}  // namespace

int main(int argc, char** argv) {
    platform::files::occupyStandardStreams();
    platform::outliveHangUps();
    platform::waitForChildren();
    try {
        return static_cast<int>(run(argc, argv));
    } catch (const std::exception& error) {
        // A device that does not know itself, or a document that is not XML: an abnormal end, not
        // the exit status of a command error.
        platform::printError(std::string("tarvo-config: ") + error.what() + "\n");
        std::abort();
    }
}
