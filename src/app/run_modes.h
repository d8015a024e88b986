// The two things that the program does.
#pragma once

#include <string>

#include "app/exit_status.h"
#include "document/deferred_document.h"
#include "document/xml.h"

namespace app {

// Where the export is written besides standard output.
inline constexpr const char* kOutputFile = "/tmp/ConfigurationXML.xml";

// Prints the configuration document and writes it to `outputPath`. It is built anew, up to three
// times in all, when another program changes a database meanwhile; one that changes all the time is
// exported as it was read, which standard error tells. When a command recorded an error
// nothing is printed and an earlier output file stays. A file that cannot be created, and a
// standard output that cannot be written to, are reported after both were tried, and are a failure.
ExitStatus exportConfiguration(const std::string& outputPath);

// One try of writing the document in file `path` back. Throws document::ParseError, its message
// led by the path, when the file is not well-formed XML.
ExitStatus importConfiguration(const std::string& path);

// Imports the file; up to three tries, each failed one followed by a second's sleep, because the
// device's other programs may hold a database for a while.
ExitStatus importWithRetries(const std::string& path);

// The two parts of an import. `document` is the one of the element, if parts of it are deferred.
ExitStatus applyConfiguration(const document::XmlNode& configuration,
                              document::DeferredDocument* document = nullptr);
ExitStatus applyVsecureCAMList(const document::XmlNode& list);

}  // namespace app
