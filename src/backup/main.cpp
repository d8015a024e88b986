// tarvo-backup: looks after backups of the headend's configuration.
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iostream>

#include "backup/command_line.h"
#include "backup/interruption.h"
#include "platform/files.h"
#include "platform/signals.h"

int main(int argc, char** argv) {
    using namespace tarvo_backup;
    platform::files::occupyStandardStreams();
    platform::waitForChildren();
    try {
        const char* noColor = std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe)
        const Console console{.in = std::cin,
                              .out = std::cout,
                              .err = std::cerr,
                              .outIsTerminal = isatty(STDOUT_FILENO) == 1,
                              .errIsTerminal = isatty(STDERR_FILENO) == 1,
                              .colorUnwanted = noColor != nullptr && *noColor != '\0'};
        return static_cast<int>(run(argc, argv, console));
    } catch (const Interrupted& interrupted) {
        endBy(interrupted.signal());
    } catch (const std::exception& error) {
        std::cerr << "tarvo-backup: " << error.what() << '\n';
        return static_cast<int>(ExitStatus::failure);
    }
}
