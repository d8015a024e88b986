#include <fstream>
#include <iterator>

#include "backup/document.h"
#include "backup/fault.h"
#include "backup/json.h"
#include "backup/overview.h"
#include "backup/overview_html.h"
#include "backup/overview_text.h"
#include "backup/secrets.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

void writePage(const std::string& page, const std::string& path, const Console& console) {
    if (path == "-") {
        console.out << page;
        return;
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << page;
    file.close();
    if (!file) {
        throw Fault(ExitStatus::cannotWrite, path + ": cannot be written");
    }
}

}  // namespace

ExitStatus runShow(const ShowOptions& options, const Console& console) {
    const Document document = readConfiguration(options.path, console);
    if (options.redact) {
        console.out << redacted(document);
        return ExitStatus::done;
    }
    const Overview overview = overviewOf(document, options.withSecrets);
    if (!options.htmlPath.empty()) {
        writePage(htmlPage(overview), options.htmlPath, console);
    } else if (options.output.json) {
        console.out << toJson(overview) << '\n';
    } else {
        printText(overview, Painter(console, options.output.color), console.out);
    }
    return ExitStatus::done;
}

}  // namespace tarvo_backup
