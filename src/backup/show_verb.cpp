#include <string>

#include "backup/document.h"
#include "backup/json.h"
#include "backup/output_file.h"
#include "backup/overview.h"
#include "backup/overview_html.h"
#include "backup/overview_text.h"
#include "backup/secrets.h"
#include "backup/verbs.h"

namespace tarvo_backup {

namespace {

void writePage(const std::string& page, const ShowOptions& options, const Console& console) {
    if (options.htmlPath == "-") {
        console.out << page;
        return;
    }
    if (options.withSecrets) {
        writeForOwner(options.htmlPath, page);
    } else {
        writeForAll(options.htmlPath, page);
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
        writePage(htmlPage(overview), options, console);
    } else if (options.output.json) {
        console.out << toJson(overview) << '\n';
    } else {
        printText(overview, Painter(console, options.output.color), console.out);
    }
    return ExitStatus::done;
}

}  // namespace tarvo_backup
