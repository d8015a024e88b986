#include "backup/device_run.h"

#include <iostream>
#include <set>

#include "app/run_modes.h"
#include "backup/console.h"
#include "backup/fault.h"
#include "device/device_identity.h"

namespace tarvo_backup {

void loadIdentity() {
    const OutputMuted muted;
    try {
        tarvo_remote_control::DeviceIdentity::instance().load();
    } catch (const tarvo_remote_control::ReadConfigError& error) {
        throw Fault(ExitStatus::cannotRead, std::string("this is no headend: ") + error.what());
    }
}

OutputMuted::OutputMuted() : out_(std::cout.rdbuf(&nowhere_)), err_(std::cerr.rdbuf(&nowhere_)) {}

OutputMuted::~OutputMuted() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
}

namespace {

// Why an export failed, a line for each reason. Of a database that is not there follows all the
// rest.
std::string reasonsIn(const Sandbox& sandbox) {
    std::set<std::string> told;
    std::string reasons;
    for (const std::string& path : sandbox.missing()) {
        reasons += "\n  " + path + " is not there";
    }
    for (const LogLine& line : sandbox.traffic().log) {
        const std::string text = line.text.substr(0, line.text.find('\n'));
        if (sandbox.missing().empty() && told.insert(text).second) {
            reasons += "\n  " + onOneLine(text);
        }
    }
    return reasons;
}

}  // namespace

std::string exportIn(Sandbox& sandbox) {
    sandbox.startAfresh();
    app::ExitStatus status{};
    {
        const OutputMuted muted;
        status = app::exportConfiguration(app::kOutputFile);
    }
    const Traffic& traffic = sandbox.traffic();
    if (status != app::ExitStatus::success || traffic.failedStatements > 0) {
        throw Fault(ExitStatus::cannotRead,
                    "the configuration cannot be read as a whole" + reasonsIn(sandbox));
    }
    return traffic.files.at(app::kOutputFile).value_or("");
}

app::ExitStatus importIn(Sandbox& sandbox, const std::string& document) {
    sandbox.startAfresh();
    sandbox.setDocument(document);
    const OutputMuted muted;
    return app::importWithRetries(Sandbox::kDocument);
}

}  // namespace tarvo_backup
